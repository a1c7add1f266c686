#pragma once

#include <QWidget>

#include <functional>

class QRect;
struct ZRVideoColours;

// What a video view needs of Direct3D 9 and nothing more, operation for operation.
// Thread: GUI. Errors: a result below 0. Ownership: what an operation hands out is given back
// with release() by whoever asked for it; parameters are only lent.

// The values of Direct3D's names that the view uses.
namespace ZRDirect3DValue {
constexpr unsigned sdkVersion = 32;
constexpr unsigned defaultAdapter = 0;
constexpr int deviceTypeHal = 1;
constexpr quint32 capsHardwareTransformAndLight = 0x10000;
constexpr quint32 createHardwareVertexProcessing = 0x46; // with multithreaded, FPU preserve
constexpr quint32 createSoftwareVertexProcessing = 0x26; // the same
constexpr quint32 formatX8R8G8B8 = 22;
constexpr quint32 formatYV12 = 0x32315659;
constexpr int poolDefault = 0;
constexpr quint32 swapEffectDiscard = 1;
constexpr quint32 presentFlagVideo = 0x10;
constexpr quint32 presentIntervalImmediate = 0x80000000;
constexpr quint32 lockDoNotWait = 0x4000;
constexpr quint32 clearTarget = 1;
constexpr quint32 opaqueBlack = 0xff000000;
constexpr int backBufferMono = 0;
constexpr int filterLinear = 2;
}

// A window as the system names it.
using ZRDirect3DWindow = quintptr;

struct ZRDirect3DCaps {
    quint32 devCaps = 0;
};

struct ZRDirect3DDisplayMode {
    quint32 width = 0;
    quint32 height = 0;
    quint32 format = 0;
};

struct ZRDirect3DPresentParameters {
    quint32 backBufferWidth = 0;
    quint32 backBufferHeight = 0;
    quint32 backBufferFormat = 0;
    quint32 backBufferCount = 0;
    quint32 multiSampleType = 0;
    quint32 multiSampleQuality = 0;
    quint32 swapEffect = 0;
    ZRDirect3DWindow deviceWindow = 0;
    bool windowed = false;
    bool enableAutoDepthStencil = false;
    quint32 autoDepthStencilFormat = 0;
    quint32 flags = 0;
    quint32 refreshRate = 0;
    quint32 presentationInterval = 0;
};

struct ZRDirect3DLockedRect {
    int pitch = 0; // bytes
    quint8 *bits = nullptr;
};

struct ZRDirect3DSurfaceDesc {
    quint32 format = 0;
    quint32 width = 0;
    quint32 height = 0;
};

class ZRDirect3DObject
{
public:
    virtual void release() = 0;

protected:
    ZRDirect3DObject() = default;
    virtual ~ZRDirect3DObject() = default;
    Q_DISABLE_COPY(ZRDirect3DObject)
};

class ZRDirect3DDevice;

// IDirect3DSurface9.
class ZRDirect3DSurface : public ZRDirect3DObject
{
public:
    virtual int lockRect(ZRDirect3DLockedRect *rect, quint32 flags) = 0;
    virtual int unlockRect() = 0;
    virtual int getDevice(ZRDirect3DDevice **device) = 0;
    virtual int getDesc(ZRDirect3DSurfaceDesc *desc) = 0;
    // The meaning of the YUV values that follow. Direct3D 9 has no such operation: its driver
    // decides by itself, so there this does nothing.
    virtual void setColours(const ZRVideoColours &colours) = 0;
};

// IDirect3DSwapChain9.
class ZRDirect3DSwapChain : public ZRDirect3DObject
{
public:
    virtual int getPresentParameters(ZRDirect3DPresentParameters *parameters) = 0;
    virtual int getBackBuffer(unsigned index, int type, ZRDirect3DSurface **surface) = 0;
    virtual int present() = 0;
};

// IDirect3DDevice9. A null rectangle is the whole surface.
class ZRDirect3DDevice : public ZRDirect3DObject
{
public:
    virtual int createOffscreenPlainSurface(
        unsigned width, unsigned height, quint32 format, int pool, ZRDirect3DSurface **surface) = 0;
    virtual int getSwapChain(unsigned index, ZRDirect3DSwapChain **swapChain) = 0;
    virtual int createAdditionalSwapChain(
        ZRDirect3DPresentParameters *parameters, ZRDirect3DSwapChain **swapChain) = 0;
    virtual int clear(quint32 flags, quint32 colour, float depth, quint32 stencil) = 0;
    virtual int beginScene() = 0;
    virtual int endScene() = 0;
    virtual int present() = 0;
    virtual int getBackBuffer(
        unsigned swapChain, unsigned index, int type, ZRDirect3DSurface **surface) = 0;
    virtual int setRenderTarget(unsigned index, ZRDirect3DSurface *surface) = 0;
    virtual int stretchRect(ZRDirect3DSurface *source, const QRect *sourceRect,
        ZRDirect3DSurface *target, const QRect *targetRect, int filter) = 0;
};

// IDirect3D9.
class ZRDirect3D : public ZRDirect3DObject
{
public:
    virtual int getDeviceCaps(unsigned adapter, int deviceType, ZRDirect3DCaps *caps) = 0;
    virtual int getAdapterDisplayMode(unsigned adapter, ZRDirect3DDisplayMode *mode) = 0;
    virtual int createDevice(unsigned adapter, int deviceType, ZRDirect3DWindow window,
        quint32 flags, ZRDirect3DPresentParameters *parameters, ZRDirect3DDevice **device) = 0;
};

// Where it all comes from: Direct3D 9 itself, something in its place, or a test's own.
class ZRDirect3DModule
{
public:
    virtual ~ZRDirect3DModule() = default;

    // The child of a view that is presented into. Where its system forgets what it shows, it calls
    // `redraw`, which is false when there is no picture.
    virtual QWidget *createDisplay(QWidget *view, std::function<bool()> redraw)
    {
        Q_UNUSED(redraw)
        return new QWidget(view);
    }
    virtual ZRDirect3DWindow windowHandle(QWidget *widget) = 0;
    // Direct3DCreate9. Null: there is none.
    virtual ZRDirect3D *create(unsigned sdkVersion) = 0;
    // The surface that a hardware decoder put its picture into, with a reference of its own.
    // Null: nothing that this module could draw.
    virtual ZRDirect3DSurface *hardwareSurface(void *surface) = 0;

    // The system's: Direct3D 9 on Windows (_d3d9.cpp); elsewhere OpenGL where a graphics processor
    // does it, and else software (_gl.cpp). Lives as long as the process.
    static ZRDirect3DModule &system();
};
