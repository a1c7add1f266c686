#include "FleetSources_gst.h"

#include <QDateTime>

#include <cmath>

namespace {

constexpr double toneHz = 440;
constexpr double toneAmplitude = 10000;
constexpr GstClockTime soundSlack = 200 * GST_MSECOND;
constexpr double pi = 3.14159265358979323846;

}

FleetSource::FleetSource(quint64 rate, GstClockTime span, GstClockTime slack, bool isRecorded) :
    rate(rate),
    span(span),
    slack(slack),
    isRecorded(isRecorded),
    next(0)
{ }

void FleetSource::attach(GstAppSrc *element, FleetSource *source)
{
    source->start(element);
    GstAppSrcCallbacks callbacks = {};
    callbacks.need_data = [](GstAppSrc *element, guint, gpointer data) {
        static_cast<FleetSource *>(data)->push(element);
    };
    gst_app_src_set_callbacks(element, &callbacks, source,
        [](gpointer data) { delete static_cast<FleetSource *>(data); });
}

// For the next tick, which is another one if it is long over.
void FleetSource::wait(GstAppSrc *element)
{
    const GstClockTime now = gst_element_get_current_running_time(GST_ELEMENT(element));
    if (!GST_CLOCK_TIME_IS_VALID(now)) // the pipeline is about to stop
        return;
    const quint64 delay = isRecorded ? 1 : 0;
    if (now > timeOf(next + delay) + slack)
        next = gst_util_uint64_scale(now, rate, span);
    const GstClockTime due = timeOf(next + delay);
    if (due > now)
        g_usleep((due - now) / GST_USECOND);
}

void FleetSource::push(GstAppSrc *element)
{
    wait(element);
    GstBuffer *buffer = make(element, next);
    GST_BUFFER_PTS(buffer) = timeOf(next);
    GST_BUFFER_DURATION(buffer) = timeOf(next + 1) - timeOf(next);
    ++next;
    gst_app_src_push_buffer(element, buffer);
}

FleetFrames::FleetFrames(const FleetStreamShape &shape, const Name &name) :
    FleetSource(quint64(shape.fps), GST_SECOND, GST_SECOND / GstClockTime(shape.fps), false),
    shape(shape),
    name(name),
    resizeAt(shape.nextSize.isValid() ? GstClockTime(shape.nextSizeAfter * GST_SECOND)
                                      : GST_CLOCK_TIME_NONE)
{ }

void FleetFrames::start(GstAppSrc *element)
{
    resize(element, shape.size);
}

void FleetFrames::resize(GstAppSrc *element, const QSize &size)
{
    picture.reset(new FleetPicture(size.width(), size.height()));
    GstCaps *caps = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "I420", "width",
        G_TYPE_INT, size.width(), "height", G_TYPE_INT, size.height(), "framerate",
        GST_TYPE_FRACTION, shape.fps, 1, nullptr);
    gst_app_src_set_caps(element, caps);
    gst_caps_unref(caps);
}

GstBuffer *FleetFrames::make(GstAppSrc *element, quint64 tick)
{
    if (timeOf(tick) >= resizeAt) {
        resizeAt = GST_CLOCK_TIME_NONE;
        resize(element, shape.nextSize);
    }
    const QDateTime now = QDateTime::currentDateTime();
    picture->draw(
        name(), now.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")), now.toMSecsSinceEpoch());
    // Without a copy: the next is not asked for before the encoder is done with this one.
    const gsize size = picture->bytes().size();
    return gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY,
        const_cast<uint8_t *>(picture->bytes().data()), size, 0, size, nullptr, nullptr);
}

FleetTone::FleetTone(int samplesPerSecond, int samplesPerBuffer) :
    FleetSource(
        quint64(samplesPerSecond), quint64(samplesPerBuffer) * GST_SECOND, soundSlack, true),
    samplesPerSecond(samplesPerSecond),
    samplesPerBuffer(samplesPerBuffer)
{ }

void FleetTone::start(GstAppSrc *element)
{
    GstCaps *caps = gst_caps_new_simple("audio/x-raw", "format", G_TYPE_STRING, "S16LE", "layout",
        G_TYPE_STRING, "interleaved", "rate", G_TYPE_INT, samplesPerSecond, "channels", G_TYPE_INT,
        1, nullptr);
    gst_app_src_set_caps(element, caps);
    gst_caps_unref(caps);
}

GstBuffer *FleetTone::make(GstAppSrc *, quint64 tick)
{
    std::vector<gint16> samples(size_t(samplesPerBuffer), 0);
    quint64 sample = tick * quint64(samplesPerBuffer);
    for (gint16 &value : samples) {
        const double turn =
            toneHz * double(sample++ % quint64(samplesPerSecond)) / samplesPerSecond;
        value = GINT16_TO_LE(gint16(std::lround(toneAmplitude * std::sin(2 * pi * turn))));
    }
    return gst_buffer_new_memdup(samples.data(), samples.size() * sizeof samples[0]);
}
