#include "VorlynReport.h"

#include "VorlynJson.h"

#include <QVariant>

#include <algorithm>
#include <iterator>

namespace {

using Function = VorlynReport::Function;
using Content = VorlynReport::Content;

struct Row {
    Function function;
    const char *word;
    Content content;
};

constexpr Row rows[] = {
    {Function::None, "", Content::Nothing},
    {Function::Bree, "bree", Content::Status},
    {Function::Fall, "fall", Content::Status},
    {Function::Crying, "crying", Content::Status},
    {Function::KeyCall, "keycall", Content::Status},
    {Function::KeyWord, "keyword", Content::Status},
    {Function::MillimeterWave, "millimeterwave", Content::Status},
    {Function::Temperature, "temperature", Content::Temperature},
    {Function::ExtTemperature, "exttemperature", Content::Temperature},
    {Function::SDCard, "sdcard", Content::Sizes},
    {Function::WiFi, "wifi", Content::Networks},
    {Function::Microphone, "microphone", Content::Nothing},
    {Function::Speaker, "speaker", Content::Nothing},
    {Function::Image, "image", Content::Nothing},
    {Function::Confirm, "confirm", Content::Nothing},
};

constexpr bool areInTheirOrder()
{
    for (size_t i = 0; i < std::size(rows); ++i) {
        if (rows[i].function != Function(i))
            return false;
    }
    return true;
}
static_assert(areInTheirOrder(), "a function is the index of its row");

Function functionOf(const QString &word)
{
    const Row *row = std::find_if(std::begin(rows), std::end(rows), [&word](const Row &candidate) {
        return word.compare(QLatin1String(candidate.word), Qt::CaseInsensitive) == 0;
    });
    return row == std::end(rows) ? Function::None : row->function;
}

// A number or a decimal text.
bool isNumber(const QJsonValue &value)
{
    bool isRead = false;
    const double number = value.toVariant().toDouble(&isRead);
    return isRead && qIsFinite(number) && !value.isBool();
}

bool isListOrAbsent(const QJsonValue &value)
{
    return value.isArray() || value.isUndefined();
}

// A number or a decimal text that intOf() reads as it is.
bool isWhole(const QJsonValue &value)
{
    bool isRead = value.isDouble() && value.toInt(0) == value.toInt(1); // neither's default
    if (value.isString())
        value.toString().toInt(&isRead);
    return isRead;
}

// False when the content is not there.
bool readContent(const QJsonObject &object, VorlynReport &report)
{
    switch (VorlynReport::contentOf(report.function)) {
    case Content::Status:
        report.status = stringOf(object, "status");
        return object.value("status").isString();
    case Content::Temperature:
        report.temperature = object.value("temperature").toVariant().toDouble();
        return isNumber(object.value("temperature"));
    case Content::Sizes:
        report.totalSize = intOf(object, "totalsize");
        report.freeSize = intOf(object, "freesize");
        return isWhole(object.value("totalsize")) && isWhole(object.value("freesize"));
    case Content::Networks:
        report.scanResult = resultOf(object);
        report.networks = networksOf(object);
        return object.value("result").isString() && isListOrAbsent(object.value("WifiList"));
    case Content::Nothing:
        break;
    }
    return true;
}

}

VorlynReport::Content VorlynReport::contentOf(Function function)
{
    return rows[int(function)].content;
}

VorlynReport VorlynReport::fromJson(const QJsonObject &object)
{
    VorlynReport report;
    report.srcid = stringOf(object, "srcid");
    report.function = functionOf(stringOf(object, "function"));
    const bool isGood = stringOf(object, "method") == QLatin1String("report") && report.isValid()
        && !report.srcid.isEmpty() && readContent(object, report);
    return isGood ? report : VorlynReport();
}
