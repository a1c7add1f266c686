#include "FleetRule.h"

#include "FleetCamera.h"
#include "FleetFrame.h"
#include "FleetJson.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using namespace FleetJson;

namespace {

constexpr int firstStrangeId = 1000000;

bool isTextArray(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    return value.isArray() && std::all_of(array.begin(), array.end(), isText);
}

bool isIdType(const QJsonValue &value)
{
    return value == QLatin1String("text") || value == QLatin1String("boolean");
}

void setKeys(const QJsonValue &value, FleetReply &reply)
{
    const QJsonObject keys = value.toObject();
    for (auto i = keys.begin(); i != keys.end(); ++i)
        reply.body[i.key()] = i.value();
}

void removeKeys(const QJsonValue &value, FleetReply &reply)
{
    for (const QJsonValue &key : value.toArray())
        reply.body.remove(key.toString());
}

void changeIdType(const QJsonValue &value, FleetReply &reply)
{
    const int id = reply.body.value(QStringLiteral("id")).toInt();
    const bool asText = value == QLatin1String("text");
    reply.body[QStringLiteral("id")] =
        asText ? QJsonValue(QString::number(id)) : QJsonValue(id != 0);
}

constexpr FleetJsonKey<FleetReply> replyFaults[] = {
    {"set", "an object", isObject, setKeys},
    {"remove", "an array of texts", isTextArray, removeKeys},
    {"id-as", "\"text\" or \"boolean\"", isIdType, changeIdType},
    {"size", "a whole number from 1 to 60000", isWhole<1, 60000>,
        [](const QJsonValue &v, FleetReply &r) { r.size = v.toInt(); }},
    {"malformed", "true", isTrue, [](const QJsonValue &, FleetReply &r) { r.malformed = true; }},
    {"length-error", "a whole number from -60000 to 60000", isWhole<-60000, 60000>,
        [](const QJsonValue &v, FleetReply &r) { r.lengthError = v.toInt(); }},
    {"cut", "a whole number from 0 to 60000", isWhole<0, 60000>,
        [](const QJsonValue &v, FleetReply &r) { r.cut = v.toInt(); }},
    {"silent", "true", isTrue, [](const QJsonValue &, FleetReply &r) { r.silent = true; }},
    {"delay-ms", "a whole number from 0 to 600000", isWhole<0, 600000>,
        [](const QJsonValue &v, FleetReply &r) { r.delayMs += v.toInt(); }},
    {"copies", "a whole number from 1 to 10000", isWhole<1, 10000>,
        [](const QJsonValue &v, FleetReply &r) { r.copies = v.toInt(); }},
    {"burst", "a whole number from 1 to 10000", isWhole<1, 10000>,
        [](const QJsonValue &v, FleetReply &r) { r.burst = v.toInt(); }},
};

void setAnswerBody(const QByteArray &type, const QByteArray &body, FleetHttpAnswer &answer)
{
    answer.fixed = true;
    answer.contentType = type;
    answer.body = body;
}

constexpr FleetJsonKey<FleetHttpAnswer> httpFaults[] = {
    {"Result", "a whole number", isWhole<-2147483648LL, 2147483647LL>,
        [](const QJsonValue &v, FleetHttpAnswer &a) {
            const QJsonObject object{{QStringLiteral("Result"), v}};
            setAnswerBody(
                "application/json", QJsonDocument(object).toJson(QJsonDocument::Compact), a);
        }},
    {"body", "a text", isText,
        [](const QJsonValue &v, FleetHttpAnswer &a) {
            setAnswerBody("text/html", v.toString().toUtf8(), a);
        }},
    {"content-type", "a text", isText,
        [](const QJsonValue &v, FleetHttpAnswer &a) { a.contentType = v.toString().toUtf8(); }},
    {"status", "a whole number from 100 to 999", isWhole<100, 999>,
        [](const QJsonValue &v, FleetHttpAnswer &a) { a.status = v.toInt(); }},
    {"silent", "true", isTrue, [](const QJsonValue &, FleetHttpAnswer &a) { a.silent = true; }},
    {"reset-after", "a whole number from 0", isWhole<0, (1LL << 52)>,
        [](const QJsonValue &v, FleetHttpAnswer &a) { a.resetAfter = qint64(v.toDouble()); }},
    {"delay-ms", "a whole number from 0 to 600000", isWhole<0, 600000>,
        [](const QJsonValue &v, FleetHttpAnswer &a) { a.delayMs = v.toInt(); }},
};

template <int FleetStreamFaults::*Field>
void setMs(const QJsonValue &value, FleetStreamFaults &faults)
{
    faults.*Field = int(value.toDouble() * 1000);
}

constexpr FleetJsonKey<FleetStreamFaults> streamFaults[] = {
    {"status", "a whole number from 300 to 999", isWhole<300, 999>,
        [](const QJsonValue &v, FleetStreamFaults &f) { f.status = v.toInt(); }},
    {"silent", "true", isTrue, [](const QJsonValue &, FleetStreamFaults &f) { f.silent = true; }},
    {"reset", "true", isTrue, [](const QJsonValue &, FleetStreamFaults &f) { f.reset = true; }},
    {"garbage", "a whole number from 1 to 1000000", isWhole<1, 1000000>,
        [](const QJsonValue &v, FleetStreamFaults &f) { f.garbage = v.toInt(); }},
    {"delay-ms", "a whole number from 0 to 600000", isWhole<0, 600000>,
        [](const QJsonValue &v, FleetStreamFaults &f) { f.delayMs = v.toInt(); }},
    {"freeze-after", "a number from 0 to 3600", isSeconds,
        setMs<&FleetStreamFaults::freezeAfterMs>},
    {"close-after", "a number from 0 to 3600", isSeconds, setMs<&FleetStreamFaults::closeAfterMs>},
    {"lose-every", "a whole number from 1", isWhole<1, 1000000000>,
        [](const QJsonValue &v, FleetStreamFaults &f) { f.loseEvery = v.toInt(); }},
    {"corrupt-every", "a whole number from 1", isWhole<1, 1000000000>,
        [](const QJsonValue &v, FleetStreamFaults &f) { f.corruptEvery = v.toInt(); }},
};

enum Kind { Method, Http, Stream };

Kind kindOf(const QString &on)
{
    if (on == QLatin1String("upload") || on == QLatin1String("page"))
        return Http;
    return on == QLatin1String("stream") ? Stream : Method;
}

constexpr FleetJsonKey<FleetRule> ruleKeys[] = {
    {"on", "the name of a method, \"any\", \"upload\", \"page\" or \"stream\"",
        [](const QJsonValue &v) {
            const QString on = v.toString();
            return kindOf(on) != Method || on == QLatin1String("any")
                || FleetCamera::methods().contains(on);
        },
        [](const QJsonValue &v, FleetRule &r) { r.on = v.toString(); }},
    {"times", "a whole number from 1", isWhole<1, 1000000000>,
        [](const QJsonValue &v, FleetRule &r) { r.times = v.toInt(); }},
    {"after", "a whole number from 0", isWhole<0, 1000000000>,
        [](const QJsonValue &v, FleetRule &r) { r.after = v.toInt(); }},
    {"apply", "true or false", isBool,
        [](const QJsonValue &v, FleetRule &r) { r.apply = v.toBool(); }},
    {"note", "a text", isText, [](const QJsonValue &, FleetRule &) {}},
};

template <typename Target, size_t Rows>
QString faultComplaint(
    const QJsonObject &faults, const FleetJsonKey<Target> (&rows)[Rows], const QString &on)
{
    for (const QString &key : faults.keys()) {
        if (!knows(rows, key))
            return QStringLiteral("unknown key \"%1\" in a rule on \"%2\"").arg(key, on);
    }
    return complaint(faults, rows);
}

}

