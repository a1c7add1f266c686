#include "ZRDirect3D.h"

#include <QEvent>
#include <QRect>

#include <d3d9.h>

namespace {

using namespace ZRDirect3DValue;
static_assert(createHardwareVertexProcessing
    == (D3DCREATE_HARDWARE_VERTEXPROCESSING | D3DCREATE_MULTITHREADED | D3DCREATE_FPU_PRESERVE));
static_assert(createSoftwareVertexProcessing
    == (D3DCREATE_SOFTWARE_VERTEXPROCESSING | D3DCREATE_MULTITHREADED | D3DCREATE_FPU_PRESERVE));
static_assert(capsHardwareTransformAndLight == D3DDEVCAPS_HWTRANSFORMANDLIGHT);
static_assert(presentIntervalImmediate == D3DPRESENT_INTERVAL_IMMEDIATE);
static_assert(
    presentFlagVideo == D3DPRESENTFLAG_VIDEO && swapEffectDiscard == D3DSWAPEFFECT_DISCARD);
static_assert(lockDoNotWait == D3DLOCK_DONOTWAIT && clearTarget == D3DCLEAR_TARGET);
static_assert(filterLinear == D3DTEXF_LINEAR && poolDefault == D3DPOOL_DEFAULT);
static_assert(deviceTypeHal == D3DDEVTYPE_HAL && backBufferMono == D3DBACKBUFFER_TYPE_MONO);

// A Direct3D object in the view's terms: owns one reference to it.
template <class Interface, class Native> class Wrapper : public Interface
{
public:
    explicit Wrapper(Native *native) : native(native) { }

    void release() override
    {
        native->Release();
        delete this;
    }

    Native *const native;
};

// Hands on the result of a call that yields an object, and the object in its wrapper.
template <class Wrapped, class Interface, class Native>
int handOut(HRESULT result, Native *native, Interface **object)
{
    if (SUCCEEDED(result) && native) {
        *object = new Wrapped(native);
    }
    return result;
}

D3DPRESENT_PARAMETERS toNative(const ZRDirect3DPresentParameters &parameters)
{
    D3DPRESENT_PARAMETERS native = {};
    native.BackBufferWidth = parameters.backBufferWidth;
    native.BackBufferHeight = parameters.backBufferHeight;
    native.BackBufferFormat = D3DFORMAT(parameters.backBufferFormat);
    native.BackBufferCount = parameters.backBufferCount;
    native.MultiSampleType = D3DMULTISAMPLE_TYPE(parameters.multiSampleType);
    native.MultiSampleQuality = parameters.multiSampleQuality;
    native.SwapEffect = D3DSWAPEFFECT(parameters.swapEffect);
    native.hDeviceWindow = reinterpret_cast<HWND>(parameters.deviceWindow);
    native.Windowed = parameters.windowed;
    native.EnableAutoDepthStencil = parameters.enableAutoDepthStencil;
    native.AutoDepthStencilFormat = D3DFORMAT(parameters.autoDepthStencilFormat);
    native.Flags = parameters.flags;
    native.FullScreen_RefreshRateInHz = parameters.refreshRate;
    native.PresentationInterval = parameters.presentationInterval;
    return native;
}

ZRDirect3DPresentParameters fromNative(const D3DPRESENT_PARAMETERS &native)
{
    ZRDirect3DPresentParameters parameters;
    parameters.backBufferWidth = native.BackBufferWidth;
    parameters.backBufferHeight = native.BackBufferHeight;
    parameters.backBufferFormat = native.BackBufferFormat;
    parameters.backBufferCount = native.BackBufferCount;
    parameters.multiSampleType = native.MultiSampleType;
    parameters.multiSampleQuality = native.MultiSampleQuality;
    parameters.swapEffect = native.SwapEffect;
    parameters.deviceWindow = reinterpret_cast<ZRDirect3DWindow>(native.hDeviceWindow);
    parameters.windowed = native.Windowed != FALSE;
    parameters.enableAutoDepthStencil = native.EnableAutoDepthStencil != FALSE;
    parameters.autoDepthStencilFormat = native.AutoDepthStencilFormat;
    parameters.flags = native.Flags;
    parameters.refreshRate = native.FullScreen_RefreshRateInHz;
    parameters.presentationInterval = native.PresentationInterval;
    return parameters;
}

// The rectangle in Direct3D's form, or null for the whole surface.
class NativeRect
{
public:
    explicit NativeRect(const QRect *rect) : whole(!rect)
    {
        if (rect) {
            native = {rect->x(), rect->y(), rect->x() + rect->width(), rect->y() + rect->height()};
        }
    }

