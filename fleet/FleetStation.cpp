#include "FleetStation.h"

#include "FleetJournal.h"
#include "FleetNetwork.h"

#include <QJsonDocument>
#include <QTimer>

namespace {

// For an answer that changes nothing.
struct Nowhere : FleetSurroundings {
    bool claim(const QHostAddress &, int) override { return true; }
    QHostAddress lease() override { return QHostAddress(); }
};

void addRule(QJsonObject &entry, const FleetRulePointer &rule)
{
    if (rule)
        entry[QStringLiteral("rule")] = rule->place;
}

// What a camera shows of itself on its page.
constexpr const char *pageFields[] = {
    "name", "mac", "ip", "netmask", "gateway", "IpMode", "p2pid", "appVersion", "HdCuFun"};

bool hasFirmware(const FleetExchange &exchange)
{
    return exchange.complete && exchange.form && exchange.form->isComplete()
        && exchange.form->size() > 0;
}

QString portProblem(int port, const QHostAddress &address, const QTcpServer &server)
{
    return QStringLiteral("port %1 of %2: %3")
        .arg(port)
        .arg(address.toString(), server.errorString());
}

// What a rule has set stays.
void setAnswer(
    FleetHttpAnswer &answer, int status, const QByteArray &contentType, const QByteArray &body)
{
    if (answer.status == 0)
        answer.status = status;
    if (answer.contentType.isEmpty())
        answer.contentType = contentType;
    if (!answer.fixed)
        answer.body = body;
}

}

FleetStation::FleetStation(const FleetCamera &camera, const FleetOptions &options,
    FleetNetwork &network, FleetJournal &journal, QObject *parent) :
    QObject(parent),
    record(camera),
    options(options),
    network(network),
    journal(journal),
    http(*this, options.sha256),
    home(camera.ip()),
    up(false),
    reporter(*this, camera.reports),
    rtsp(*this, camera.stream)
{ }

bool FleetStation::open(QString *error)
{
    up = listen(error);
    return up;
}

quint16 FleetStation::httpPort() const
{
    const ushort told = record.field("httpport").toUShort();
    return told ? told : quint16(options.httpPortOf(record.position - 1));
}

bool FleetStation::listen(QString *error)
{
    http.close();
    const QHostAddress address = network.socketAddress(home);
    const bool viewers = listenForViewers(address, error);
    const bool web = options.httpPort == 0 || http.listen(address, httpPort());
    if (!web)
        *error = portProblem(httpPort(), address, http);
    return viewers && web;
}

bool FleetStation::listenForViewers(const QHostAddress &address, QString *error)
{
    const int port = options.rtspPortOf(record.position - 1);
    rtsp.setName(record.field("name"));
    if (port == 0 || record.stream.closed || !FleetStream::isAvailable()
        || rtsp.open(address, quint16(port)))
        return true;
    *error = portProblem(port, address, rtsp);
    return false;
}

// Nobody reaches the camera any more.
void FleetStation::hush()
{
    http.close();
    rtsp.shut();
}

void FleetStation::receive(
    const FleetFrame::Request &request, const QString &source, int extraDelayMs)
{
    if (!up)
        return;
    const QString method = request.object.value(QStringLiteral("method")).toString();
    reporter.heard(method, request.object.value(QStringLiteral("srcid")).toString());
    const FleetRulePointer rule = record.rules.take(method);
    const QJsonObject asked = journal.isRead() ? identity() : QJsonObject(); // before it obeys
    const FleetCamera::Outcome outcome = obey(request.object, rule);
    if (journal.isRead()) {
        QJsonObject entry = asked;
        entry[QStringLiteral("source")] = source;
        entry[QStringLiteral("method")] = method;
        entry[QStringLiteral("id")] = request.object.value(QStringLiteral("id"));
        entry[QStringLiteral("raw")] = QString::fromUtf8(request.raw);
        entry[QStringLiteral("result")] = outcome.body.value(QStringLiteral("result"));
        addRule(entry, rule);
        journal.write("request", entry);
    }

    FleetReply reply;
    reply.body = record.reply(request.object, outcome);
    reply.delayMs = outcome.delayMs + extraDelayMs;
    if (rule)
        reply.spoil(*rule);
    const bool keepNetwork =
        request.object.value(QStringLiteral("keepnetwork")).toString() == QLatin1String("1");
    const auto act = [this, reply, keepNetwork, after = outcome.after] {
        if (!up)
            return;
        send(reply);
        if (after == FleetCamera::After::Move)
            settle();
        else if (after == FleetCamera::After::Reset)
            restart("reset", [this, keepNetwork] { record.reset(keepNetwork); });
    };
    if (reply.delayMs > 0)
        QTimer::singleShot(reply.delayMs, Qt::PreciseTimer, this, act);
    else
        act();
}

