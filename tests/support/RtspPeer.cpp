#include "RtspPeer.h"

#include "RtpStream.h"

#include <QElapsedTimer>
#include <QMap>
#include <QMutex>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <atomic>
#include <functional>
#include <map>
#include <random>

// What the connections of a server share, and what the test may ask.
struct RtspService {
    RtspService(const MediaClip &clip, const RtspPeer::Faults &faults, RtspPeer::Pace pace) :
        clip(clip),
        faults(faults),
        pace(pace)
    { }

    // In the order of the description.
    std::vector<MediaClip::Stream> streams() const;
    QByteArray description() const;

    const MediaClip clip;
    const RtspPeer::Faults faults;
    const RtspPeer::Pace pace;
    std::string url;
    bool silent = false; // of the server's thread
    std::atomic<int> packetsSent{0};
    std::atomic<int> connections{0};
    QMutex mutex;
    QByteArrayList requests; // under the mutex
};

namespace {

const int heldForClient = 200000; // bytes; more are made when the client has taken them
const int rtpHeader = 12;

void setRandom(QByteArray &bytes, int from, int count, std::mt19937 &random)
{
    for (int i = from; i < from + count; ++i)
        bytes[i] = char(random());
}

// Other letters in the parameter sets of an SDP, which stand there in base 64. The first ones are
// left, so that the kind of each set stays.
QByteArray withDamagedSets(QByteArray description, quint32 seed)
{
    const QByteArray letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::mt19937 random(seed);
    for (int at = description.indexOf("sprop-"); at >= 0; at = description.indexOf("sprop-", at)) {
        at = description.indexOf('=', at) + 5;
        for (int letter = 0; letters.contains(description[at]); ++at, ++letter) {
            if (letter % 3 == 0)
                description[at] = letters[int(random() % uint32_t(letters.size()))];
        }
    }
    return description;
}

QByteArray interleaved(const QByteArray &data, int channel)
{
    const char head[] = {'$', char(channel), char(data.size() >> 8), char(data.size())};
    return QByteArray(head, sizeof head) + data;
}

struct Request {
    QByteArray name;
    QByteArray address;
    QMap<QByteArray, QByteArray> headers; // names in lower case

    int sequence() const { return headers.value("cseq").toInt(); }
};

}

std::vector<MediaClip::Stream> RtspService::streams() const
{
    std::vector<MediaClip::Stream> found;
    if (faults.description == RtspPeer::Faults::OtherMedia)
        return found;
    for (const MediaClip::Stream stream : {MediaClip::Video, MediaClip::Audio}) {
        if (clip.parameters(stream))
            found.push_back(stream);
    }
    return found;
}

QByteArray RtspService::description() const
{
    const QByteArray noMedia =
        "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=Live\r\nc=IN IP4 0.0.0.0\r\nt=0 0\r\n";
    switch (faults.description) {
    case RtspPeer::Faults::Broken:
        return "v=\r\n=\r\nm=video\r\na=control:\r\nm=video 0 RTP/AVP 96 97 98\r\na=rtpmap:\r\n"
               "a=rtpmap:96 H264\r\na=fmtp:96 "
               "sprop-parameter-sets=!!!,,==,A;packetization-mode=\r\n"
               "a=control:streamID=0\r\nm=audio x RTP/AVP 97\r\na=rtpmap:97 mpeg4-generic/0/999\r\n"
               "a=fmtp:97 sizelength=99;indexlength=-1;config=zz\r\na=control:streamID=1\r\nm=\r\n";
    case RtspPeer::Faults::NoMedia:
        return noMedia;
    case RtspPeer::Faults::OtherMedia:
        return noMedia
            + "m=application 0 RTP/AVP 107\r\na=rtpmap:107 vnd.onvif.metadata/90000\r\n"
              "a=control:streamID=0\r\n";
    default:
        break;
    }
    std::vector<const AVCodecParameters *> parameters;
    for (const MediaClip::Stream stream : streams())
        parameters.push_back(clip.parameters(stream));
    const QByteArray right = RtpStream::description(parameters);
    return faults.description == RtspPeer::Faults::WrongParameterSets
        ? withDamagedSets(right, faults.seed)
        : right;
}

