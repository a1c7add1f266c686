#pragma once

#include <QByteArray>
#include <QMutex>
#include <QSize>
#include <QThread>
#include <QVector>

#include <atomic>

// A viewer of a stream on FFmpeg's libraries: opens it, decodes it and takes notes, until it is
// told to stop or the stream ends. The notes may be read at any time; times are milliseconds since
// the epoch.
class StreamViewer : public QThread
{
public:
    struct Picture {
        qint64 seenAt;
        qint64 madeAt; // as its time code says, -1 unreadable
        QSize size;
    };

    struct Notes {
        bool opened = false;
        qint64 openedAt = 0;
        int error = 0; // of opening, or why it ended
        QByteArray videoCodec; // empty: none
        QByteArray audioCodec;
        int samplesPerSecond = 0;
        int parameterBytes = 0; // of the video, from the description
        QVector<bool> isKey; // of each video packet
        QVector<Picture> pictures;
        QByteArray text; // grey values of the last picture's lower third, with name and clock
        QVector<float> samples; // of the first seconds
        int packets = 0;
        qint64 lastPacketAt = 0;
        int decodeErrors = 0;
        bool ended = false; // by the other side
    };

    explicit StreamViewer(const QString &url, const char *transport = "tcp");
    ~StreamViewer() override;

    Notes notes() const;
    void stop();

private:
    void run() override;
    void watch(struct AVFormatContext *format);
    template <typename Change> void change(const Change &make);

    const QByteArray url;
    const QByteArray transport;
    std::atomic<bool> stopping;
    std::atomic<bool> closing; // in good order
    mutable QMutex mutex;
    Notes noted;
};
