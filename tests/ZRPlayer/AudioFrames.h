#pragma once

#include "Turn.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
}

#include <cmath>
#include <memory>

struct AudioFrameDeleter {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using AudioFrame = std::unique_ptr<AVFrame, AudioFrameDeleter>;

// What a decoder gives of a tone that is the same in all channels and begins at sample `first`.
// Formats: U8, S16 and FLT, packed or planar.
struct Tone {
    AVSampleFormat format = AV_SAMPLE_FMT_S16;
    int rate = 48000;
    int channels = 2;
    double hertz = 440;
    double amplitude = 0.5;

    AudioFrame frame(int samples, int first = 0) const
    {
        AudioFrame frame(av_frame_alloc());
        frame->format = format;
        frame->sample_rate = rate;
        frame->nb_samples = samples;
        av_channel_layout_default(&frame->ch_layout, channels);
        av_frame_get_buffer(frame.get(), 0);
        const bool planar = av_sample_fmt_is_planar(format);
        for (int sample = 0; sample < samples; ++sample) {
            const double value = amplitude * std::sin(wholeTurn * hertz * (first + sample) / rate);
            for (int channel = 0; channel < channels; ++channel) {
                if (planar)
                    put(frame->data[channel], sample, value);
                else
                    put(frame->data[0], sample * channels + channel, value);
            }
        }
        return frame;
    }

private:
    void put(uint8_t *plane, int index, double value) const
    {
        switch (av_get_packed_sample_fmt(format)) {
        case AV_SAMPLE_FMT_U8:
            plane[index] = static_cast<uint8_t>(std::lround(128 + value * 127));
            break;
        case AV_SAMPLE_FMT_S16:
            reinterpret_cast<int16_t *>(plane)[index] =
                static_cast<int16_t>(std::lround(value * 32767));
            break;
        default:
            reinterpret_cast<float *>(plane)[index] = static_cast<float>(value);
        }
    }
};