// One client.
class RtspConnection : public QObject
{
    Q_OBJECT

public:
    RtspConnection(QTcpSocket *client, std::shared_ptr<RtspService> service, QObject *parent);
    ~RtspConnection() override;

    void hangUp() { socket->abort(); }
    void burst(int packets);
    // Whatever may go out now.
    void send();

private:
    struct Output {
        int channel;
        std::unique_ptr<RtpStream> stream;
    };

    void read();
    bool takeRequest(Request &request);
    void handle(const Request &request);
    void answerProperly(const Request &request);
    void setUp(const Request &request, const QByteArray &session);
    void answer(int sequence, int status, const QByteArray &headers = {},
        const QByteArray &body = {}, const std::function<void()> &then = {});
    void answerGarbage(const Request &request);
    void say(const QByteArray &text);

    void play();
    size_t firstPacket() const;
    double timeOf(size_t packet) const;
    bool sendNext();
    void sendPacket(const AVPacket *packet, Output &output);
    void sendRtp(QByteArray data, int channel);
    void corrupt(QByteArray &data);

    QTcpSocket *socket;
    std::shared_ptr<RtspService> service;
    std::mt19937 random;
    QByteArray input;
    QByteArray said; // and not yet sent
    bool mute = false;
    bool endlessHeaders = false;

    std::map<int, Output> outputs; // by stream of the clip
    bool playing = false;
    QTimer timer;
    QTimer pushing;
    QElapsedTimer clock; // since the last PLAY
    double startedAt = 0.0; // time of the stream at the last PLAY, in seconds
    double begin = 0.0; // time of the stream of the next packet
    size_t next = 0; // in the clip
    int loops = 0;
    int packetCount = 0; // of the clip
    int hurryUntil; // packetCount
    int rtpCount = 0;
};

RtspConnection::RtspConnection(
    QTcpSocket *client, std::shared_ptr<RtspService> shared, QObject *parent) :
    QObject(parent),
    socket(client),
    service(std::move(shared)),
    random(service->faults.seed),
    hurryUntil(service->faults.burst)
{
    ++service->connections;
    socket->setParent(this);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &RtspConnection::send);
    connect(socket, &QTcpSocket::readyRead, this, &RtspConnection::read);
    connect(socket, &QTcpSocket::bytesWritten, this, &RtspConnection::send);
    connect(socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    // Wine doesn't always tell that a client has gone for which something lies here. Writing does.
    connect(&pushing, &QTimer::timeout, socket, &QTcpSocket::flush);
    pushing.start(500);
}

RtspConnection::~RtspConnection()
{
    socket->disconnect(this);
    --service->connections;
}

void RtspConnection::burst(int packets)
{
    hurryUntil = packetCount + packets;
    send();
}

void RtspConnection::send()
{
    if (service->silent || mute)
        return;
    const QByteArray text = said;
    said.clear();
    socket->write(text);
    while (endlessHeaders && socket->bytesToWrite() < heldForClient)
        socket->write("X-More: " + QByteArray(80, 'x') + "\r\n");
    while (playing && socket->state() == QAbstractSocket::ConnectedState
        && socket->bytesToWrite() < heldForClient && sendNext()) { }
}

void RtspConnection::read()
{
    input += socket->readAll();
    Request request;
    while (!mute && takeRequest(request))
        handle(request);
}

