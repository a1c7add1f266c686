#include "FleetLabelFolder.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryFile>

#include <algorithm>

namespace {

QString labelName(int number)
{
    return QStringLiteral("label-%1.png").arg(number, 6, 10, QLatin1Char('0'));
}

}

FleetLabelFolder::FleetLabelFolder(const QString &path) : path(path)
{
    QDir().mkpath(path);
}

void FleetLabelFolder::record(QJsonObject line) const
{
    line[QStringLiteral("time")] = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    QFile file(filePath(QStringLiteral("calls.jsonl")));
    const QByteArray bytes = QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)
        || file.write(bytes) != bytes.size())
        qWarning().noquote() << file.fileName() + ": " + file.errorString();
}

QStringList FleetLabelFolder::store(const QByteArray &png, int copies, QString *error) const
{
    QStringList names;
    int number = lastNumber();
    while (names.size() < copies) {
        const QString name = labelName(++number);
        if (storeAs(name, png, error))
            names.append(name);
        else if (!QFile::exists(filePath(name))) // else another printer took the number first
            break;
    }
    return names;
}

// Replaces no file.
bool FleetLabelFolder::storeAs(const QString &name, const QByteArray &png, QString *error) const
{
    QTemporaryFile file(filePath(QStringLiteral("label.XXXXXX")));
    if (!file.open() || file.write(png) != png.size() || !file.flush()
        || !file.setPermissions(file.permissions() | QFile::ReadGroup | QFile::ReadOther)
        || !file.rename(filePath(name))) {
        *error = filePath(name) + QStringLiteral(": ") + file.errorString();
        return false;
    }
    file.setAutoRemove(false);
    return true;
}

int FleetLabelFolder::lastNumber() const
{
    static const QRegularExpression form(QStringLiteral("^label-(\\d+)\\.png$"));
    int last = 0;
    for (const QString &name : QDir(path).entryList(QDir::Files))
        last = std::max(last, form.match(name).captured(1).toInt());
    return last;
}

QString FleetLabelFolder::filePath(const QString &name) const
{
    return QDir(path).filePath(name);
}
