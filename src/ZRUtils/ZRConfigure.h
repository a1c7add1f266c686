#pragma once

#include <QObject>

class QSettings;

// The door to the settings file "configure/configure.ini" beside the program. Made on the stack
// for one read or write and never kept. Each object has its own QSettings, so any thread may
// make one. There are no failures: what cannot be read has its default, what cannot be written
// is lost. Label sizes are millimetres.
class ZRConfigure : public QObject
{
    Q_OBJECT

public:
    ZRConfigure();

    // Writes the defaults of the language, hardware and search keys that the file lacks.
    void initDefaults();

    bool hardware() const;
    void setHardware(bool on);
    // "en" is English; anything else means Chinese.
    QString language() const;
    void setLanguage(const QString &language);
    QString networkIp() const;
    void setNetworkIp(const QString &ip);
    QString networkName() const;
    void setNetworkName(const QString &name);
    QString printerName() const;
    void setPrinterName(const QString &name);
    void labelSettings(double &width, double &height, int &column, double &paddingLeft,
        double &paddingTop, double &paddingRight, double &paddingBottom, double &padding) const;
    void saveLabelSettings(double width, double height, int column, double paddingLeft,
        double paddingTop, double paddingRight, double paddingBottom, double padding);
    // Length of a device search; one not above 0 has no end. No setter: only an edit of the file
    // changes it.
    int searchSeconds() const;
    // What shows the bench's preview: "opengl" is the OpenGL view; anything else means the direct
    // one.
    QString benchView() const;
    void setBenchView(const QString &view);

private:
    QString stringOf(const QString &key) const;
    int intOf(const QString &key, int absent) const;
    double doubleOf(const QString &key) const;

    QSettings *settings;
};