// The client's RTCP between the requests is passed over.
bool RtspConnection::takeRequest(Request &request)
{
    while (input.startsWith('$')) {
        if (input.size() < 4)
            return false;
        const int size = 4 + (uint8_t(input[2]) << 8 | uint8_t(input[3]));
        if (input.size() < size)
            return false;
        input.remove(0, size);
    }
    const int end = input.indexOf("\r\n\r\n");
    if (end < 0)
        return false;
    const QByteArrayList lines = input.left(end).replace('\r', "").split('\n');
    const QByteArrayList first = lines[0].split(' ');
    request = {first[0], first.value(1), {}};
    for (const QByteArray &line : lines.mid(1)) {
        const int colon = line.indexOf(':');
        request.headers[line.left(colon).toLower()] = line.mid(colon + 1).trimmed();
    }
    input.remove(0, end + 4 + request.headers.value("content-length").toInt());
    return true;
}

void RtspConnection::handle(const Request &request)
{
    {
        QMutexLocker lock(&service->mutex);
        service->requests.append(request.name);
    }
    const RtspPeer::Faults &faults = service->faults;
    if (request.name == faults.silentFrom)
        mute = true;
    else if (request.name == faults.hangUpAt)
        socket->disconnectFromHost();
    else if (request.name == faults.refusedRequest)
        answer(request.sequence(), faults.status);
    else if (request.name == faults.garbageAt)
        answerGarbage(request);
    else
        answerProperly(request);
}

void RtspConnection::answerProperly(const Request &request)
{
    const QByteArray session = "Session: 12345678;timeout=60\r\n";
    if (request.name == "OPTIONS") {
        answer(request.sequence(), 200,
            "Public: OPTIONS, DESCRIBE, SETUP, PLAY, PAUSE, TEARDOWN, GET_PARAMETER\r\n");
    } else if (request.name == "DESCRIBE") {
        answer(request.sequence(), 200,
            "Content-Base: " + request.address + "/\r\nContent-Type: application/sdp\r\n",
            service->description());
    } else if (request.name == "SETUP") {
        setUp(request, session);
    } else if (request.name == "PLAY") {
        answer(request.sequence(), 200, session + "Range: npt=0.000-\r\n", {}, [this] { play(); });
    } else if (request.name == "PAUSE") {
        playing = false;
        answer(request.sequence(), 200, session);
    } else if (request.name == "TEARDOWN") {
        playing = false;
        answer(request.sequence(), 200, session, {}, [this] { socket->disconnectFromHost(); });
    } else {
        answer(request.sequence(), request.name == "GET_PARAMETER" ? 200 : 501, session);
    }
}

void RtspConnection::setUp(const Request &request, const QByteArray &session)
{
    const QByteArray transport = request.headers.value("transport");
    const int channels = transport.indexOf("interleaved=");
    if (!transport.contains("RTP/AVP/TCP") || channels < 0) {
        answer(request.sequence(), 461);
        return;
    }
    const auto index = size_t(request.address.mid(request.address.lastIndexOf('=') + 1).toInt());
    const auto streams = service->streams();
    if (index < streams.size()) {
        Output &output = outputs[streams[index]];
        output.channel = transport.mid(channels + 12).split('-')[0].toInt();
        output.stream = std::make_unique<RtpStream>(service->clip.parameters(streams[index]),
            int(index), service->pace == RtspPeer::RealTime);
    }
    answer(request.sequence(), 200, session + "Transport: " + transport + "\r\n");
}

void RtspConnection::answer(int sequence, int status, const QByteArray &headers,
    const QByteArray &body, const std::function<void()> &then)
{
    QByteArray text = "RTSP/1.0 " + QByteArray::number(status)
        + (status == 200 ? " OK" : " Refused") + "\r\nCSeq: " + QByteArray::number(sequence)
        + "\r\n" + headers;
    if (!body.isEmpty())
        text += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    text += "\r\n" + body;
    const auto sayAll = [this, text, then] {
        say(text);
        if (then)
            then();
    };
    if (service->faults.answerDelay > 0)
        QTimer::singleShot(service->faults.answerDelay, this, sayAll);
    else
        sayAll();
}

