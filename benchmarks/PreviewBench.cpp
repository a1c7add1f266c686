#include "PreviewBench.h"

#include "PreviewCamera.h"
#include "PreviewPlayers.h"
#include "PreviewScreen.h"

#include <QFile>
#include <QRandomGenerator>
#include <QThread>

#include <cmath>
#include <cstdio>
#include <memory>
#include <time.h>

namespace {

const QSize smallVideo(1280, 720);
const QSize largeVideo(1920, 1080);

const int lookMicroseconds = 1000;
const double startLimit = 15.0; // a first picture that comes later never comes
const double settleSeconds = 3.0;
const double deadSeconds = 3.0;
const double recoveryLimit = 10.0;
const int recoveryPictures = 25; // so many in a row are looked at, one second's
const double slackMilliseconds = 10.0;
const int dataBytes = 3000; // more than neighbour discovery, less than three pictures

// The clock by which the camera stamps its pictures, in seconds.
double now()
{
    timespec time;
    clock_gettime(CLOCK_REALTIME, &time);
    return time.tv_sec + time.tv_nsec / 1e9;
}

void look()
{
    QThread::usleep(lookMicroseconds);
}

// Returns when the clock stands so far in a second, 0 to 1.
void awaitPhase(double phase)
{
    const double ahead = phase - std::fmod(now(), 1.0);
    QThread::usleep(std::fmod(ahead + 1.0, 1.0) * 1e6);
}

bool soundIsPlaying()
{
    QProcess pactl;
    pactl.start("pactl", {"list", "short", "sink-inputs"});
    pactl.waitForFinished();
    return !pactl.readAllStandardOutput().isEmpty();
}

// Whether the latency is back where it was, as of the first of these pictures.
bool isRecovered(const QVector<double> &latencies, double allowed)
{
    return latencies.first() <= allowed && median(latencies) <= allowed;
}

} // namespace

PreviewBench::PreviewBench(
    const PreviewOptions &options, PreviewCamera &camera, PreviewScreen &screen, QFile &raw) :
    options(options),
    camera(camera),
    screen(screen),
    raw(raw)
{
    raw.write("player,figure,seen,made,latency\n");
}

void PreviewBench::measure(IPToolPlayer &ours)
{
    measureAt(smallVideo, ours);
    if (options.wants("cpu"))
        measureAt(largeVideo, ours);
}

void PreviewBench::measureAt(QSize video, IPToolPlayer &ours)
{
    camera.start(video, video == smallVideo);
    ours.setVideoSize(video);
    ours.prepare();
    for (const double limit = now() + startLimit; now() < limit && !camera.hasViewer();)
        look();
    end(ours);
    picture = ours.pictureSize();
    if (options.players.contains(ours.name))
        measurePlayer(ours, video);
    ours.end();
    for (const QString &name : options.players) {
        const std::unique_ptr<PeerPlayer> peer(PeerPlayer::create(name, camera.url(), picture));
        if (peer)
            measurePlayer(*peer, video);
    }
    camera.stop();
}

void PreviewBench::measurePlayer(PreviewPlayer &player, QSize video)
{
    std::fprintf(stderr, "%s, %dx%d\n", qPrintable(player.name), video.width(), video.height());
    PreviewFigures &figures = figuresOf(player);
    if (video == largeVideo) {
        measureLarge(player, figures);
        return;
    }
    if (options.wants("cpu") && player.hasIdleWindow())
        figures.idle = measureIdle(player);
    if (options.wants("start"))
        measureStarts(player, figures);
    if (options.wants("latency") || options.wants("recovery") || options.wants("cpu"))
        measureSmall(player, figures);
}

void PreviewBench::measureStarts(PreviewPlayer &player, PreviewFigures &figures)
{
    for (int i = 0; i < options.starts; ++i) {
        // Spread over the second between two key frames, for each player alike.
        awaitPhase((i + QRandomGenerator::global()->generateDouble()) / options.starts);
        PreviewStart start;
        if (measureStart(player, start))
            figures.starts << start;
        else
            ++figures.failedStarts;
        end(player);
    }
}

bool PreviewBench::measureStart(PreviewPlayer &player, PreviewStart &start)
{
    begin(player);
    double connected = 0;
    for (const double limit = now() + startLimit; now() < limit; look()) {
        if (connected == 0) {
            if (camera.hasViewer())
                connected = now();
            continue;
        }
        player.locate(screen);
        PreviewPicture picture;
        if (!nextPicture(picture))
            continue;
        start = {picture.seen - connected, qMax(0.0, picture.made - connected)};
        keep(player, "connected", {connected, picture.made});
        keep(player, "first", picture);
        return true;
    }
    return false;
}

void PreviewBench::measureSmall(PreviewPlayer &player, PreviewFigures &figures)
{
    const int longer = player.hasIdleWindow() ? options.minutes * 60 : 0;
    if (playUntilSettled(player)) {
        figures.small = watch(player, qMax(options.seconds, longer), "latency");
        if (options.wants("recovery"))
            measureRecoveries(player, figures);
    }
    end(player);
}

