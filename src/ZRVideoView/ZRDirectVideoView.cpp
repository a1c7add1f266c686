#include "ZRDirectVideoView.h"
#include "ZRLetterbox.h"
#include "ZRYuvPicture.h"

#include <QMutex>
#include <QPainter>
#include <QThread>

extern "C" {
#include <libavutil/frame.h>
}

#include <algorithm>
#include <cstring>

using namespace ZRDirect3DValue;

namespace {

// The number by which FFmpeg knows DXVA2 surfaces in the generation used.
constexpr int hardwareFormat = 51;
static_assert(hardwareFormat == AV_PIX_FMT_DXVA2_VLD);

bool isSoftwareFormat(int format)
{
    return format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVJ420P;
}

// Copies a plane of the frame, `divisor` times smaller than the picture in both directions, to
// `target`. Its stride is given, as it isn't the plane's own for chroma.
void copyPlane(const AVFrame &frame, int plane, int stride, int divisor, quint8 *target, int pitch)
{
    const int length = std::min({stride, pitch / divisor, frame.width / divisor});
    const int rows = ZRYuvPicture::rowsInside(frame, plane, stride, length, frame.height / divisor);
    const quint8 *source = frame.data[plane];
    for (int row = 0; row < rows; ++row) {
        std::memcpy(target + qptrdiff(row) * pitch / divisor, source + qptrdiff(row) * stride,
            size_t(length));
    }
}

template <class Object> void releaseObject(Object *&object)
{
    if (object) {
        object->release();
        object = nullptr;
    }
}

}

ZRDirectVideoView::ZRDirectVideoView(QWidget *parent, ZRDirect3DModule &module) :
    QWidget(parent),
    displayWidget(module.createDisplay(this, [this] { return redraw(); })),
    mutex(new QMutex(QMutex::NonRecursive)),
    frame(av_frame_alloc()),
    module(module)
{
    setAttribute(Qt::WA_OpaquePaintEvent); // paintEvent() leaves nothing out
}

ZRDirectVideoView::~ZRDirectVideoView()
{
    releaseDirect3D();
    delete displayWidget; // which asks for the frame as long as it lives
    av_frame_free(&frame);
    delete mutex;
}

void ZRDirectVideoView::update(AVFrame *frame)
{
    {
        QMutexLocker lock(mutex);
        av_frame_unref(this->frame);
        if (frame) {
            av_frame_ref(this->frame, frame);
        }
    }
    notifyUpdate();
}

void ZRDirectVideoView::clear()
{
    {
        QMutexLocker lock(mutex);
        av_frame_unref(frame);
    }
    format = -1; // outside of the mutex: the next frame meets it and rebuilds
    notifyUpdate();
}

void ZRDirectVideoView::notifyUpdate()
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "notifyUpdate", Qt::QueuedConnection);
        return;
    }
    QMutexLocker lock(mutex);
    draw();
}

// What the display has lost. False when there is no picture for it.
bool ZRDirectVideoView::redraw()
{
    if (!mutex->tryLock()) {
        return true; // whoever holds it draws next
    }
    const bool drawable = holdsPicture() && frame->format == format && (surface || swapChain);
    if (drawable) {
        draw();
    }
    mutex->unlock();
    return drawable;
}

bool ZRDirectVideoView::holdsPicture() const
{
    return frame->width >= 1 && frame->height >= 1;
}

void ZRDirectVideoView::draw()
{
    if (!holdsPicture()) {
        drawBlack();
        return;
    }
    if (frame->format != format) {
        releaseDirect3D();
        if (!rebuild()) {
            return;
        }
    }
    if (isSoftwareFormat(format)) {
        drawSoftware();
    } else {
        drawHardware();
    }
}

void ZRDirectVideoView::drawBlack()
{
    if (device) {
        device->clear(clearTarget, opaqueBlack, 1.0f, 0);
        device->beginScene();
        device->endScene();
        device->present();
    }
    QWidget::update(); // what no device painted over is painted by the view
}

// False when there is nothing to draw with. A later frame of the format is drawn by what there is.
bool ZRDirectVideoView::rebuild()
{
    if (isSoftwareFormat(frame->format)) {
        return rebuildForSoftware();
    }
    return frame->format == hardwareFormat && rebuildForHardware();
}

bool ZRDirectVideoView::rebuildForSoftware()
{
    format = frame->format;
    const ZRDirect3DWindow window = module.windowHandle(displayWidget);
    ZRDirect3DCaps caps;
    ZRDirect3DDisplayMode mode;
    if (!openDirect3D(&caps, &mode)) {
        releaseDirect3D();
        return false;
    }
    ZRDirect3DPresentParameters parameters;
    parameters.backBufferWidth = mode.width;
    parameters.backBufferHeight = mode.height;
    parameters.backBufferFormat = mode.format;
    parameters.swapEffect = swapEffectDiscard;
    parameters.deviceWindow = window;
    parameters.windowed = true;
    parameters.flags = presentFlagVideo;
    parameters.presentationInterval = presentIntervalImmediate;
    const quint32 behaviour = caps.devCaps & capsHardwareTransformAndLight
        ? createHardwareVertexProcessing
        : createSoftwareVertexProcessing;
    direct3d->createDevice(defaultAdapter, deviceTypeHal, window, behaviour, &parameters, &device);
    createSurface();
    if (surface) {
        layoutDisplay();
    }
    return surface;
}