void RtspConnection::answerGarbage(const Request &request)
{
    const QByteArray beginning =
        "RTSP/1.0 200 OK\r\nCSeq: " + request.headers.value("cseq") + "\r\n";
    QByteArray bytes(4096, '\0');
    switch (service->faults.answer) {
    case RtspPeer::Faults::RandomBytes:
        setRandom(bytes, 0, bytes.size(), random);
        say(bytes);
        break;
    case RtspPeer::Faults::EndlessHeaders:
        endlessHeaders = true;
        say(beginning);
        break;
    case RtspPeer::Faults::HugeLength:
        say(beginning
            + "Content-Type: application/sdp\r\nContent-Length: 2000000000\r\n\r\nv=0\r\n");
        break;
    case RtspPeer::Faults::WrongSequence:
        answer(request.sequence() + 1000, 200);
        break;
    case RtspPeer::Faults::Proper:
        answerProperly(request);
        break;
    }
}

void RtspConnection::say(const QByteArray &text)
{
    said += text;
    send();
}

void RtspConnection::play()
{
    if (!clock.isValid()) {
        next = firstPacket();
        begin = timeOf(next);
    }
    clock.start();
    startedAt = begin;
    playing = true;
    send();
}

size_t RtspConnection::firstPacket() const
{
    const auto &packets = service->clip.packets();
    int pictures = service->faults.startPicture;
    for (size_t i = 0; i < packets.size(); ++i) {
        const bool video = packets[i]->stream_index == MediaClip::Video;
        if (pictures == 0 || (video && pictures-- == 0))
            return i;
    }
    return 0;
}

double RtspConnection::timeOf(size_t packet) const
{
    const AVPacket *found = service->clip.packets()[packet].get();
    return double(found->dts) * av_q2d(found->time_base);
}

// False when nothing more is to be sent for now.
bool RtspConnection::sendNext()
{
    const auto &packets = service->clip.packets();
    begin = loops * service->clip.seconds() + timeOf(next);
    const double wait = begin - startedAt - double(clock.nsecsElapsed()) / 1e9;
    const bool paced = service->pace == RtspPeer::RealTime && packetCount >= hurryUntil;
    if (paced && wait > 0) {
        timer.start(int(wait * 1000) + 1);
        return false;
    }
    const auto output = outputs.find(packets[next]->stream_index);
    if (output != outputs.end())
        sendPacket(packets[next].get(), output->second);
    ++packetCount;
    if (++next == packets.size()) {
        next = 0;
        ++loops;
    }
    return !outputs.empty();
}

void RtspConnection::sendPacket(const AVPacket *packet, Output &output)
{
    AVPacket *sent = av_packet_clone(packet);
    sent->time_base = packet->time_base;
    if (service->faults.description == RtspPeer::Faults::WrongParameterSets
        && packet->stream_index == MediaClip::Video && packet->flags & AV_PKT_FLAG_KEY) {
        const int sets = service->clip.parameters(MediaClip::Video)->extradata_size;
        sent->data += sets;
        sent->size -= sets;
    }
    // A second more, as the first sound of a clip comes before 0.
    const QByteArrayList made = output.stream->packets(sent, 1.0 + loops * service->clip.seconds());
    av_packet_free(&sent);
    for (const QByteArray &data : made) {
        if (!playing)
            return;
        if (RtpStream::isRtcp(data))
            socket->write(interleaved(data, output.channel + 1));
        else
            sendRtp(data, output.channel);
    }
}

void RtspConnection::sendRtp(QByteArray data, int channel)
{
    const RtspPeer::Faults &faults = service->faults;
    const auto isOver = [this](int limit) { return limit >= 0 && rtpCount >= limit; };
    const auto isTurn = [this](int every) { return every > 0 && rtpCount % every == 0; };
    if (isOver(faults.closeAfter) || isOver(faults.stopAfter)) {
        playing = false;
        if (isOver(faults.closeAfter))
            socket->disconnectFromHost();
        else
            mute = true;
        return;
    }
    ++rtpCount;
    if (isTurn(faults.dropEvery))
        return;
    if (isTurn(faults.corruptEvery))
        corrupt(data);
    QByteArray frame = interleaved(data, channel);
    if (isTurn(faults.cutEvery))
        frame.chop(data.size() / 2);
    socket->write(frame);
    ++service->packetsSent;
}

