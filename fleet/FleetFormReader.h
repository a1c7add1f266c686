#pragma once

#include <QByteArray>
#include <QByteArrayMatcher>
#include <QCryptographicHash>
#include <QScopedPointer>
#include <QString>

// Reads a multipart/form-data body as it comes, in pieces of any size, and keeps nothing of it: of
// the first part with a file name it counts the bytes and, if asked, makes the SHA-256.
class FleetFormReader
{
public:
    FleetFormReader(const QByteArray &boundary, bool withDigest);

    // The "boundary" of a Content-Type, null if that is no multipart/form-data.
    static QByteArray boundaryOf(const QByteArray &contentType);

    void feed(const QByteArray &piece);

    bool isComplete() const { return state == End; } // the closing boundary was seen
    bool hasFile() const { return foundFile; }
    QString fileName() const { return name; } // as it was sent
    QByteArray partHead() const { return head; } // the headers of the file's part
    qint64 size() const { return bytes; }
    QByteArray digest() const; // hexadecimal, empty if not asked for

private:
    enum State { Preamble, AfterDelimiter, PartHead, PartBody, End, Broken };

    bool step();
    bool readAfterDelimiter();
    bool readPartHead();
    bool skipToDelimiter();
    void consume(int count);
    void takeFile(const char *data, int count);

    const QByteArray delimiter;
    const QByteArrayMatcher matcher;
    QScopedPointer<QCryptographicHash> hash;
    State state;
    QByteArray buffer; // what is not decided yet
    bool foundFile;
    bool inFile;
    QString name;
    QByteArray head;
    qint64 bytes;
};