FleetCamera::Outcome FleetStation::obey(const QJsonObject &request, const FleetRulePointer &rule)
{
    if (!rule || rule->apply) {
        const FleetCamera::Outcome outcome = record.obey(request, *this);
        rtsp.setName(record.field("name"));
        return outcome;
    }
    Nowhere nowhere;
    FleetCamera copy = record;
    FleetCamera::Outcome outcome = copy.obey(request, nowhere);
    outcome.after = FleetCamera::After::Nothing;
    return outcome;
}

void FleetStation::send(const FleetReply &reply)
{
    for (const QByteArray &datagram : reply.datagrams()) {
        if (!network.send(home, datagram))
            trouble(QStringLiteral("a reply could not be sent"));
    }
}

bool FleetStation::claim(const QHostAddress &ip, int prefixLength)
{
    QString error;
    if (ip == claimed || ip == home)
        return true;
    if (!network.claim(ip, prefixLength, &error)) {
        trouble(error);
        return false;
    }
    if (!claimed.isNull())
        release(claimed);
    claimed = ip;
    return true;
}

QHostAddress FleetStation::lease()
{
    const QHostAddress ip = network.firstFreeOfPool();
    return !ip.isNull() && claim(ip, network.prefixLengthOf(ip)) ? ip : QHostAddress();
}

void FleetStation::release(const QHostAddress &ip)
{
    QString error;
    if (!network.release(ip, &error))
        trouble(error);
}

void FleetStation::restart(const char *why, const std::function<void()> &change)
{
    const int ms = record.restartMs >= 0 ? record.restartMs : int(options.restartSeconds * 1000);
    report("restart",
        {{QStringLiteral("why"), QLatin1String(why)}, {QStringLiteral("seconds"), ms / 1000.0}});
    up = false;
    hush();
    QTimer::singleShot(ms, Qt::PreciseTimer, this, [this, change] {
        change();
        settle();
        up = true;
        report("back",
            {{QStringLiteral("appVersion"), record.fields.value(QStringLiteral("appVersion"))}});
    });
}

// Makes the network agree with the record: address, web server and stream.
void FleetStation::settle()
{
    const QHostAddress ip = record.ip();
    if (!ip.isNull() && ip != home && !moveTo(ip))
        record.setIp(home.toString());
    if (!claimed.isNull()) // for a move that was overtaken
        release(claimed);
    claimed = QHostAddress();
    QString error;
    if (!listen(&error))
        trouble(error);
}

bool FleetStation::moveTo(const QHostAddress &ip)
{
    if (!claim(ip, network.prefixLengthOf(ip)))
        return false;
    claimed = QHostAddress();
    const QHostAddress left = home;
    home = ip;
    hush();
    release(left);
    report(
        "move", {{QStringLiteral("from"), left.toString()}, {QStringLiteral("to"), ip.toString()}});
    return true;
}

void FleetStation::begin(FleetExchange &exchange)
{
    exchange.answer.status = 0; // until a rule or the outcome sets it
    exchange.rule = record.rules.take(QLatin1String(exchange.isUpload() ? "upload" : "page"));
    if (exchange.rule)
        exchange.answer.spoil(*exchange.rule);
}

