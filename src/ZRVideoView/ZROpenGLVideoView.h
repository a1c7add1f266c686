#pragma once

#include "ZRVideoView.h"

#include <QMutex>
#include <QOpenGLWidget>

#include <memory>

class ZROpenGLPicture;

// Shows frames of YUV 4:2:0 with OpenGL, letterboxed on black.
// Thread: update(AVFrame *) and clear() from any; what they ask for happens on the GUI thread.
class ZROpenGLVideoView : public QOpenGLWidget, public ZRVideoView
{
    Q_OBJECT

public:
    explicit ZROpenGLVideoView(QWidget *parent = nullptr);
    ~ZROpenGLVideoView() override;

    using QOpenGLWidget::update;
    void update(AVFrame *frame) override; // null drops the frame held
    void clear() override;

public slots:
    // Asks for a repaint, from any thread.
    void notifyUpdate();

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void hold(const AVFrame *frame);
    void forgetPicture();
    void uploadFrame();
    QRect pictureArea() const;

    QMutex mutex; // guards `frame` and `changed`
    AVFrame *frame; // owned
    bool changed = false; // since it was last uploaded
    QSize videoSize; // of what was uploaded, empty when there is nothing to show
    std::unique_ptr<ZROpenGLPicture> picture; // belongs to the OpenGL context
};
