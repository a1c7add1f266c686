#pragma once

#include "MediaClip.h"

#include <QByteArrayList>

struct AVFormatContext;

// Makes RTP and RTCP packets of one stream of a clip, by libavformat's packetiser.
class RtpStream
{
public:
    // `index` is the stream's place in the description. `reports`: with RTCP sender reports.
    RtpStream(const AVCodecParameters *parameters, int index, bool reports);
    ~RtpStream();
    RtpStream(const RtpStream &) = delete;
    RtpStream &operator=(const RtpStream &) = delete;

    // `shift` in seconds is added to the packet's time, which must not become negative.
    QByteArrayList packets(const AVPacket *packet, double shift);
    static bool isRtcp(const QByteArray &packet);
    // The SDP of all streams, with control lines "streamID=<index>".
    static QByteArray description(const std::vector<const AVCodecParameters *> &streams);

private:
    static int take(void *opaque, uint8_t *data, int size);

    std::shared_ptr<AVFormatContext> context;
    QByteArrayList made;
};
