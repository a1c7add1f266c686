#pragma once

#include "MediaClip.h"

#include <QByteArrayList>
#include <QHostAddress>
#include <QThread>

#include <string>

class RtspServer;
struct RtspService;

// An RTSP server that plays a clip over and over: RTP and RTCP interleaved on the RTSP connection,
// to any number of clients, each from the clip's beginning. It shares no code with the cameras'
// server.
// Thread: one; the server works on a thread of its own. The destructor cuts all connections.
class RtspPeer
{
public:
    // Requests are named as in the protocol: "DESCRIBE". 0 or empty: no such fault.
    struct Faults {
        enum Answer { Proper, RandomBytes, EndlessHeaders, HugeLength, WrongSequence };
        enum Description { Right, Broken, WrongParameterSets, NoMedia, OtherMedia };

        // The connection.
        bool refuse = false; // nobody listens at the address
        QByteArray silentFrom; // this request and all later ones stay unanswered
        QByteArray hangUpAt; // this request is answered by closing the connection
        QByteArray refusedRequest; // is answered with `status`
        int status = 0;
        QByteArray garbageAt; // is answered with `answer`
        Answer answer = Proper;
        int answerDelay = 0; // milliseconds
        // WrongParameterSets: damaged ones (`seed`), and no right ones in the stream.
        // OtherMedia: neither sound nor picture.
        Description description = Right;

        // The stream; counted are the RTP packets of all its streams together.
        int startPicture = 0; // where a connection begins, counted in the clip's pictures
        int burst = 0; // so many packets of the clip (not of RTP) are sent at once at first
        int stopAfter = -1; // silence from then on; -1: never
        int closeAfter = -1;
        int dropEvery = 0;
        int cutEvery = 0; // half the packet is sent, under the length of the whole
        int corruptEvery = 0; // some bytes of the payload are changed (`seed`)
        quint32 seed = 1;
    };
    enum Pace { RealTime, AsFastAsTaken };

    explicit RtspPeer(const MediaClip &clip, Pace pace = RealTime);
    RtspPeer(const MediaClip &clip, const Faults &faults, Pace pace = RealTime,
        const QHostAddress &address = QHostAddress::LocalHost);
    ~RtspPeer();
    RtspPeer(const RtspPeer &) = delete;
    RtspPeer &operator=(const RtspPeer &) = delete;

    // "rtsp://127.0.0.1:40123/live"
    std::string url() const;
    // Requests so far, by name and in order, of all connections.
    QByteArrayList requests() const;
    // Connections that are open.
    int connections() const;
    // RTP packets that were sent, faulty ones too.
    int packetsSent() const;

    // The clip's next packets go out at once, ahead of their time.
    void burst(int packets);
    // Nothing goes out any more, media or answer; what is held back follows at the end of it.
    void setSilent(bool silent);
    // Closes all connections. New ones are taken.
    void hangUp();

private:
    std::shared_ptr<RtspService> service;
    QThread thread;
    RtspServer *server; // lives on `thread`
};