void PreviewBench::measureLarge(PreviewPlayer &player, PreviewFigures &figures)
{
    if (playUntilSettled(player))
        figures.large = watch(player, options.largeSeconds, "latency-1080");
    end(player);
}

// After one that failed the next begins with a fresh stream.
void PreviewBench::measureRecoveries(PreviewPlayer &player, PreviewFigures &figures)
{
    const QVector<double> usual = figures.small.latencies();
    const double allowed = qMax(median(usual) + slackMilliseconds, percentile(usual, 0.95));
    for (int i = 0; i < options.recoveries; ++i) {
        figures.recoveries << measureRecovery(player, allowed);
        if (figures.recoveries.last().sinceBack < 0) {
            end(player);
            if (!playUntilSettled(player))
                return;
        }
    }
}

PreviewRecovery PreviewBench::measureRecovery(PreviewPlayer &player, double allowed)
{
    PreviewPicture picture;
    camera.setLinkUp(false);
    for (const double end = now() + deadSeconds; now() < end; look())
        nextPicture(picture);
    const qint64 received = camera.receivedBytes();
    camera.setLinkUp(true);

    PreviewRecovery recovery;
    const double back = now();
    QVector<double> seen, latencies; // of the last pictures
    while (now() < back + recoveryLimit) {
        look();
        if (recovery.dataSinceBack < 0 && camera.receivedBytes() > received + dataBytes)
            recovery.dataSinceBack = now() - back;
        if (!nextPicture(picture))
            continue;
        keep(player, "recovery", picture);
        seen << picture.seen;
        latencies << picture.latency();
        recovery.latencyAfter = median(latencies);
        if (seen.size() < recoveryPictures)
            continue;
        if (isRecovered(latencies, allowed)) {
            recovery.sinceBack = seen.first() - back;
            recovery.sinceData = recovery.sinceBack - recovery.dataSinceBack;
            break;
        }
        seen.removeFirst();
        latencies.removeFirst();
    }
    return recovery;
}

PreviewUse PreviewBench::measureIdle(PreviewPlayer &player)
{
    return watch(player, options.largeSeconds, "idle").use;
}

void PreviewBench::begin(PreviewPlayer &player)
{
    screen.unwatch();
    lastCode = -1;
    player.play();
}

// Returns when the camera has no viewer and the screen no picture.
void PreviewBench::end(PreviewPlayer &player)
{
    player.stop();
    for (const double limit = now() + startLimit; now() < limit; look()) {
        if (!camera.hasViewer() && screen.readTimeCode() < 0)
            return;
    }
    qFatal("%s does not stop", qPrintable(player.name));
}

bool PreviewBench::playUntilSettled(PreviewPlayer &player)
{
    begin(player);
    const double limit = now() + startLimit;
    PreviewPicture picture;
    do {
        look();
        player.locate(screen);
        if (now() > limit) {
            std::fprintf(stderr, "%s shows no picture\n", qPrintable(player.name));
            return false;
        }
    } while (!nextPicture(picture));
    for (const double end = now() + settleSeconds; now() < end; look())
        nextPicture(picture);
    return true;
}

PreviewPlaying PreviewBench::watch(PreviewPlayer &player, double seconds, const char *figure)
{
    PreviewPlaying playing;
    playing.hasSound = soundIsPlaying();
    const double cpu = ProcessUse::cpuSeconds(player.pid());
    const double serverCpu = ProcessUse::cpuSeconds(screen.serverProcess());
    playing.began = now();
    for (const double end = playing.began + seconds; now() < end; look()) {
        PreviewPicture picture;
        if (nextPicture(picture)) {
            playing.pictures << picture;
            keep(player, figure, picture);
        }
    }
    playing.ended = now();
    playing.use = {(ProcessUse::cpuSeconds(player.pid()) - cpu) / playing.length(),
        (ProcessUse::cpuSeconds(screen.serverProcess()) - serverCpu) / playing.length(),
        ProcessUse::memory(player.pid())};
    return playing;
}

// Whether the screen shows a picture other than the last.
bool PreviewBench::nextPicture(PreviewPicture &picture)
{
    const qint64 code = screen.readTimeCode();
    if (code < 0 || code == lastCode)
        return false;
    lastCode = code;
    picture = {now(), code / 1000.0};
    return true;
}

void PreviewBench::keep(
    const PreviewPlayer &player, const char *figure, const PreviewPicture &picture)
{
    raw.write(QStringLiteral("%1,%2,%3,%4,%5\n")
                  .arg(player.name, QLatin1String(figure))
                  .arg(picture.seen, 0, 'f', 4)
                  .arg(picture.made, 0, 'f', 3)
                  .arg(picture.latency(), 0, 'f', 1)
                  .toUtf8());
}

// In the order in which they were first measured.
PreviewFigures &PreviewBench::figuresOf(const PreviewPlayer &player)
{
    for (PreviewTables::Row &row : rows) {
        if (row.player == player.name)
            return row.figures;
    }
    rows.append({player.name, PreviewFigures()});
    return rows.last().figures;
}
