#include "PreviewPlayers.h"

#include "PreviewScreen.h"

#include <QDir>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QThread>

namespace {

constexpr char ffplay[] = "ffplay -loglevel quiet -fflags nobuffer -flags low_delay"
                          " -rtsp_transport tcp -noborder -x %w -y %h %url";
constexpr char mpv[] = "mpv --no-config --profile=low-latency --rtsp-transport=tcp --vo=x11"
                       " --no-border --keepaspect=no --geometry=%wx%h --really-quiet %url";
constexpr char gst[] = "gst-launch-1.0 -q rtspsrc latency=0 protocols=tcp location=%url name=camera"
                       " camera. ! rtph264depay ! h264parse ! avdec_h264 ! videoscale"
                       " ! videoconvert ! video/x-raw,width=%w,height=%h,pixel-aspect-ratio=1/1"
                       " ! ximagesink";
constexpr char gstSound[] = " camera. ! rtpmp4gdepay ! aacparse ! avdec_aac ! audioconvert"
                            " ! audioresample ! pulsesink";

constexpr PeerPlayer::Row peers[] = {
    {"ffplay", "", ffplay, ""},
    {"ffplay-software", "SDL_RENDER_DRIVER=software", ffplay, ""},
    {"mpv", "", mpv, ""},
    {"mpv-untimed", "", mpv, " --untimed --no-audio"},
    {"gst", "", gst, gstSound},
    {"gst-silent", "", gst, ""},
};

const int secondsAtMost = 20;

// Asks a hundred times a second. A program that doesn't get there can't be measured.
template <typename Condition> void await(const char *what, Condition condition)
{
    for (int i = 0; i < secondsAtMost * 100; ++i) {
        if (condition())
            return;
        QThread::msleep(10);
    }
    qFatal("%s: not within %d seconds", what, secondsAtMost);
}

// How the main window is laid out, in pixels.
namespace Layout {
const int headerBottom = 27;
const int tableWidth = 400;
const int panelHeight = 400;
const int barHeight = 30; // the controls below the picture
const int firstRow = headerBottom + 26;
const int rowHeight = 30;
} // namespace Layout

} // namespace

void PreviewPlayer::locate(PreviewScreen &screen)
{
    if (!screen.isWatching())
        watch(screen);
}

QStringList PeerPlayer::names()
{
    QStringList names;
    for (const Row &row : peers)
        names << QLatin1String(row.name);
    return names;
}

PeerPlayer *PeerPlayer::create(const QString &name, const QString &url, QSize picture)
{
    for (const Row &row : peers) {
        if (name == QLatin1String(row.name))
            return new PeerPlayer(row, url, picture);
    }
    return nullptr;
}

PeerPlayer::PeerPlayer(const Row &row, const QString &url, QSize picture) :
    PreviewPlayer(QLatin1String(row.name)),
    picture(picture)
{
    QString line = QLatin1String(row.command) + QLatin1String(row.more);
    line.replace("%url", url);
    line.replace("%w", QString::number(picture.width()));
    line.replace("%h", QString::number(picture.height()));
    command = line.split(' ');
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QStringList variable = QString::fromLatin1(row.environment).split('=');
    if (variable.size() == 2)
        environment.insert(variable[0], variable[1]);
    process.setProcessEnvironment(environment);
}

void PeerPlayer::play()
{
    process.start(command.first(), command.mid(1));
    if (!process.waitForStarted())
        qFatal("%s can't be started", qPrintable(command.first()));
}

void PeerPlayer::watch(PreviewScreen &screen)
{
    const unsigned long window = screen.lastWindow();
    if (window != 0 && screen.sizeOf(window) == picture)
        screen.watch(window, QRect(QPoint(0, 0), picture));
}

IPToolPlayer::IPToolPlayer(const QString &program, PreviewScreen &screen) :
    PreviewPlayer(QStringLiteral("VorlynIPTool")),
    program(program),
    screen(screen)
{ }

void IPToolPlayer::prepare()
{
    folder.reset(new QTemporaryDir);
    const QFileInfo built(program);
    const QDir place(folder->path());
    place.mkdir("configure");
    place.mkdir("language");
    QFile::copy(built.filePath(), place.filePath(built.fileName()));
    for (const char *name : {"language/en.txt", "language/cn.txt"})
        QFile::copy(built.dir().filePath(name), place.filePath(name));
    QFile settings(place.filePath("configure/configure.ini"));
    if (settings.open(QIODevice::WriteOnly))
        settings.write("[General]\nlangage=en\nsearch%20seconds=2\n");
    settings.close();

    process.start(place.filePath(built.fileName()), QStringList());
    await("VorlynIPTool searches", [this] { return screen.windowCount() == 2; });
    await("VorlynIPTool ends its search", [this] { return screen.windowCount() == 1; });
    window = screen.lastWindow();
    size = screen.sizeOf(window);
}

void IPToolPlayer::clickRow(int row)
{
    const int x = size.width() - Layout::tableWidth / 2;
    const int y = Layout::firstRow + row * Layout::rowHeight + Layout::rowHeight / 2;
    click.waitForFinished();
    click.start("xdotool",
        {"mousemove", "--window", QString::number(window), QString::number(x), QString::number(y),
            "click", "1"});
    click.waitForStarted(); // and no longer: the program has connected before xdotool ends
}

// Letterboxed into the pane's upper part, as the pane does it.
QRect IPToolPlayer::picture() const
{
    const int w = size.width() - Layout::tableWidth;
    const int h = size.height() - Layout::headerBottom - Layout::panelHeight - Layout::barHeight;
    const QSize fitted = video.width() * h < video.height() * w
        ? QSize(video.width() * h / video.height(), h)
        : QSize(w, video.height() * w / video.width());
    return QRect(
        QPoint((w - fitted.width()) / 2, Layout::headerBottom + (h - fitted.height()) / 2), fitted);
}

void IPToolPlayer::watch(PreviewScreen &screen)
{
    screen.watch(window, picture());
}