    const RECT *get() const { return whole ? nullptr : &native; }

private:
    RECT native = {};
    bool whole;
};

class Surface : public Wrapper<ZRDirect3DSurface, IDirect3DSurface9>
{
public:
    using Wrapper::Wrapper;

    int lockRect(ZRDirect3DLockedRect *rect, quint32 flags) override
    {
        D3DLOCKED_RECT locked = {};
        const HRESULT result = native->LockRect(&locked, nullptr, flags);
        *rect = {locked.Pitch, static_cast<quint8 *>(locked.pBits)};
        return result;
    }

    int unlockRect() override { return native->UnlockRect(); }

    int getDevice(ZRDirect3DDevice **device) override;

    int getDesc(ZRDirect3DSurfaceDesc *desc) override
    {
        D3DSURFACE_DESC surface = {};
        const HRESULT result = native->GetDesc(&surface);
        *desc = {quint32(surface.Format), surface.Width, surface.Height};
        return result;
    }

    void setColours(const ZRVideoColours &) override { }
};

IDirect3DSurface9 *nativeOf(ZRDirect3DSurface *surface)
{
    return static_cast<Surface *>(surface)->native;
}

class SwapChain : public Wrapper<ZRDirect3DSwapChain, IDirect3DSwapChain9>
{
public:
    using Wrapper::Wrapper;

    int getPresentParameters(ZRDirect3DPresentParameters *parameters) override
    {
        D3DPRESENT_PARAMETERS present = {};
        const HRESULT result = native->GetPresentParameters(&present);
        *parameters = fromNative(present);
        return result;
    }

    int getBackBuffer(unsigned index, int type, ZRDirect3DSurface **surface) override
    {
        IDirect3DSurface9 *buffer = nullptr;
        const HRESULT result = native->GetBackBuffer(index, D3DBACKBUFFER_TYPE(type), &buffer);
        return handOut<Surface>(result, buffer, surface);
    }

    int present() override { return native->Present(nullptr, nullptr, nullptr, nullptr, 0); }
};

class Device : public Wrapper<ZRDirect3DDevice, IDirect3DDevice9>
{
public:
    using Wrapper::Wrapper;

    int createOffscreenPlainSurface(unsigned width, unsigned height, quint32 format, int pool,
        ZRDirect3DSurface **surface) override
    {
        IDirect3DSurface9 *plain = nullptr;
        const HRESULT result = native->CreateOffscreenPlainSurface(
            width, height, D3DFORMAT(format), D3DPOOL(pool), &plain, nullptr);
        return handOut<Surface>(result, plain, surface);
    }

    int getSwapChain(unsigned index, ZRDirect3DSwapChain **swapChain) override
    {
        IDirect3DSwapChain9 *chain = nullptr;
        const HRESULT result = native->GetSwapChain(index, &chain);
        return handOut<SwapChain>(result, chain, swapChain);
    }

    int createAdditionalSwapChain(
        ZRDirect3DPresentParameters *parameters, ZRDirect3DSwapChain **swapChain) override
    {
        D3DPRESENT_PARAMETERS present = toNative(*parameters);
        IDirect3DSwapChain9 *chain = nullptr;
        const HRESULT result = native->CreateAdditionalSwapChain(&present, &chain);
        *parameters = fromNative(present);
        return handOut<SwapChain>(result, chain, swapChain);
    }

    int clear(quint32 flags, quint32 colour, float depth, quint32 stencil) override
    {
        return native->Clear(0, nullptr, flags, colour, depth, stencil);
    }

    int beginScene() override { return native->BeginScene(); }
    int endScene() override { return native->EndScene(); }
    int present() override { return native->Present(nullptr, nullptr, nullptr, nullptr); }

    int getBackBuffer(
        unsigned swapChain, unsigned index, int type, ZRDirect3DSurface **surface) override
    {
        IDirect3DSurface9 *buffer = nullptr;
        const HRESULT result =
            native->GetBackBuffer(swapChain, index, D3DBACKBUFFER_TYPE(type), &buffer);
        return handOut<Surface>(result, buffer, surface);
    }