bool FleetRule::isAbout(const QString &method) const
{
    return on == method || (on == QLatin1String("any") && kindOf(method) == Method);
}

QString FleetRule::read(const QJsonObject &object)
{
    if (!object.contains(QStringLiteral("on")))
        return QStringLiteral("the key \"on\" is missing");
    const QString problem = complaint(object, ruleKeys);
    if (!problem.isEmpty())
        return problem;
    for (const QString &key : take(object, ruleKeys, *this))
        faults[key] = object.value(key);
    switch (kindOf(on)) {
    case Http:
        return faultComplaint(faults, httpFaults, on);
    case Stream:
        return faultComplaint(faults, streamFaults, on);
    case Method:
        break;
    }
    return faultComplaint(faults, replyFaults, on);
}

FleetRulePointer FleetRules::take(const QString &method)
{
    for (Use &use : uses) {
        if (!use.rule->isAbout(method))
            continue;
        ++use.met;
        const int turn = use.met - use.rule->after;
        if (turn < 1 || (use.rule->times >= 0 && turn > use.rule->times))
            continue;
        ++use.rule->used;
        return use.rule;
    }
    return FleetRulePointer();
}

void FleetReply::spoil(const FleetRule &rule)
{
    take(rule.faults, replyFaults, *this);
}

void FleetHttpAnswer::spoil(const FleetRule &rule)
{
    take(rule.faults, httpFaults, *this);
}

void FleetStreamFaults::spoil(const FleetRule &rule)
{
    take(rule.faults, streamFaults, *this);
}

bool FleetStreamFaults::any() const
{
    return answersItself() || reset || delayMs > 0 || freezeAfterMs >= 0 || closeAfterMs >= 0
        || loseEvery > 0 || corruptEvery > 0;
}

QByteArray FleetReply::datagram(const QJsonObject &object) const
{
    QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    if (size > 0) {
        QJsonObject padded = object;
        padded[QStringLiteral("padding")] = QString();
        json = QJsonDocument(padded).toJson(QJsonDocument::Compact);
        const int missing = size - FleetFrame::headerSize - json.size();
        padded[QStringLiteral("padding")] = QString(qMax(0, missing), QLatin1Char('x'));
        json = QJsonDocument(padded).toJson(QJsonDocument::Compact);
    }
    if (malformed)
        json.chop(1);
    const QByteArray whole = FleetFrame::encode(json, lengthError);
    return cut < 0 ? whole : whole.left(cut);
}

QVector<QByteArray> FleetReply::datagrams() const
{
    QVector<QByteArray> all;
    if (silent)
        return all;
    QJsonObject stray = body;
    for (int i = 0; i < burst; ++i) {
        stray[QStringLiteral("id")] = firstStrangeId + i;
        all.append(FleetFrame::encode(QJsonDocument(stray).toJson(QJsonDocument::Compact)));
    }
    all.insert(all.size(), copies, datagram(body));
    return all;
}
