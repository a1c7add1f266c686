#include "FleetLabelSettings.h"

#include "FleetJson.h"
#include "WinPskNames.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using namespace FleetJson;

namespace {

using Values = FleetLabelSettings::Values;
using Failure = FleetLabelSettings::Failure;

constexpr char fileName[] = "label-printer.json";

bool isTextArray(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    return value.isArray() && std::all_of(array.begin(), array.end(), isText);
}

bool isDensity(const QJsonValue &value)
{
    return value.isDouble() && value.toDouble() > 0 && value.toDouble() <= 1000;
}

bool isResult(const QJsonValue &value)
{
    return isWhole<-1000000, 1000000>(value);
}

constexpr FleetJsonKey<Failure> failureKeys[] = {
    {"result", "a whole number", isResult,
        [](const QJsonValue &v, Failure &f) { f.result = v.toInt(); }},
    {"at", "a whole number from 1", isWhole<1, 1000000>,
        [](const QJsonValue &v, Failure &f) { f.at = v.toInt(); }},
};

bool isFailure(const QJsonValue &value)
{
    Failure ignored{};
    const QJsonObject object = value.toObject();
    return isResult(value)
        || (object.contains(QStringLiteral("result")) && complaint(object, failureKeys).isEmpty()
            && take(object, failureKeys, ignored).isEmpty());
}

bool isCall(const QString &name)
{
    return std::find(std::begin(winPskNames), std::end(winPskNames), name) != std::end(winPskNames);
}

bool areFailures(const QJsonValue &value)
{
    const QJsonObject object = value.toObject();
    const QStringList names = object.keys();
    return value.isObject() && std::all_of(names.begin(), names.end(), isCall)
        && std::all_of(object.begin(), object.end(), isFailure);
}

void takeFailures(const QJsonValue &value, Values &values)
{
    const QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        Failure failure{it.value().toInt(), 0};
        take(it.value().toObject(), failureKeys, failure);
        values.failures.insert(it.key(), failure);
    }
}

// Another one for each writing of the file: by its time and, as that has its grain, its content.
QByteArray editionOf(const QFile &file, const QByteArray &json)
{
    const QDateTime written = file.fileTime(QFileDevice::FileModificationTime);
    const QByteArray time = QByteArray::number(written.toMSecsSinceEpoch());
    return QCryptographicHash::hash(time + json, QCryptographicHash::Sha1).toHex();
}

constexpr FleetJsonKey<Values> keys[] = {
    {"note", "a text", isText, [](const QJsonValue &, Values &) {}},
    {"folder", "a text", isText,
        [](const QJsonValue &v, Values &s) { s.folder = QDir(s.folder).filePath(v.toString()); }},
    {"density", "a number above 0, up to 1000", isDensity,
        [](const QJsonValue &v, Values &s) { s.density = v.toDouble(); }},
    {"ports", "an array of texts", isTextArray,
        [](const QJsonValue &v, Values &s) {
            s.anyPort = false;
            for (const QJsonValue &port : v.toArray())
                s.ports.append(port.toString());
        }},
    {"fail", "an object of entry points, each with a result or an object of \"result\" and \"at\"",
        areFailures, takeFailures},
};

}

FleetLabelSettings::FleetLabelSettings(const QString &home) : home(home), counts(home)
{
    read("{}");
}

QString FleetLabelSettings::refresh()
{
    QFile file(QDir(home).filePath(fileName));
    const QByteArray json = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const QByteArray found = editionOf(file, json);
    if (found == edition)
        return QString();
    edition = found;
    counts.begin(edition);
    const QString problem = read(json.isEmpty() ? "{}" : json);
    return problem.isEmpty() ? problem : fileName + QStringLiteral(": ") + problem;
}

QString FleetLabelSettings::read(const QByteArray &json)
{
    current = Values();
    current.folder = QDir(home).filePath(QStringLiteral("labels"));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        return lineAndColumn(json, error.offset) + QStringLiteral(": ") + error.errorString();
    if (!document.isObject())
        return QStringLiteral("must be an object");
    const QJsonObject object = document.object();
    const QString problem = complaint(object, keys);
    if (!problem.isEmpty())
        return problem;
    Values told;
    told.folder = home; // that of a relative path
    const QStringList others = take(object, keys, told);
    if (!others.isEmpty())
        return QStringLiteral("unknown key \"%1\"").arg(others.first());
    if (!object.contains(QStringLiteral("folder")))
        told.folder = current.folder;
    else if (!QDir().mkpath(told.folder))
        return QStringLiteral("can't make the folder %1").arg(told.folder);
    current = told;
    return QString();
}

const FleetLabelSettings::Failure *FleetLabelSettings::failureOf(const QString &call)
{
    const auto found = current.failures.constFind(call);
    if (found == current.failures.constEnd())
        return nullptr;
    return found->at == 0 || found->at == counts.next(call) ? &*found : nullptr;
}
