#pragma once

#include "CameraBench.h"
#include "VorlynDevice.h"

#include <QObject>
#include <QWidget>

#include <memory>

class QComboBox;
class QLineEdit;
class QPushButton;
class VorlynDevicesWidget;
class ZRLabel;

// What the network settings form is and does, wherever it is shown. The test of each of its hosts
// derives from this and adds what is the host's own. Widgets are found by their names.
class NetworkFormTest : public QObject
{
    Q_OBJECT

protected:
    struct Kind {
        const char *secondButton; // the one beside Set
        const char *secondCaption;
        QStringList writers; // the buttons that write the form
        bool closes; // once it is written
    };

    explicit NetworkFormTest(const Kind &kind);

    virtual std::unique_ptr<QWidget> makeHost() const = 0;
    // Of the host that shows, with the table.
    virtual void setDevice(const VorlynDevice &device) = 0;

    // The record of row 1, whose camera is "cam1", with a value for each field.
    VorlynDevice device(const QString &mode) const;
    QComboBox *mode() const;
    QLineEdit *edit(const char *name) const;
    QPushButton *button(const QString &name) const;
    ZRLabel *toast() const; // null when none shows
    void tick(const QVector<int> &rows);
    // The requests that a click gives, each answered with the next result.
    QVector<QJsonObject> click(const QString &button, const QStringList &results);

    // Anew for each test but the bench: a table of "cam0" to "cam3", and a host that shows the
    // device of row 1 in static mode.
    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<QWidget> host;

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void texts_data();
    void texts();
    void geometry_data();
    void geometry();
    void fieldsOfTheDevice();
    void modeOfTheDevice_data();
    void modeOfTheDevice();
    void modeEnablesTheRows();
    void modeAtFirst();
    void tabOrder();
    void inputs_data();
    void inputs();
    void dhcpNeedsNoField_data();
    void dhcpNeedsNoField();
    void recordKeepsItsMode();

private:
    QStringList shownTexts(const QWidget &of) const;

    const Kind kind;
};
