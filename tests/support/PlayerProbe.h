#pragma once

#include "MediaClip.h"
#include "ThisProcess.h"
#include "ZRPlayer.h"
#include "ZRPlayerReader.h"
#include "ZRVideoView.h"

#include <QByteArrayList>
#include <QElapsedTimer>
#include <QMutex>
#include <QThread>
#include <QVector>
#include <QWaitCondition>

#include <algorithm>

// What a test puts around a player: an observer, a view, and a look into its queue and at the
// process's threads. All may be asked from the test's thread while the player runs.

// A view that keeps every frame, and that can be held up.
class RecordingView : public ZRVideoView
{
public:
    using Picture = MediaClip::Picture;

    void update(AVFrame *frame) override
    {
        QMutexLocker lock(&mutex);
        shown.push_back(Picture(av_frame_clone(frame), release));
        while (blocked)
            freed.wait(&mutex);
    }

    void clear() override { reset(); }

    // Blocked: the thread that brings a frame waits.
    void setBlocked(bool block)
    {
        QMutexLocker lock(&mutex);
        blocked = block;
        freed.wakeAll();
    }

    void reset()
    {
        QMutexLocker lock(&mutex);
        shown.clear();
    }

    int count() const
    {
        QMutexLocker lock(&mutex);
        return int(shown.size());
    }

    std::vector<Picture> pictures() const
    {
        QMutexLocker lock(&mutex);
        return shown;
    }

    // What the pictures have written on them.
    QVector<int> numbers() const
    {
        QVector<int> found;
        for (const Picture &picture : pictures())
            found.append(MediaClip::number(picture.get()));
        return found;
    }

private:
    static void release(const AVFrame *frame)
    {
        auto *freed = const_cast<AVFrame *>(frame);
        av_frame_free(&freed);
    }

    mutable QMutex mutex;
    QWaitCondition freed;
    bool blocked = false;
    std::vector<Picture> shown;
};

class RecordingObserver : public ZRPlayerObserver
{
public:
    struct Event {
        int type;
        double current;
        double total;
        QString thread;
    };

    void onPlayerNotify(ZRPlayer * /*player*/, int type, double current, double total) override
    {
        QMutexLocker lock(&mutex);
        noted.append({type, current, total, QThread::currentThread()->objectName()});
    }

    QVector<Event> events() const
    {
        QMutexLocker lock(&mutex);
        return noted;
    }

    int count(int type) const
    {
        int found = 0;
        for (const Event &event : events())
            found += event.type == type ? 1 : 0;
        return found;
    }

    // The types in order, each run of progress as one.
    QVector<int> course() const
    {
        QVector<int> types;
        for (const Event &event : events()) {
            if (types.isEmpty() || event.type != 4 || types.last() != 4)
                types.append(event.type);
        }
        return types;
    }

    void reset()
    {
        QMutexLocker lock(&mutex);
        noted.clear();
    }

private:
    mutable QMutex mutex;
    QVector<Event> noted;
};

class ProbedReader : public ZRPlayerReader
{
public:
    int queuedVideoPackets() const { return videoPackets->size(); }
};

// A player with all of these, whose owner may be careless: it closes itself.
class ProbedPlayer : public ZRPlayer
{
public:
    explicit ProbedPlayer(double openLimit = 10.0)
    {
        timeout = openLimit;
        setObserver(&observed);
        setVideoView(&view);
    }

    ~ProbedPlayer() override { closeInTime(); }

    void onReaderNotify(ZRPlayerReader *from, int type) override
    {
        {
            QMutexLocker lock(&mutex);
            readerEvents.append(type);
        }
        ZRPlayer::onReaderNotify(from, type);
    }

    ZRPlayerReader *createReader() override { return new ProbedReader; }

    int queuedVideoPackets() const
    {
        return static_cast<const ProbedReader *>(reader)->queuedVideoPackets();
    }

    int readerEventCount(int type) const
    {
        QMutexLocker lock(&mutex);
        return readerEvents.count(type);
    }

    // Milliseconds that close() took.
    qint64 closeInTime()
    {
        QElapsedTimer clock;
        clock.start();
        view.setBlocked(false);
        close();
        return clock.elapsed();
    }

    void reset()
    {
        observed.reset();
        view.reset();
        QMutexLocker lock(&mutex);
        readerEvents.clear();
    }

    RecordingObserver observed;
    RecordingView view;

private:
    mutable QMutex mutex;
    QVector<int> readerEvents;
};

// The threads that a player has with these streams.
inline QByteArrayList playerThreads(bool video, bool audio)
{
    const QByteArrayList audioThreads = {"ZRPlayerDecoderAudioThread", "ZRPlayerRenderAudioThread"};
    const QByteArrayList videoThreads = {"ZRPlayerDecoderVideoThread", "ZRPlayerRenderVideoThread"};
    QByteArrayList names = {"ZRPlayerReaderThread"};
    if (audio)
        names += audioThreads;
    if (video)
        names += videoThreads;
    std::transform(names.begin(), names.end(), names.begin(), ThisProcess::keptName);
    std::sort(names.begin(), names.end());
    return names;
}