void RtspConnection::corrupt(QByteArray &data)
{
    const int payload = data.size() - rtpHeader;
    for (int i = 0; i < 4 && payload > 0; ++i)
        setRandom(data, rtpHeader + int(random() % uint32_t(payload)), 1, random);
}

class RtspServer : public QObject
{
    Q_OBJECT

public:
    explicit RtspServer(std::shared_ptr<RtspService> service) : service(std::move(service)) { }

    void open(const QHostAddress &address);
    void burst(int packets);
    void setSilent(bool silent);
    void hangUp();

private:
    int listen(const QHostAddress &address);
    int refuse(const QHostAddress &address);

    std::shared_ptr<RtspService> service;
};

void RtspServer::open(const QHostAddress &address)
{
    const int port = service->faults.refuse ? refuse(address) : listen(address);
    service->url =
        QStringLiteral("rtsp://%1:%2/live").arg(address.toString()).arg(port).toStdString();
}

int RtspServer::listen(const QHostAddress &address)
{
    auto *server = new QTcpServer(this);
    connect(server, &QTcpServer::newConnection, this, [this, server] {
        while (QTcpSocket *client = server->nextPendingConnection())
            new RtspConnection(client, service, this);
    });
    if (!server->listen(address))
        qFatal("%s", qPrintable(server->errorString()));
    return server->serverPort();
}

// Keeps the port, so that nobody else listens there.
int RtspServer::refuse(const QHostAddress &address)
{
    auto *socket = new QTcpSocket(this);
    if (!socket->bind(address))
        qFatal("%s", qPrintable(socket->errorString()));
    return socket->localPort();
}

void RtspServer::burst(int packets)
{
    for (RtspConnection *connection : findChildren<RtspConnection *>())
        connection->burst(packets);
}

void RtspServer::setSilent(bool silent)
{
    service->silent = silent;
    for (RtspConnection *connection : findChildren<RtspConnection *>())
        connection->send();
}

void RtspServer::hangUp()
{
    for (RtspConnection *connection : findChildren<RtspConnection *>())
        connection->hangUp();
}

RtspPeer::RtspPeer(const MediaClip &clip, Pace pace) : RtspPeer(clip, Faults(), pace) { }

RtspPeer::RtspPeer(
    const MediaClip &clip, const Faults &faults, Pace pace, const QHostAddress &address) :
    service(std::make_shared<RtspService>(clip, faults, pace)),
    server(new RtspServer(service))
{
    server->moveToThread(&thread);
    QObject::connect(&thread, &QThread::finished, server, &QObject::deleteLater);
    thread.setObjectName("RtspPeer");
    thread.start();
    QMetaObject::invokeMethod(
        server, [this, address] { server->open(address); }, Qt::BlockingQueuedConnection);
}

RtspPeer::~RtspPeer()
{
    thread.quit();
    thread.wait();
}

std::string RtspPeer::url() const
{
    return service->url;
}

QByteArrayList RtspPeer::requests() const
{
    QMutexLocker lock(&service->mutex);
    return service->requests;
}

int RtspPeer::connections() const
{
    return service->connections;
}

int RtspPeer::packetsSent() const
{
    return service->packetsSent;
}

void RtspPeer::burst(int packets)
{
    QMetaObject::invokeMethod(
        server, [this, packets] { server->burst(packets); }, Qt::BlockingQueuedConnection);
}

void RtspPeer::setSilent(bool silent)
{
    QMetaObject::invokeMethod(
        server, [this, silent] { server->setSilent(silent); }, Qt::BlockingQueuedConnection);
}

void RtspPeer::hangUp()
{
    QMetaObject::invokeMethod(
        server, [this] { server->hangUp(); }, Qt::BlockingQueuedConnection);
}

#include "RtspPeer.moc"
