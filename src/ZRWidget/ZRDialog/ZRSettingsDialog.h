#pragma once

#include "ZRDialog.h"
#include "ZRLocalize.h"

class QComboBox;
class QLabel;

// Shows the program's version and holds two settings, language and hardware decoding. There is no
// OK: each choice is stored and, for the language, takes effect at once.
class ZRSettingsDialog : public ZRDialog, public ZRLocalize
{
    Q_OBJECT

public:
    explicit ZRSettingsDialog(QWidget *parent);
    ~ZRSettingsDialog() override;

    void onLanguageChanged() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    // Overloads the hook above: a choice of the user, or of the constructor.
    void onLanguageChanged(int index);
    // A stream that plays keeps its decoder; the next one reads the setting.
    void onHardwareChanged(int index);

private:
    void addItems();
    void selectStoredSettings();

    QLabel *versionNameLabel;
    QLabel *versionLabel;
    QLabel *buildDateNameLabel;
    QLabel *buildDateLabel;
    QLabel *languageLabel;
    QComboBox *languageComboBox;
    QLabel *hardwareLabel;
    QComboBox *hardwareComboBox;
};
