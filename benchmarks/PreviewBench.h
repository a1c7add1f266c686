#pragma once

#include "PreviewTables.h"

#include <QSize>
#include <QStringList>

class IPToolPlayer;
class PreviewCamera;
class PreviewPlayer;
class PreviewScreen;
class QFile;

struct PreviewOptions {
    QStringList players, figures;
    int starts, seconds, largeSeconds, recoveries, minutes;

    bool wants(const char *figure) const { return figures.contains(QLatin1String(figure)); }
};

// Lets the players play, one after the other, and looks on. Every picture goes to `raw` too.
class PreviewBench
{
public:
    PreviewBench(
        const PreviewOptions &options, PreviewCamera &camera, PreviewScreen &screen, QFile &raw);

    // All figures of all players. It is our window that says how large pictures are on the screen.
    void measure(IPToolPlayer &ours);

    const QVector<PreviewTables::Row> &results() const { return rows; }
    QSize pictureSize() const { return picture; }

private:
    void measureAt(QSize video, IPToolPlayer &ours);
    void measurePlayer(PreviewPlayer &player, QSize video);
    void measureStarts(PreviewPlayer &player, PreviewFigures &figures);
    bool measureStart(PreviewPlayer &player, PreviewStart &start);
    void measureSmall(PreviewPlayer &player, PreviewFigures &figures);
    void measureLarge(PreviewPlayer &player, PreviewFigures &figures);
    void measureRecoveries(PreviewPlayer &player, PreviewFigures &figures);
    PreviewRecovery measureRecovery(PreviewPlayer &player, double allowed);
    PreviewUse measureIdle(PreviewPlayer &player);

    void begin(PreviewPlayer &player);
    void end(PreviewPlayer &player);
    bool playUntilSettled(PreviewPlayer &player);
    PreviewPlaying watch(PreviewPlayer &player, double seconds, const char *figure);
    bool nextPicture(PreviewPicture &picture);
    void keep(const PreviewPlayer &player, const char *figure, const PreviewPicture &picture);
    PreviewFigures &figuresOf(const PreviewPlayer &player);

    const PreviewOptions options;
    PreviewCamera &camera;
    PreviewScreen &screen;
    QFile &raw;
    qint64 lastCode = -1;
    QSize picture;
    QVector<PreviewTables::Row> rows;
};
