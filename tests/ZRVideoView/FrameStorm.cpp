#include "FrameStorm.h"

#include "Frames.h"
#include "ZRVideoView.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>
#include <QWidget>

#include <memory>

// Frames that come faster than they are drawn would never let a turn end.
void passFrameStorm(QWidget &widget, ZRVideoView &video, AVFrame *card, int turns)
{
    constexpr int framesOfTurn = 2;
    QSemaphore due;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        for (int i = 0; i < turns * framesOfTurn; ++i) {
            due.acquire();
            const Frame grey = greyFrame(64 + i % 5 * 30, 48 + i % 3 * 20);
            video.update(i % 2 ? card : grey.get());
            QThread::msleep(1);
        }
    }));
    thread->start();
    for (int i = 0; i < turns; ++i) {
        due.release(framesOfTurn);
        widget.resize(100 + i % 300, 80 + i * 7 % 200);
        if (i % 10 == 0) {
            video.clear();
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    thread->wait();
}
