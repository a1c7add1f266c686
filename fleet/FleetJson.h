#pragma once

#include <QJsonObject>
#include <QStringList>

// JSON objects that are checked and read by tables: one row a key, in the order of effect.
// A wrong key or value is an error that names its place.
template <typename Target> struct FleetJsonKey {
    const char *name;
    const char *expects; // completes "must be ..."
    bool (*accepts)(const QJsonValue &value);
    void (*take)(const QJsonValue &value, Target &target);
};

namespace FleetJson {

template <qint64 First, qint64 Last> bool isWhole(const QJsonValue &value)
{
    const double number = value.toDouble();
    return value.isDouble() && number >= First && number <= Last && number == qint64(number);
}
inline bool isSeconds(const QJsonValue &value)
{
    return value.isDouble() && value.toDouble() >= 0 && value.toDouble() <= 3600;
}
inline bool isTrue(const QJsonValue &value)
{
    return value.isBool() && value.toBool();
}
inline bool isBool(const QJsonValue &value)
{
    return value.isBool();
}
inline bool isText(const QJsonValue &value)
{
    return value.isString();
}
inline bool isObject(const QJsonValue &value)
{
    return value.isObject();
}
inline bool isArray(const QJsonValue &value)
{
    return value.isArray();
}

// Keys of `object` that have a row go to `target`. Returns the others.
template <typename Target, size_t Rows>
QStringList take(
    const QJsonObject &object, const FleetJsonKey<Target> (&rows)[Rows], Target &target)
{
    QStringList others = object.keys();
    for (const FleetJsonKey<Target> &row : rows) {
        const QString name = QLatin1String(row.name);
        if (others.removeOne(name))
            row.take(object.value(name), target);
    }
    return others;
}

// The first complaint about a value that has a row, or an empty text.
template <typename Target, size_t Rows>
QString complaint(const QJsonObject &object, const FleetJsonKey<Target> (&rows)[Rows])
{
    for (const FleetJsonKey<Target> &row : rows) {
        const auto found = object.constFind(QLatin1String(row.name));
        if (found != object.constEnd() && !row.accepts(*found))
            return QStringLiteral("\"%1\" must be %2")
                .arg(QLatin1String(row.name), QLatin1String(row.expects));
    }
    return QString();
}

template <typename Target, size_t Rows>
bool knows(const FleetJsonKey<Target> (&rows)[Rows], const QString &key)
{
    for (const FleetJsonKey<Target> &row : rows) {
        if (key == QLatin1String(row.name))
            return true;
    }
    return false;
}

// "line 3, column 7" of a place in the text.
inline QString lineAndColumn(const QByteArray &json, int offset)
{
    const QByteArray before = json.left(offset);
    return QStringLiteral("line %1, column %2")
        .arg(before.count('\n') + 1)
        .arg(before.size() - before.lastIndexOf('\n'));
}

}
