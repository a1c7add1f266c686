#include "PlayerProbe.h"
#include "RtspPeer.h"

#include <QtTest>

// One player, opened and closed 300 times over all kinds of streams, at any moment of an opening:
// no thread stays, closing is always quick, and memory doesn't grow.
class tst_StreamCycles : public QObject
{
    Q_OBJECT

private slots:
    void cycles();
};

namespace {

const int patience = 30000; // milliseconds, for what must come
const qint64 closeLimit = 500; // milliseconds
const int rounds = 300;
const int warmUp = 60; // rounds after which all caches and pools have their size

#if defined(__SANITIZE_ADDRESS__)
const double growthLimit = 1000.0; // freed memory is kept for a while; leaks are told at the end
#else
const double growthLimit = 8.0; // mebibytes
#endif

double mebibytes()
{
    return double(ThisProcess::memory()) / (1 << 20);
}

std::vector<MediaClip::Format> variants()
{
    std::vector<MediaClip::Format> formats;
    for (const AVCodecID video : {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_NONE}) {
        for (const AVCodecID audio : {AV_CODEC_ID_AAC, AV_CODEC_ID_PCM_ALAW, AV_CODEC_ID_NONE}) {
            MediaClip::Format format = MediaClip::Format::of(video, audio);
            format.width = 160;
            format.height = 120;
            format.pictures = 20;
            format.keyFrameDistance = 10;
            if (video != AV_CODEC_ID_NONE || audio != AV_CODEC_ID_NONE)
                formats.push_back(format);
        }
    }
    return formats;
}

// The moment of closing, which changes from round to round.
void waitFor(int moment, ProbedPlayer &player, const MediaClip &clip)
{
    if (moment == 1)
        QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0), 1, patience);
    else if (moment >= 2 && clip.hasVideo())
        QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 2 * moment, patience);
    else if (moment >= 2)
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 0.0, patience);
}

}

void tst_StreamCycles::cycles()
{
    av_log_set_level(AV_LOG_QUIET);
    std::vector<std::unique_ptr<RtspPeer>> peers;
    const std::vector<MediaClip::Format> formats = variants();
    for (const MediaClip::Format &format : formats)
        peers.push_back(std::make_unique<RtspPeer>(MediaClip::of(format)));
    RtspPeer::Faults faults;
    faults.description = RtspPeer::Faults::OtherMedia;
    const RtspPeer noMedia(MediaClip::of(formats[0]), faults);

    ProbedPlayer player;
    player.setRealtime(true);
    int threads = 0;
    double resident = 0.0;
    qint64 longest = 0;
    for (int round = 0; round < rounds; ++round) {
        const size_t variant = size_t(round) % (formats.size() + 1);
        const bool media = variant < formats.size();
        const std::string url = media ? peers[variant]->url() : noMedia.url();
        player.reset();
        QCOMPARE(player.open(url), 0);
        if (media)
            waitFor(round / 9 % 4, player, MediaClip::of(formats[variant]));
        else
            QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0), 1, patience);
        if (QTest::currentTestFailed())
            return;
        longest = qMax(longest, player.closeInTime());
        QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
        QCOMPARE(player.observed.count(1), 0);
        if (round == warmUp) {
            threads = ThisProcess::threadNames().size();
            resident = mebibytes();
        }
    }
    const double growth = mebibytes() - resident;
    qInfo("resident set %.1f MiB after %d rounds, %+.1f MiB after %d; longest close %lld ms",
        resident, warmUp, growth, rounds, longest);
    QVERIFY(longest <= closeLimit);
    QVERIFY(growth < growthLimit);
    QTRY_VERIFY(ThisProcess::threadNames().size() <= threads);
}

QTEST_GUILESS_MAIN(tst_StreamCycles)
#include "tst_StreamCycles.moc"
