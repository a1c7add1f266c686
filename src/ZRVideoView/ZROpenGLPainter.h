#pragma once

#include "ZRVideoPainter.h"
#include "ZRYuvPicture.h"

#include <QObject>
#include <QOpenGLContext>

#include <memory>

class QByteArray;
class QWidget;
class QWindow;
class ZROpenGLPicture;

// Paints with OpenGL into a system window of its own inside of the widget, without waiting for the
// screen's refresh.
class ZROpenGLPainter : public QObject, public ZRVideoPainter
{
public:
    // Null when there is no OpenGL that could do it.
    static std::unique_ptr<ZRVideoPainter> create(QWidget *window);
    // Whether that name of a renderer means a graphics processor, and not the processor.
    static bool isHardware(const QByteArray &renderer);
    // Whether OpenGL runs on a graphics processor here. Costs a context.
    static bool hasHardware();

    ~ZROpenGLPainter() override;

    void show(const ZRYuvPicture *picture) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit ZROpenGLPainter(QWidget *window);
    bool start();
    void draw();

    QWidget *const window;
    QWindow *const target; // goes with its container
    QWidget *const container;
    QOpenGLContext context;
    std::unique_ptr<ZROpenGLPicture> picture;
    bool shown = false; // a picture, and not black
};
