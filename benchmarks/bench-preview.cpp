// bench-preview: figures of the preview beside other players, measured from outside by the time
// code in the camera's picture. Needs a display with a window manager, a private network with
// VORLYN_TEST_CAMERA_PID in the cameras' namespace, and a sound server. docs/preview-figures.md
// tells how each figure comes about.
#include "PreviewBench.h"
#include "PreviewCamera.h"
#include "PreviewPlayers.h"
#include "PreviewScreen.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QSysInfo>

#include <cstdio>

namespace {

constexpr struct {
    const char *name;
    void (PreviewTables::*print)() const;
} figures[] = {
    {"start", &PreviewTables::printStarts},
    {"latency", &PreviewTables::printLatencies},
    {"recovery", &PreviewTables::printRecoveries},
    {"cpu", &PreviewTables::printUse},
};

QString firstLineOf(const QString &command)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start("sh", {"-c", command});
    process.waitForFinished();
    return QString::fromUtf8(process.readLine()).trimmed();
}

void printMachine()
{
    std::printf("%s, %s cores, Linux %s\n",
        qPrintable(firstLineOf("sed -n 's/^model name[^:]*: //p' /proc/cpuinfo")),
        qPrintable(firstLineOf("nproc")), qPrintable(QSysInfo::kernelVersion()));
    for (const char *version : {"ffplay -version", "mpv --version", "gst-launch-1.0 --version"})
        std::printf("%s\n", qPrintable(firstLineOf(QLatin1String(version))));
}

void printLoad(const char *when)
{
    std::printf("load %s: %s\n", when, qPrintable(firstLineOf("cat /proc/loadavg")));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QStringList players = QStringList("VorlynIPTool") + PeerPlayer::names();
    parser.addOptions({
        {"players", "Which, in which order.", "names", players.join(',')},
        {"figures", "Which.", "names", "start,latency,recovery,cpu"},
        {"starts", "Starts of each player.", "number", "10"},
        {"seconds", "Playing at 1280x720.", "seconds", "60"},
        {"large-seconds", "Playing at 1920x1080.", "seconds", "30"},
        {"recoveries", "Dead networks of each player.", "number", "1"},
        {"minutes", "VorlynIPTool plays so long at 1280x720.", "minutes", "0"},
        {"raw", "Every picture of every run, as CSV.", "file", "preview.csv"},
    });
    parser.addPositionalArgument("PROGRAM", "VorlynIPTool");
    parser.addPositionalArgument("FLEET", "vorlyn-fleet");
    parser.addHelpOption();
    parser.process(application);
    if (parser.positionalArguments().size() != 2)
        parser.showHelp(2);

    const auto number = [&parser](const char *option) {
        bool good = false;
        const int value = parser.value(option).toInt(&good);
        if (!good || value < 0)
            qFatal("--%s wants a number", option);
        return value;
    };
    const PreviewOptions options = {parser.value("players").split(','),
        parser.value("figures").split(','), number("starts"), number("seconds"),
        number("large-seconds"), number("recoveries"), number("minutes")};
    for (const QString &name : options.players) {
        if (!players.contains(name))
            qFatal("unknown player %s", qPrintable(name));
    }
    QFile raw(parser.value("raw"));
    if (!raw.open(QIODevice::WriteOnly))
        qFatal("can't write %s", qPrintable(raw.fileName()));

    PreviewScreen screen;
    PreviewCamera camera(
        parser.positionalArguments().at(1), qEnvironmentVariable("VORLYN_TEST_CAMERA_PID"));
    IPToolPlayer ours(parser.positionalArguments().at(0), screen);
    PreviewBench bench(options, camera, screen, raw);
    printMachine();
    printLoad("at the start");
    bench.measure(ours);
    printLoad("at the end");
    const QSize size = bench.pictureSize();
    std::printf("picture on the screen: %dx%d\n", size.width(), size.height());
    const PreviewTables tables(bench.results());
    for (const auto &figure : figures) {
        if (options.wants(figure.name))
            (tables.*figure.print)();
    }
    return 0;
}