    int setRenderTarget(unsigned index, ZRDirect3DSurface *surface) override
    {
        return native->SetRenderTarget(index, nativeOf(surface));
    }

    int stretchRect(ZRDirect3DSurface *source, const QRect *sourceRect, ZRDirect3DSurface *target,
        const QRect *targetRect, int filter) override
    {
        return native->StretchRect(nativeOf(source), NativeRect(sourceRect).get(), nativeOf(target),
            NativeRect(targetRect).get(), D3DTEXTUREFILTERTYPE(filter));
    }
};

int Surface::getDevice(ZRDirect3DDevice **device)
{
    IDirect3DDevice9 *owner = nullptr;
    const HRESULT result = native->GetDevice(&owner);
    return handOut<Device>(result, owner, device);
}

class Direct3D : public Wrapper<ZRDirect3D, IDirect3D9>
{
public:
    using Wrapper::Wrapper;

    int getDeviceCaps(unsigned adapter, int deviceType, ZRDirect3DCaps *caps) override
    {
        D3DCAPS9 device = {};
        const HRESULT result = native->GetDeviceCaps(adapter, D3DDEVTYPE(deviceType), &device);
        caps->devCaps = device.DevCaps;
        return result;
    }

    int getAdapterDisplayMode(unsigned adapter, ZRDirect3DDisplayMode *mode) override
    {
        D3DDISPLAYMODE display = {};
        const HRESULT result = native->GetAdapterDisplayMode(adapter, &display);
        *mode = {display.Width, display.Height, quint32(display.Format)};
        return result;
    }

    int createDevice(unsigned adapter, int deviceType, ZRDirect3DWindow window, quint32 flags,
        ZRDirect3DPresentParameters *parameters, ZRDirect3DDevice **device) override
    {
        D3DPRESENT_PARAMETERS present = toNative(*parameters);
        IDirect3DDevice9 *created = nullptr;
        const HRESULT result = native->CreateDevice(adapter, D3DDEVTYPE(deviceType),
            reinterpret_cast<HWND>(window), flags, &present, &created);
        *parameters = fromNative(present);
        return handOut<Device>(result, created, device);
    }
};

// Has its window to itself once that is presented into: Qt's own painting, done in memory and
// copied to the window, would cover the picture each time.
class Display : public QWidget
{
public:
    Display(QWidget *view, std::function<bool()> redraw) : QWidget(view), redraw(std::move(redraw))
    { }

    ZRDirect3DWindow presentedWindow()
    {
        parent()->installEventFilter(this);
        for (const auto attribute :
            {Qt::WA_PaintOnScreen, Qt::WA_NoSystemBackground, Qt::WA_OpaquePaintEvent}) {
            setAttribute(attribute);
        }
        return winId();
    }

    // None: nothing but Direct3D paints here, and only then is WA_PaintOnScreen accepted.
    QPaintEngine *paintEngine() const override { return nullptr; }

    // A repaint of the view leaves out what has its window to itself.
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            update();
        }
        return QWidget::eventFilter(watched, event);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        if (!internalWinId() || redraw()) {
            return;
        }
        const HWND window = reinterpret_cast<HWND>(internalWinId());
        const HDC context = GetDC(window);
        RECT whole;
        GetClientRect(window, &whole);
        FillRect(context, &whole, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
        ReleaseDC(window, context);
    }

private:
    const std::function<bool()> redraw;
};

class Direct3DModule : public ZRDirect3DModule
{
public:
    QWidget *createDisplay(QWidget *view, std::function<bool()> redraw) override
    {
        return new Display(view, std::move(redraw));
    }

    ZRDirect3DWindow windowHandle(QWidget *widget) override
    {
        return static_cast<Display *>(widget)->presentedWindow();
    }

    ZRDirect3D *create(unsigned sdkVersion) override
    {
        IDirect3D9 *direct3d = Direct3DCreate9(sdkVersion);
        return direct3d ? new Direct3D(direct3d) : nullptr;
    }

    ZRDirect3DSurface *hardwareSurface(void *surface) override
    {
        auto *picture = static_cast<IDirect3DSurface9 *>(surface);
        if (!picture) {
            return nullptr;
        }
        picture->AddRef();
        return new Surface(picture);
    }
};

}

ZRDirect3DModule &ZRDirect3DModule::system()
{
    static Direct3DModule module;
    return module;
}
