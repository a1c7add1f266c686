#include "ZROpenGLPainter.h"
#include "ZROpenGLPicture.h"

#include <QEvent>
#include <QOffscreenSurface>
#include <QOpenGLFunctions>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace {

constexpr const char *softwareRenderers[] = {"llvmpipe", "softpipe", "swr", "software"};

QWindow *createTarget()
{
    QSurfaceFormat format;
    format.setSwapInterval(0);
    auto *target = new QWindow;
    target->setSurfaceType(QSurface::OpenGLSurface);
    target->setFormat(format);
    return target;
}

}

bool ZROpenGLPainter::isHardware(const QByteArray &renderer)
{
    const QByteArray name = renderer.toLower();
    return !name.isEmpty()
        && std::none_of(std::begin(softwareRenderers), std::end(softwareRenderers),
            [&](const char *software) { return name.contains(software); });
}

bool ZROpenGLPainter::hasHardware()
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface)) {
        return false;
    }
    const auto *renderer = context.functions()->glGetString(GL_RENDERER);
    return isHardware(reinterpret_cast<const char *>(renderer));
}

std::unique_ptr<ZRVideoPainter> ZROpenGLPainter::create(QWidget *window)
{
    std::unique_ptr<ZROpenGLPainter> painter(new ZROpenGLPainter(window));
    if (!painter->start()) {
        return nullptr;
    }
    return painter;
}

ZROpenGLPainter::ZROpenGLPainter(QWidget *window) :
    window(window),
    target(createTarget()),
    container(QWidget::createWindowContainer(target, window))
{
    window->installEventFilter(this);
    target->installEventFilter(this);
    container->setGeometry(window->rect());
    container->show();
}

bool ZROpenGLPainter::start()
{
    context.setFormat(target->format());
    target->create();
    if (!context.create() || !context.makeCurrent(target)) {
        return false;
    }
    picture = std::make_unique<ZROpenGLPicture>();
    return picture->isValid();
}

ZROpenGLPainter::~ZROpenGLPainter()
{
    if (picture && context.makeCurrent(target)) {
        picture.reset();
    }
    context.doneCurrent();
    delete container;
}

void ZROpenGLPainter::show(const ZRYuvPicture *picture)
{
    shown = picture != nullptr;
    if (shown && context.makeCurrent(target)) {
        this->picture->upload(*picture);
    }
    draw();
}

void ZROpenGLPainter::draw()
{
    if (!target->isExposed() || !context.makeCurrent(target)) {
        return;
    }
    QOpenGLFunctions *gl = context.functions();
    gl->glClearColor(0, 0, 0, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    if (shown) {
        picture->draw(QRect(QPoint(), target->size() * target->devicePixelRatio()));
    }
    context.swapBuffers(target);
}

bool ZROpenGLPainter::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == window && event->type() == QEvent::Resize) {
        container->setGeometry(window->rect());
    } else if (watched == target && event->type() == QEvent::Expose) {
        draw();
    }
    return QObject::eventFilter(watched, event);
}
