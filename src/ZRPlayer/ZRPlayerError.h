#pragma once

#include <QByteArray>

extern "C" {
#include <libavutil/error.h>
}

// FFmpeg's text for one of its results, for a log line.
inline QByteArray errorText(int result)
{
    char text[1024] = {};
    av_strerror(result, text, sizeof text);
    return QByteArray(text);
}