void FleetStation::finish(FleetExchange &exchange)
{
    if (exchange.isUpload())
        answerUpload(exchange);
    else
        answerPage(exchange);
    const bool isSent = exchange.complete && !exchange.answer.silent;
    QJsonObject entry{{QStringLiteral("source"), exchange.source},
        {QStringLiteral("raw"), QString::fromUtf8(exchange.head)},
        {QStringLiteral("status"), isSent ? exchange.answer.status : 0}};
    addRule(entry, exchange.rule);
    if (exchange.isUpload()) {
        entry[QStringLiteral("answer")] =
            isSent ? QString::fromUtf8(exchange.answer.body) : QString();
        addUpload(entry, exchange);
    }
    report(exchange.isUpload() ? "upload" : "http", entry);
}

void FleetStation::addUpload(QJsonObject &entry, const FleetExchange &exchange) const
{
    entry[QStringLiteral("complete")] =
        exchange.complete && exchange.form && exchange.form->isComplete();
    entry[QStringLiteral("seconds")] = exchange.clock.elapsed() / 1000.0;
    if (!exchange.form)
        return;
    entry[QStringLiteral("filename")] = exchange.form->fileName();
    entry[QStringLiteral("part")] = QString::fromUtf8(exchange.form->partHead());
    entry[QStringLiteral("bytes")] = exchange.form->size();
    if (options.sha256)
        entry[QStringLiteral("sha256")] = QString::fromLatin1(exchange.form->digest());
}

void FleetStation::answerUpload(FleetExchange &exchange) const
{
    const bool good = hasFirmware(exchange);
    const int refusal = exchange.length < 0 ? 411 : 400;
    setAnswer(exchange.answer, good ? 200 : refusal, "application/json",
        good ? "{\"Result\":0}" : "{\"Result\":-1}");
}

void FleetStation::answerPage(FleetExchange &exchange) const
{
    if (exchange.method == "GET" && exchange.path == "/")
        setAnswer(exchange.answer, 200, "text/html; charset=utf-8", page());
    else
        setAnswer(
            exchange.answer, exchange.method.isEmpty() ? 400 : 404, "text/plain", "no such page\n");
}

QByteArray FleetStation::page() const
{
    const QString title = record.field("name").toHtmlEscaped();
    QString rows;
    for (const char *key : pageFields) {
        rows += QStringLiteral("<tr><th>%1</th><td>%2</td></tr>\n")
                    .arg(QLatin1String(key), record.field(key).toHtmlEscaped());
    }
    return QStringLiteral("<!DOCTYPE html>\n<html><head><title>%1</title></head>\n"
                          "<body><h1>%1</h1>\n<table>\n%2</table></body></html>\n")
        .arg(title, rows)
        .toUtf8();
}

void FleetStation::answered(const FleetExchange &exchange)
{
    const bool applies = !exchange.rule || exchange.rule->apply;
    if (!up || !applies || !exchange.isUpload() || !hasFirmware(exchange))
        return;
    const QString file = exchange.form->fileName();
    restart("firmware", [this, file] { record.upgrade(file); });
}

FleetRulePointer FleetStation::viewerCame()
{
    return record.rules.take(QStringLiteral("stream"));
}

void FleetStation::streamTold(const char *event, const QJsonObject &more)
{
    report(event, more);
}

QString FleetStation::reportSrcid() const
{
    return record.field("srcid");
}

bool FleetStation::sendReport(const QByteArray &datagram)
{
    return up && network.send(home, datagram);
}

void FleetStation::reportTold(const char *event, const QJsonObject &more)
{
    report(event, more);
}

QJsonObject FleetStation::identity() const
{
    return {{QStringLiteral("camera"), record.position},
        {QStringLiteral("mac"), record.fields.value(QStringLiteral("mac"))},
        {QStringLiteral("ip"), home.toString()}};
}

void FleetStation::report(const char *event, const QJsonObject &more)
{
    if (!journal.isRead())
        return;
    QJsonObject entry = identity();
    for (auto i = more.begin(); i != more.end(); ++i)
        entry[i.key()] = i.value();
    journal.write(event, entry);
}

void FleetStation::trouble(const QString &reason)
{
    report("trouble", {{QStringLiteral("reason"), reason}});
}