bool ZRDirectVideoView::rebuildForHardware()
{
    format = frame->format;
    if (ZRDirect3DSurface *picture = module.hardwareSurface(frame->data[3])) {
        picture->getDevice(&device); // the decoder's own
        picture->release();
    }
    videoWidth = frame->width;
    videoHeight = frame->height;
    const ZRDirect3DWindow window = module.windowHandle(displayWidget);
    if (!device) {
        return false;
    }
    ZRDirect3DCaps caps;
    ZRDirect3DDisplayMode mode;
    ZRDirect3DPresentParameters parameters;
    if (openDirect3D(&caps, &mode) && device->getSwapChain(0, &swapChain) >= 0
        && swapChain->getPresentParameters(&parameters) >= 0) {
        parameters.windowed = true;
        parameters.deviceWindow = window;
        replaceSwapChain(&parameters, mode);
    } else {
        releaseObject(swapChain); // the device's own chain
    }
    if (swapChain) {
        layoutDisplay();
    } else {
        releaseDirect3D();
    }
    return swapChain;
}

bool ZRDirectVideoView::openDirect3D(ZRDirect3DCaps *caps, ZRDirect3DDisplayMode *mode)
{
    direct3d = module.create(sdkVersion);
    return direct3d && direct3d->getDeviceCaps(defaultAdapter, deviceTypeHal, caps) >= 0
        && direct3d->getAdapterDisplayMode(defaultAdapter, mode) >= 0;
}

void ZRDirectVideoView::createSurface()
{
    videoWidth = frame->width;
    videoHeight = frame->height;
    if (!device) {
        return;
    }
    device->createOffscreenPlainSurface(
        unsigned(videoWidth), unsigned(videoHeight), formatYV12, poolDefault, &surface);
}

void ZRDirectVideoView::replaceSwapChain(
    ZRDirect3DPresentParameters *parameters, const ZRDirect3DDisplayMode &mode)
{
    parameters->backBufferWidth = mode.width;
    parameters->backBufferHeight = mode.height;
    releaseObject(swapChain);
    device->createAdditionalSwapChain(parameters, &swapChain);
}

void ZRDirectVideoView::drawSoftware()
{
    if (frame->width != videoWidth || frame->height != videoHeight) {
        releaseObject(surface);
        createSurface();
        layoutDisplay();
    }
    if (surface) {
        renderYUV420();
    }
}

void ZRDirectVideoView::renderYUV420()
{
    surface->setColours(ZRVideoColours::of(*frame));
    ZRDirect3DLockedRect locked;
    if (surface->lockRect(&locked, lockDoNotWait) < 0 || !frame->data[0]) {
        qDebug("lock failure");
    } else {
        const qptrdiff height = frame->height;
        const int pitch = locked.pitch;
        quint8 *v = locked.bits + height * pitch;
        quint8 *u = locked.bits + (height + height / 4) * pitch;
        // V before U, and each chroma plane goes with the other one's stride.
        copyPlane(*frame, 0, frame->linesize[0], 1, locked.bits, pitch);
        copyPlane(*frame, 2, frame->linesize[1], 2, v, pitch);
        copyPlane(*frame, 1, frame->linesize[2], 2, u, pitch);
    }
    surface->unlockRect();

    device->clear(clearTarget, opaqueBlack, 1.0f, 0);
    device->beginScene();
    ZRDirect3DSurface *backBuffer = nullptr;
    device->getBackBuffer(0, 0, backBufferMono, &backBuffer);
    if (backBuffer) {
        device->stretchRect(surface, nullptr, backBuffer, nullptr, filterLinear);
    }
    device->endScene();
    device->present();
    releaseObject(backBuffer);
}

void ZRDirectVideoView::drawHardware()
{
    if (swapChain && (frame->width != videoWidth || frame->height != videoHeight)) {
        // The size that was stored stays, so from here on every frame comes this way and the
        // layout remains as it was.
        ZRDirect3DDisplayMode mode;
        ZRDirect3DPresentParameters parameters;
        if (direct3d->getAdapterDisplayMode(defaultAdapter, &mode) >= 0
            && swapChain->getPresentParameters(&parameters) >= 0) {
            replaceSwapChain(&parameters, mode);
        }
    }
    if (!swapChain) {
        return;
    }
    device->clear(clearTarget, opaqueBlack, 1.0f, 0);
    device->beginScene();
    ZRDirect3DSurface *backBuffer = nullptr;
    swapChain->getBackBuffer(0, backBufferMono, &backBuffer);
    if (backBuffer) {
        device->setRenderTarget(0, backBuffer);
        stretchHardwareFrame(backBuffer);
    }
    device->endScene();
    swapChain->present();
    releaseObject(backBuffer);
}

void ZRDirectVideoView::stretchHardwareFrame(ZRDirect3DSurface *backBuffer)
{
    if (ZRDirect3DSurface *picture = module.hardwareSurface(frame->data[3])) {
        const QRect whole(0, 0, frame->width, frame->height);
        device->stretchRect(picture, &whole, backBuffer, nullptr, filterLinear);
        picture->release();
    }
}

void ZRDirectVideoView::releaseDirect3D()
{
    releaseObject(swapChain);
    releaseObject(surface);
    releaseObject(device);
    releaseObject(direct3d);
}

void ZRDirectVideoView::layoutDisplay()
{
    displayWidget->setGeometry(zrLetterbox({videoWidth, videoHeight}, size()));
}

void ZRDirectVideoView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutDisplay();
}

void ZRDirectVideoView::paintEvent(QPaintEvent *event)
{
    QWidget::paintEvent(event);
    QPainter painter(this);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRect(rect());
}
