#include "ZROpenGLVideoView.h"
#include "ZRLetterbox.h"
#include "ZROpenGLPicture.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QThread>

extern "C" {
#include <libavutil/frame.h>
}

ZROpenGLVideoView::ZROpenGLVideoView(QWidget *parent) :
    QOpenGLWidget(parent),
    mutex(QMutex::NonRecursive),
    frame(av_frame_alloc())
{ }

ZROpenGLVideoView::~ZROpenGLVideoView()
{
    if (context()) {
        disconnect(context(), nullptr, this, nullptr); // the context goes after this
    }
    forgetPicture();
    av_frame_free(&frame);
}

void ZROpenGLVideoView::update(AVFrame *frame)
{
    hold(frame);
    notifyUpdate();
}

void ZROpenGLVideoView::clear()
{
    hold(nullptr);
    notifyUpdate();
}

void ZROpenGLVideoView::hold(const AVFrame *frame)
{
    QMutexLocker lock(&mutex);
    av_frame_unref(this->frame);
    if (frame) {
        av_frame_ref(this->frame, frame);
    }
    changed = true;
}

void ZROpenGLVideoView::notifyUpdate()
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "notifyUpdate", Qt::QueuedConnection);
        return;
    }
    QOpenGLWidget::update();
}

// Runs again with a new context when the view moves to another window.
void ZROpenGLVideoView::initializeGL()
{
    connect(
        context(), &QOpenGLContext::aboutToBeDestroyed, this, &ZROpenGLVideoView::forgetPicture);
    picture = std::make_unique<ZROpenGLPicture>();
    QMutexLocker lock(&mutex);
    changed = true;
}

void ZROpenGLVideoView::forgetPicture()
{
    if (picture) {
        makeCurrent();
        picture.reset();
        doneCurrent();
    }
}

void ZROpenGLVideoView::paintGL()
{
    QOpenGLFunctions *gl = context()->functions();
    gl->glClearColor(0, 0, 0, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    uploadFrame();
    if (picture->isValid() && !videoSize.isEmpty()) {
        picture->draw(pictureArea());
    }
}

void ZROpenGLVideoView::uploadFrame()
{
    QMutexLocker lock(&mutex);
    if (!changed) {
        return;
    }
    changed = false;
    videoSize = {};
    if (ZRYuvPicture::isIn(*frame)) {
        videoSize = {frame->width, frame->height};
        picture->upload(ZRYuvPicture::of(*frame));
    }
}

// In pixels of the screen, from the lower left.
QRect ZROpenGLVideoView::pictureArea() const
{
    const QRect area = zrLetterbox(videoSize, size());
    const qreal ratio = devicePixelRatioF();
    return QRect(
        QPoint(area.x(), height() - area.y() - area.height()) * ratio, area.size() * ratio);
}
