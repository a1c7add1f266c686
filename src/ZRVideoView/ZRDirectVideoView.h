#pragma once

#include "ZRVideoView.h"
#include "ZRDirect3D.h"

#include <QWidget>

class QMutex;

// Shows frames of YUV 4:2:0 and of hardware surfaces in a child window, letterboxed on black.
// Thread: update(AVFrame *) and clear() from any; what they ask for happens on the GUI thread.
// Draws through a module of the shape of Direct3D 9, which has to outlive the view.
class ZRDirectVideoView : public QWidget, public ZRVideoView
{
    Q_OBJECT

public:
    explicit ZRDirectVideoView(
        QWidget *parent = nullptr, ZRDirect3DModule &module = ZRDirect3DModule::system());
    ~ZRDirectVideoView() override;

    using QWidget::update;
    void update(AVFrame *frame) override; // null drops the frame held
    void clear() override;

public slots:
    // Draws what is held; off the GUI thread, asks for that.
    void notifyUpdate();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

    QWidget *displayWidget;
    ZRDirect3D *direct3d = nullptr;
    ZRDirect3DDevice *device = nullptr;
    ZRDirect3DSurface *surface = nullptr; // software frames go into it
    ZRDirect3DSwapChain *swapChain = nullptr; // for hardware frames
    // What the Direct3D objects were built for.
    int videoWidth = 0;
    int videoHeight = 0;
    QMutex *mutex; // owned, guards `frame`
    int format = -1; // of the pixels
    AVFrame *frame; // owned

private:
    bool redraw();
    bool holdsPicture() const;
    void draw();
    void drawBlack();
    bool rebuild();
    bool rebuildForSoftware();
    bool rebuildForHardware();
    bool openDirect3D(ZRDirect3DCaps *caps, ZRDirect3DDisplayMode *mode);
    void createSurface();
    void replaceSwapChain(
        ZRDirect3DPresentParameters *parameters, const ZRDirect3DDisplayMode &mode);
    void drawSoftware();
    void renderYUV420();
    void drawHardware();
    void stretchHardwareFrame(ZRDirect3DSurface *backBuffer);
    void releaseDirect3D();
    void layoutDisplay();

    ZRDirect3DModule &module;
};
