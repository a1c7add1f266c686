#pragma once

#include "FleetStreamShape.h"

#include <QHostAddress>
#include <QString>

#include <functional>
#include <memory>

class QTcpSocket;

// The RTSP server of one camera: answers viewers whose connections were accepted elsewhere and
// encodes as long as one of them watches. Built on GStreamer (FleetStream_gst.cpp), or not at all
// (FleetStream_none.cpp). Used from one thread; its own are behind it.
class FleetStream
{
public:
    // What happened, as an event of the journal with further keys: "viewer" ("source", "what") and
    // "stream" ("what" and the shape). Called on any thread, never after the destructor.
    using Report = std::function<void(const char *event, const QJsonObject &more)>;

    static const char path[]; // "/live1"
    static bool isAvailable();
    // Null where there are no streams. Costs little before the first viewer, unless the shape
    // says that the stream always runs.
    static std::unique_ptr<FleetStream> create(const FleetStreamShape &shape, const Report &report);

    // Drops all viewers and ends encoding before it returns.
    virtual ~FleetStream() = default;

    // The name in the picture.
    virtual void setName(const QString &name) = 0;
    // Takes over a connection on which nothing was read; the socket object is of no more use.
    // `viewer` is who it really is, when the connection comes through a relay.
    virtual void serve(QTcpSocket &socket, const QHostAddress &viewer, quint16 port) = 0;
};
