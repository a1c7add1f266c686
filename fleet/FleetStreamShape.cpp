#include "FleetStreamShape.h"

#include "FleetJson.h"

#include <QRegularExpression>

using namespace FleetJson;

namespace {

constexpr int widest = 4096;
constexpr int highest = 2304;
constexpr int smallest = 64;

constexpr const char *videoNames[] = {"none", "H.264", "H.265"};
constexpr const char *audioNames[] = {"none", "AAC", "PCMA"};

template <size_t Count> int indexOf(const QJsonValue &value, const char *const (&names)[Count])
{
    for (size_t i = 0; i < Count; ++i) {
        if (value == QLatin1String(names[i]))
            return int(i);
    }
    return -1;
}

// Null when the text is no size that can be encoded.
QSize sizeOf(const QJsonValue &value)
{
    static const QRegularExpression form(QStringLiteral("\\A(\\d{2,4})x(\\d{2,4})\\z"));
    const QRegularExpressionMatch match = form.match(value.toString());
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    const bool good = size.width() >= smallest && size.height() >= smallest
        && size.width() <= widest && size.height() <= highest && size.width() % 2 == 0
        && size.height() % 2 == 0;
    return good ? size : QSize();
}

bool isSize(const QJsonValue &value)
{
    return sizeOf(value).isValid();
}

QString textOf(const QSize &size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

constexpr char expectedSize[] = "a size like 1280x720, even numbers from 64x64 to 4096x2304";

constexpr FleetJsonKey<FleetStreamShape> streamKeys[] = {
    {"video", "\"H.264\", \"H.265\" or \"none\"",
        [](const QJsonValue &v) { return indexOf(v, videoNames) >= 0; },
        [](const QJsonValue &v, FleetStreamShape &s) {
            s.video = FleetStreamShape::Video(indexOf(v, videoNames));
        }},
    {"audio", "\"AAC\", \"PCMA\" or \"none\"",
        [](const QJsonValue &v) { return indexOf(v, audioNames) >= 0; },
        [](const QJsonValue &v, FleetStreamShape &s) {
            s.audio = FleetStreamShape::Audio(indexOf(v, audioNames));
        }},
    {"size", expectedSize, isSize,
        [](const QJsonValue &v, FleetStreamShape &s) { s.size = sizeOf(v); }},
    {"fps", "a whole number from 1 to 60", isWhole<1, 60>,
        [](const QJsonValue &v, FleetStreamShape &s) { s.fps = v.toInt(); }},
    {"next-size", expectedSize, isSize,
        [](const QJsonValue &v, FleetStreamShape &s) { s.nextSize = sizeOf(v); }},
    {"next-size-after", "a number from 0 to 3600", isSeconds,
        [](const QJsonValue &v, FleetStreamShape &s) { s.nextSizeAfter = v.toDouble(); }},
    {"always", "true or false", isBool,
        [](const QJsonValue &v, FleetStreamShape &s) { s.always = v.toBool(); }},
    {"closed", "true or false", isBool,
        [](const QJsonValue &v, FleetStreamShape &s) { s.closed = v.toBool(); }},
    {"note", "a text", isText, [](const QJsonValue &, FleetStreamShape &) {}},
};

FleetStreamShape shape(
    FleetStreamShape::Video video, const QSize &size, FleetStreamShape::Audio audio)
{
    FleetStreamShape made;
    made.video = video;
    made.size = size;
    made.audio = audio;
    return made;
}

}

FleetStreamShape FleetStreamShape::usual(int position)
{
    static const FleetStreamShape mix[] = {
        shape(H264, {1280, 720}, Aac),
        shape(H264, {640, 480}, Pcma),
        shape(H265, {1280, 720}, Aac),
        shape(H264, {1920, 1080}, Aac),
        shape(H264, {1280, 720}, NoAudio),
        shape(H265, {640, 480}, Pcma),
        shape(NoVideo, {1280, 720}, Aac),
        shape(H264, {1920, 1080}, Pcma),
    };
    return mix[size_t(position - 1) % (sizeof mix / sizeof *mix)];
}

QString FleetStreamShape::read(const QJsonObject &object)
{
    for (const QString &key : object.keys()) {
        if (!knows(streamKeys, key))
            return QStringLiteral("unknown key \"%1\"").arg(key);
    }
    const QString problem = complaint(object, streamKeys);
    if (problem.isEmpty())
        take(object, streamKeys, *this);
    return problem;
}

QJsonObject FleetStreamShape::description() const
{
    return {{QStringLiteral("video"), QLatin1String(videoNames[video])},
        {QStringLiteral("audio"), QLatin1String(audioNames[audio])},
        {QStringLiteral("size"), video == NoVideo ? QString() : textOf(size)}};
}
