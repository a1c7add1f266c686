#pragma once

#include "VorlynProtocol.h"

#include <QByteArray>

// The JSON text with the frame header in front.
QByteArray buildFrame(const QByteArray &json);

// What the receive thread has read since its socket was opened. A datagram is a message: each one
// lands at the start of the message buffer. The count of bytes begins anew only after a message,
// so a datagram whose length field disagrees spoils those that follow until the sum agrees.
// Thread: one. Never reads or writes outside its buffers, whatever a length field says.
class VorlynFrameReader
{
public:
    VorlynFrameReader();

    void reset();
    // Room for one datagram, VorlynProtocol::maxDatagram bytes.
    char *buffer();
    // Takes over the first `size` bytes of the buffer. True when the length field agrees with the
    // count: body() has the message then.
    bool accept(int size);
    // What follows the header, as far as it lies in the buffer.
    QByteArray body() const;

private:
    char reading[VorlynProtocol::maxDatagram];
    char message[VorlynProtocol::maxDatagram];
    quint32 count;
    quint32 length;
};
