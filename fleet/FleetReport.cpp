#include "FleetReport.h"

#include "FleetCamera.h"
#include "FleetJson.h"

#include <QJsonDocument>

#include <algorithm>

using namespace FleetJson;

namespace {

constexpr int idOfNoRequest = -1; // a message without an id counts as the answer to request 0

bool isMethodOrAny(const QJsonValue &value)
{
    return value == QLatin1String("any") || FleetCamera::methods().contains(value.toString());
}

bool isWord(const QJsonValue &value)
{
    const QString text = value.toString();
    return !text.isEmpty()
        && std::none_of(text.begin(), text.end(), [](QChar letter) { return letter.isSpace(); });
}

bool isPeriod(const QJsonValue &value)
{
    return isSeconds(value) && value.toDouble() > 0;
}

constexpr FleetJsonKey<FleetReport> reportKeys[] = {
    {"on", "the name of a method or \"any\"", isMethodOrAny,
        [](const QJsonValue &v, FleetReport &r) { r.on = v.toString(); }},
    {"key", "a word", isWord, [](const QJsonValue &v, FleetReport &r) { r.key = v.toString(); }},
    {"after", "a number from 0 to 3600", isSeconds,
        [](const QJsonValue &v, FleetReport &r) { r.afterSeconds = v.toDouble(); }},
    {"every", "a number above 0, up to 3600", isPeriod,
        [](const QJsonValue &v, FleetReport &r) { r.everySeconds = v.toDouble(); }},
    {"times", "a whole number from 1", isWhole<1, 1000000000>,
        [](const QJsonValue &v, FleetReport &r) { r.times = v.toInt(); }},
    {"count", "a whole number from 1 to 1000000", isWhole<1, 1000000>,
        [](const QJsonValue &v, FleetReport &r) { r.count = v.toInt(); }},
    {"report", "an object", isObject,
        [](const QJsonValue &v, FleetReport &r) { r.keys = v.toObject(); }},
    {"raw", "a text", isText,
        [](const QJsonValue &v, FleetReport &r) {
            r.isRaw = true;
            r.raw = v.toString().toUtf8();
        }},
    {"note", "a text", isText, [](const QJsonValue &, FleetReport &) {}},
};

}

QString FleetReport::read(const QJsonObject &object)
{
    for (const QString &key : object.keys()) {
        if (!knows(reportKeys, key))
            return QStringLiteral("unknown key \"%1\"").arg(key);
    }
    if (object.contains(QStringLiteral("report")) == object.contains(QStringLiteral("raw")))
        return QStringLiteral("one of \"report\" and \"raw\" must be there");
    if (object.contains(QStringLiteral("key")) && object.contains(QStringLiteral("on")))
        return QStringLiteral("only one of \"key\" and \"on\" may be there");
    const QString problem = complaint(object, reportKeys);
    if (problem.isEmpty())
        take(object, reportKeys, *this);
    return problem;
}

QByteArray FleetReport::text(const QString &srcid, const QString &destid) const
{
    if (isRaw)
        return raw;
    QJsonObject message{{QStringLiteral("id"), idOfNoRequest},
        {QStringLiteral("method"), QStringLiteral("report")}, {QStringLiteral("srcid"), srcid},
        {QStringLiteral("destid"), destid}};
    for (auto i = keys.begin(); i != keys.end(); ++i)
        message[i.key()] = i.value();
    return QJsonDocument(message).toJson(QJsonDocument::Compact);
}
