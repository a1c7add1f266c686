#pragma once

#include "FleetPicture.h"
#include "FleetStreamShape.h"

#include <functional>
#include <memory>

#include <gst/app/gstappsrc.h>

// Gives an appsrc its buffers, one a tick of the pipeline's clock, each made at its moment. The
// appsrc owns it and asks on its streaming thread, which waits here for the tick. When that thread
// comes late, ticks are left out, so that the next buffer is fresh.
class FleetSource
{
public:
    virtual ~FleetSource() = default;

    static void attach(GstAppSrc *element, FleetSource *source);

protected:
    // `rate` ticks in `span`. A source may be behind by `slack` before ticks are left out. What is
    // recorded over a tick is there at its end.
    FleetSource(quint64 rate, GstClockTime span, GstClockTime slack, bool isRecorded);

    virtual void start(GstAppSrc *element) = 0; // sets the caps
    // The buffer of a tick.
    virtual GstBuffer *make(GstAppSrc *element, quint64 tick) = 0;
    GstClockTime timeOf(quint64 tick) const { return gst_util_uint64_scale(tick, span, rate); }

private:
    void push(GstAppSrc *element);
    void wait(GstAppSrc *element);

    const quint64 rate;
    const GstClockTime span;
    const GstClockTime slack;
    const bool isRecorded;
    quint64 next; // tick
};

// The test picture.
class FleetFrames : public FleetSource
{
public:
    using Name = std::function<QString()>;

    FleetFrames(const FleetStreamShape &shape, const Name &name);

private:
    void start(GstAppSrc *element) override;
    GstBuffer *make(GstAppSrc *element, quint64 tick) override;
    void resize(GstAppSrc *element, const QSize &size);

    const FleetStreamShape shape;
    const Name name;
    std::unique_ptr<FleetPicture> picture;
    GstClockTime resizeAt; // none: never
};

// A steady tone of 440 Hz, 16 bit, one channel.
class FleetTone : public FleetSource
{
public:
    FleetTone(int samplesPerSecond, int samplesPerBuffer);

private:
    void start(GstAppSrc *element) override;
    GstBuffer *make(GstAppSrc *element, quint64 tick) override;

    const int samplesPerSecond;
    const int samplesPerBuffer;
};
