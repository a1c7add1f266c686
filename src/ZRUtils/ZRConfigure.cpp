#include "ZRConfigure.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>

namespace {

constexpr char languageKey[] = "langage";
constexpr char hardwareKey[] = "hardware";
constexpr char searchSecondsKey[] = "search seconds";
constexpr char networkNameKey[] = "network name";
constexpr char networkIpKey[] = "network ip";
constexpr char printerNameKey[] = "printer name";
constexpr char labelWidthKey[] = "label width";
constexpr char labelHeightKey[] = "label height";
constexpr char labelColumnKey[] = "label column";
constexpr char labelPaddingKey[] = "label padding";
constexpr char labelPaddingLeftKey[] = "label padding left";
constexpr char labelPaddingTopKey[] = "label padding top";
constexpr char labelPaddingRightKey[] = "label padding right";
constexpr char labelPaddingBottomKey[] = "label padding bottom";
constexpr char benchViewKey[] = "bench view";

constexpr int defaultSearchSeconds = 3;

QString filePath()
{
    const QString folder =
        QStringLiteral("%1/configure").arg(QCoreApplication::applicationDirPath());
    if (!QDir().exists(folder))
        QDir().mkdir(folder);
    return QStringLiteral("%1/configure.ini").arg(folder);
}

}

ZRConfigure::ZRConfigure() : settings(new QSettings(filePath(), QSettings::IniFormat, this)) { }

void ZRConfigure::initDefaults()
{
    const struct {
        const char *key;
        QVariant value;
    } defaults[] = {
        {languageKey, "cn"},
        {hardwareKey, 1},
        {searchSecondsKey, defaultSearchSeconds},
    };
    for (const auto &row : defaults) {
        if (settings->value(row.key).isNull())
            settings->setValue(row.key, row.value);
    }
}

bool ZRConfigure::hardware() const
{
    return intOf(hardwareKey, 0) != 0;
}

void ZRConfigure::setHardware(bool on)
{
    settings->setValue(hardwareKey, on ? 1 : 0);
}

QString ZRConfigure::language() const
{
    return stringOf(languageKey);
}

void ZRConfigure::setLanguage(const QString &language)
{
    settings->setValue(languageKey, language);
}

QString ZRConfigure::networkIp() const
{
    return stringOf(networkIpKey);
}

void ZRConfigure::setNetworkIp(const QString &ip)
{
    settings->setValue(networkIpKey, ip);
}

QString ZRConfigure::networkName() const
{
    return stringOf(networkNameKey);
}

void ZRConfigure::setNetworkName(const QString &name)
{
    settings->setValue(networkNameKey, name);
}

QString ZRConfigure::printerName() const
{
    return stringOf(printerNameKey);
}

void ZRConfigure::setPrinterName(const QString &name)
{
    settings->setValue(printerNameKey, name);
}

void ZRConfigure::labelSettings(double &width, double &height, int &column, double &paddingLeft,
    double &paddingTop, double &paddingRight, double &paddingBottom, double &padding) const
{
    width = doubleOf(labelWidthKey);
    height = doubleOf(labelHeightKey);
    column = intOf(labelColumnKey, 0);
    padding = doubleOf(labelPaddingKey);
    paddingLeft = doubleOf(labelPaddingLeftKey);
    paddingTop = doubleOf(labelPaddingTopKey);
    paddingRight = doubleOf(labelPaddingRightKey);
    paddingBottom = doubleOf(labelPaddingBottomKey);
}

void ZRConfigure::saveLabelSettings(double width, double height, int column, double paddingLeft,
    double paddingTop, double paddingRight, double paddingBottom, double padding)
{
    settings->setValue(labelWidthKey, width);
    settings->setValue(labelHeightKey, height);
    settings->setValue(labelColumnKey, column);
    settings->setValue(labelPaddingKey, padding);
    settings->setValue(labelPaddingLeftKey, paddingLeft);
    settings->setValue(labelPaddingTopKey, paddingTop);
    settings->setValue(labelPaddingRightKey, paddingRight);
    settings->setValue(labelPaddingBottomKey, paddingBottom);
}

int ZRConfigure::searchSeconds() const
{
    return intOf(searchSecondsKey, defaultSearchSeconds);
}

QString ZRConfigure::benchView() const
{
    return stringOf(benchViewKey);
}

void ZRConfigure::setBenchView(const QString &view)
{
    settings->setValue(benchViewKey, view);
}

// A null value converts to an empty text here, and to no number below.
QString ZRConfigure::stringOf(const QString &key) const
{
    return settings->value(key).toString();
}

int ZRConfigure::intOf(const QString &key, int absent) const
{
    bool valid = false;
    const int number = settings->value(key).toInt(&valid);
    return valid ? number : absent;
}

double ZRConfigure::doubleOf(const QString &key) const
{
    bool valid = false;
    const double number = settings->value(key).toDouble(&valid);
    return valid ? number : 0.0; // a number out of range reads as infinite, but not as valid
}
