#include "FleetFormReader.h"

#include <QRegularExpression>

namespace {

constexpr int largestPartHead = 16384;

}

FleetFormReader::FleetFormReader(const QByteArray &boundary, bool withDigest) :
    delimiter("\r\n--" + boundary),
    matcher(delimiter),
    hash(withDigest ? new QCryptographicHash(QCryptographicHash::Sha256) : nullptr),
    state(boundary.isEmpty() ? Broken : Preamble),
    buffer("\r\n"), // the first boundary may stand at the very start
    foundFile(false),
    inFile(false),
    bytes(0)
{ }

QByteArray FleetFormReader::boundaryOf(const QByteArray &contentType)
{
    static const QRegularExpression form(
        QStringLiteral("^multipart/form-data\\s*;.*\\bboundary=(?:\"([^\"]+)\"|([^\\s;]+))"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = form.match(QString::fromLatin1(contentType));
    return (match.captured(1) + match.captured(2)).toLatin1();
}

QByteArray FleetFormReader::digest() const
{
    return hash ? hash->result().toHex() : QByteArray();
}

void FleetFormReader::feed(const QByteArray &piece)
{
    if (state == End || state == Broken)
        return;
    buffer.append(piece);
    while (step()) { }
}

// One move of the state; false when it needs more bytes.
bool FleetFormReader::step()
{
    switch (state) {
    case Preamble:
    case PartBody:
        return skipToDelimiter();
    case AfterDelimiter:
        return readAfterDelimiter();
    case PartHead:
        return readPartHead();
    case End:
    case Broken:
        break;
    }
    buffer.clear();
    return false;
}

bool FleetFormReader::skipToDelimiter()
{
    const int found = matcher.indexIn(buffer);
    // Without a match the tail may still be the start of one.
    const int decided = found >= 0 ? found : qMax(0, buffer.size() - delimiter.size() + 1);
    if (inFile)
        takeFile(buffer.constData(), decided);
    consume(found >= 0 ? decided + delimiter.size() : decided);
    if (found < 0)
        return false;
    inFile = false;
    state = AfterDelimiter;
    return true;
}

bool FleetFormReader::readAfterDelimiter()
{
    if (buffer.size() < 2)
        return false;
    if (buffer.startsWith("--"))
        state = End;
    else
        state = buffer.startsWith("\r\n") ? PartHead : Broken;
    return true; // the line end stays: a part may have no headers at all
}

bool FleetFormReader::readPartHead()
{
    const int end = buffer.indexOf("\r\n\r\n");
    if (end < 0) {
        if (buffer.size() > largestPartHead)
            state = Broken;
        return state == Broken;
    }
    const QByteArray lines = buffer.left(end).mid(2);
    consume(end + 4);
    state = PartBody;
    // A name may hold quotation marks as they are: it ends at the last one of its line.
    static const QRegularExpression disposition(
        QStringLiteral("^content-disposition:.*\\bfilename=\"(.*)\""),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = disposition.match(QString::fromUtf8(lines));
    if (!foundFile && match.hasMatch()) {
        foundFile = inFile = true;
        name = match.captured(1);
        head = lines;
    }
    return true;
}

void FleetFormReader::consume(int count)
{
    buffer.remove(0, count);
}

void FleetFormReader::takeFile(const char *data, int count)
{
    bytes += count;
    if (hash)
        hash->addData(data, count);
}
