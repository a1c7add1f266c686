#include "FleetCommandLine.h"

#include "FleetStream.h"

#include <QCommandLineParser>

namespace {

constexpr int lastPort = 65535;

struct Option {
    const char *name;
    const char *valueName; // null: takes none
    const char *meaning;
    const char *expects; // completes "must be ..."
    bool (*read)(const QString &text, FleetOptions &options);
};

template <typename Value>
bool readWhole(const QString &text, qint64 first, qint64 last, Value &value)
{
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber);
    value = Value(number);
    return isNumber && number >= first && number <= last;
}

bool readSeconds(const QString &text, double &seconds)
{
    bool isNumber = false;
    seconds = text.toDouble(&isNumber);
    return isNumber && seconds >= 0 && seconds <= 3600;
}

bool readAddress(const QString &text, QHostAddress &address)
{
    return text.count(QLatin1Char('.')) == 3 && address.setAddress(text)
        && address.protocol() == QAbstractSocket::IPv4Protocol;
}

bool readPool(const QString &text, FleetOptions &options)
{
    const QStringList ends = text.split(QLatin1Char('-'));
    return ends.size() == 2 && readAddress(ends.first(), options.poolFirst)
        && readAddress(ends.last(), options.poolLast)
        && options.poolFirst.toIPv4Address() <= options.poolLast.toIPv4Address();
}

bool readMac(const QString &text, FleetOptions &options)
{
    bool isNumber = false;
    options.firstMac = QString(text).remove(QLatin1Char(':')).toULongLong(&isNumber, 16);
    return isNumber && text.size() == 17 && text.count(QLatin1Char(':')) == 5;
}

constexpr Option optionTable[] = {
    {"interface", "name", "Network interface on which the cameras stand (required).",
        "the name of an interface",
        [](const QString &t, FleetOptions &o) {
            o.interface = t;
            return !t.isEmpty();
        }},
    {"count", "n", "Number of cameras; 1 if not given.", "a number from 1 to 20000",
        [](const QString &t, FleetOptions &o) { return readWhole(t, 1, 20000, o.count); }},
    {"first-address", "address",
        "Address of the first camera, the others follow; the interface's own plus 10 if not given.",
        "an IPv4 address",
        [](const QString &t, FleetOptions &o) { return readAddress(t, o.firstAddress); }},
    {"first-mac", "mac", "MAC of the first camera, the others follow.",
        "a MAC like 02:56:4C:00:00:01", readMac},
    {"no-addresses", nullptr,
        "All cameras answer from the interface's own address, with web servers on ports one after "
        "the other.",
        "", [](const QString &, FleetOptions &o) { return !(o.ownAddresses = false); }},
    {"http-port", "port", "Port of the web servers; 80 if not given, 0 for none.",
        "a number from 0 to 65535",
        [](const QString &t, FleetOptions &o) { return readWhole(t, 0, 65535, o.httpPort); }},
    {"rtsp-port", "port",
        "Port of the streams; 8554 if not given, 0 for none. With --no-addresses there are none "
        "if it is not given.",
        "a number from 0 to 65535",
        [](const QString &t, FleetOptions &o) { return readWhole(t, 0, 65535, o.rtspPort); }},
    {"spread", "seconds", "Replies to a search are spread over this time; 0 if not given.",
        "a number from 0 to 3600",
        [](const QString &t, FleetOptions &o) { return readSeconds(t, o.spreadSeconds); }},
    {"spread-order", "order", "even (one after the other) or random; even if not given.",
        "even or random",
        [](const QString &t, FleetOptions &o) {
            o.randomSpread = t == QLatin1String("random");
            return o.randomSpread || t == QLatin1String("even");
        }},
    {"restart-seconds", "seconds", "Silence of a camera that restarts; 3 if not given.",
        "a number from 0 to 3600",
        [](const QString &t, FleetOptions &o) { return readSeconds(t, o.restartSeconds); }},
    {"dhcp-pool", "first-last",
        "Addresses for cameras that are set to DHCP; they keep their own if not given.",
        "two IPv4 addresses like 192.168.1.200-192.168.1.220", readPool},
    {"scenario", "file", "JSON file that says what is special about these cameras.",
        "the path of a file",
        [](const QString &t, FleetOptions &o) {
            o.scenario = t;
            return !t.isEmpty();
        }},
    {"journal", "file", "One JSON line for each thing that happened; - for standard output.",
        "the path of a file",
        [](const QString &t, FleetOptions &o) {
            o.journal = t;
            return !t.isEmpty();
        }},
    {"sha256", nullptr, "Digest of each firmware in the journal.", "",
        [](const QString &, FleetOptions &o) { return o.sha256 = true; }},
    {"seed", "n", "Seed of the random spread; 1 if not given.", "a number from 0 to 4294967295",
        [](const QString &t, FleetOptions &o) { return readWhole(t, 0, 0xffffffffLL, o.seed); }},
};

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Network cameras for testing without cameras: they answer searches and commands on the "
        "group 239.255.255.250, take firmware, restart and misbehave as a scenario says.\n"
        "A line \"report 1 {...}\" on standard input lets camera 1 tell that by itself.\n"
        "Ends on SIGTERM or SIGINT. Exit status: 0 ended so, 1 the system refused something, "
        "2 wrong option or scenario."));
    parser.addHelpOption();
    parser.addVersionOption();
    for (const Option &option : optionTable) {
        parser.addOption(QCommandLineOption(QLatin1String(option.name),
            QLatin1String(option.meaning), QLatin1String(option.valueName)));
    }
}

// What is wrong with options that are right one by one.
QString conflict(const FleetOptions &options)
{
    if (options.interface.isEmpty())
        return QStringLiteral("--interface is missing");
    const int last = options.count - 1;
    if (options.httpPortOf(last) > lastPort)
        return QStringLiteral("%1 web servers from port %2 pass port %3")
            .arg(options.count)
            .arg(options.httpPort)
            .arg(lastPort);
    if (options.rtspPortOf(last) > lastPort)
        return QStringLiteral("%1 streams from port %2 pass port %3")
            .arg(options.count)
            .arg(options.rtspPort)
            .arg(lastPort);
    if (options.rtspPort > 0 && !FleetStream::isAvailable())
        return QStringLiteral("--rtsp-port: this build has no streams");
    return QString();
}

}

FleetCommandLine::Reading FleetCommandLine::read(
    const QStringList &arguments, FleetOptions &options, QString *text)
{
    QCommandLineParser parser;
    addOptions(parser);
    const bool parsed = parser.parse(arguments);
    *text = parser.errorText();
    if (!parsed)
        return Wrong;
    if (parser.isSet(QStringLiteral("help"))) {
        *text = parser.helpText();
        return Help;
    }
    if (parser.isSet(QStringLiteral("version")))
        return Version;
    if (!parser.positionalArguments().isEmpty()) {
        *text =
            QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().first());
        return Wrong;
    }
    for (const Option &option : optionTable) {
        const QString name = QLatin1String(option.name);
        if (parser.isSet(name) && !option.read(parser.value(name), options)) {
            *text = QStringLiteral("--%1 must be %2").arg(name, QLatin1String(option.expects));
            return Wrong;
        }
    }
    *text = conflict(options);
    return text->isEmpty() ? Good : Wrong;
}
