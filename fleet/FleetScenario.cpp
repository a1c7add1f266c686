#include "FleetScenario.h"

#include "FleetJson.h"

#include <QFile>
#include <QJsonDocument>

#include <algorithm>

using namespace FleetJson;

namespace {

bool isObjectArray(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    return value.isArray() && std::all_of(array.begin(), array.end(), isObject);
}

bool isCamera(const QJsonValue &value)
{
    return isWhole<1, 1000000>(value) || (value.isString() && !value.toString().isEmpty());
}

void ignore(const QJsonValue &, FleetCamera &) { }

constexpr FleetJsonKey<FleetCamera> entryKeys[] = {
    {"camera", "a number from 1, a MAC or \"all\"", isCamera, ignore},
    {"note", "a text", isText, ignore},
    {"rules", "an array of objects", isObjectArray, ignore},
    {"reports", "an array of objects", isObjectArray, ignore},
    {"fields", "an object", isObject,
        [](const QJsonValue &v, FleetCamera &c) { c.setFields(v.toObject()); }},
    {"sd", "an object", isObject, [](const QJsonValue &v, FleetCamera &c) { c.sd = v.toObject(); }},
    {"wifi", "an array", isArray,
        [](const QJsonValue &v, FleetCamera &c) { c.wifi = v.toArray(); }},
    {"wifi-scan-ms", "a whole number from 0 to 600000", isWhole<0, 600000>,
        [](const QJsonValue &v, FleetCamera &c) { c.wifiScanMs = v.toInt(); }},
    {"restart-seconds", "a number from 0 to 3600", isSeconds,
        [](const QJsonValue &v, FleetCamera &c) { c.restartMs = int(v.toDouble() * 1000); }},
    {"stream", "an object", isObject,
        [](const QJsonValue &v, FleetCamera &c) { c.stream.read(v.toObject()); }},
    {"after-reset", "an object", isObject,
        [](const QJsonValue &v, FleetCamera &c) { c.afterReset = v.toObject(); }},
    {"after-upgrade", "an object", isObject,
        [](const QJsonValue &v, FleetCamera &c) { c.afterUpgrade = v.toObject(); }},
};

// The one key of the file, or what is wrong with it.
QString topLevelProblem(const QJsonObject &object)
{
    for (const QString &key : object.keys()) {
        if (key != QLatin1String("cameras") && key != QLatin1String("note"))
            return QStringLiteral("unknown key \"%1\"").arg(key);
    }
    return isObjectArray(object.value(QStringLiteral("cameras")))
        ? QString()
        : QStringLiteral("\"cameras\" must be an array of objects");
}

}

bool FleetScenario::Entry::isAbout(const FleetCamera &other) const
{
    if (camera.isDouble())
        return camera.toInt() == other.position;
    const QString text = camera.toString();
    return text == QLatin1String("all")
        || text.compare(other.field("mac"), Qt::CaseInsensitive) == 0;
}

bool FleetScenario::load(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    return parse(file.readAll(), path, error);
}

bool FleetScenario::parse(const QByteArray &json, const QString &fileName, QString *error)
{
    name = fileName;
    entries.clear();
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = QStringLiteral("%1: %2: %3")
                     .arg(name, lineAndColumn(json, parseError.offset), parseError.errorString());
        return false;
    }
    QString problem = topLevelProblem(document.object());
    const QJsonArray cameras = document.object().value(QStringLiteral("cameras")).toArray();
    for (int i = 0; problem.isEmpty() && i < cameras.size(); ++i)
        problem = readEntry(cameras.at(i).toObject(), QStringLiteral("cameras[%1]").arg(i));
    if (!problem.isEmpty())
        *error = name + QStringLiteral(": ") + problem;
    return problem.isEmpty();
}

QString FleetScenario::readEntry(const QJsonObject &object, const QString &place)
{
    const auto at = [](const QString &where, const QString &problem) {
        return problem.isEmpty() ? problem : where + QStringLiteral(": ") + problem;
    };
    for (const QString &key : object.keys()) {
        if (!knows(entryKeys, key))
            return at(place, QStringLiteral("unknown key \"%1\"").arg(key));
    }
    if (!object.contains(QStringLiteral("camera")))
        return at(place, QStringLiteral("the key \"camera\" is missing"));
    QString problem = at(place, complaint(object, entryKeys));
    if (problem.isEmpty())
        problem = at(place + QStringLiteral(".stream"),
            FleetStreamShape().read(object.value(QStringLiteral("stream")).toObject()));

    Entry entry{object.value(QStringLiteral("camera")), place, object, {}, {}};
    const QJsonArray rules = object.value(QStringLiteral("rules")).toArray();
    for (int i = 0; problem.isEmpty() && i < rules.size(); ++i) {
        const FleetRulePointer rule(new FleetRule);
        rule->place = QStringLiteral("%1.rules[%2]").arg(place).arg(i);
        problem = at(rule->place, rule->read(rules.at(i).toObject()));
        entry.rules.append(rule);
    }
    const QJsonArray reports = object.value(QStringLiteral("reports")).toArray();
    for (int i = 0; problem.isEmpty() && i < reports.size(); ++i) {
        FleetReport report;
        problem = at(QStringLiteral("%1.reports[%2]").arg(place).arg(i),
            report.read(reports.at(i).toObject()));
        entry.reports.append(report);
    }
    entries.append(entry);
    return problem;
}

bool FleetScenario::apply(QVector<FleetCamera> &cameras, QString *error) const
{
    const QVector<FleetCamera> before = cameras;
    for (const Entry &entry : entries) {
        bool found = false;
        for (int i = 0; i < cameras.size(); ++i) {
            if (!entry.isAbout(before.at(i)))
                continue;
            found = true;
            take(entry.changes, entryKeys, cameras[i]);
            for (const FleetRulePointer &rule : entry.rules)
                cameras[i].rules.append(rule);
            cameras[i].reports += entry.reports;
        }
        if (!found) {
            *error = QStringLiteral("%1: %2: \"camera\" names none of the %3 cameras")
                         .arg(name, entry.place)
                         .arg(cameras.size());
            return false;
        }
    }
    for (FleetCamera &camera : cameras) {
        camera.factory = camera.fields;
        if (camera.stream.isEmpty()) {
            *error = QStringLiteral("%1: the stream of camera %2 has neither picture nor sound")
                         .arg(name)
                         .arg(camera.position);
            return false;
        }
    }
    return true;
}

QStringList FleetScenario::unusedRules() const
{
    QStringList places;
    for (const Entry &entry : entries) {
        for (const FleetRulePointer &rule : entry.rules) {
            if (rule->used == 0)
                places.append(rule->place);
        }
    }
    return places;
}
