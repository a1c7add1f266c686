#define CINTERFACE // tables of functions in place of classes with over a hundred operations
#include "FakeDirect3D9.h"

#include <d3d9.h>

#include <algorithm>

namespace {

using Object = FakeDirect3D9::Object;

FakeDirect3D9 *current = nullptr;

// A decoder's own chain, all of whose parameters differ from those that the view sets.
const D3DPRESENT_PARAMETERS ownParameters = {640, 480, D3DFORMAT(21), 3, D3DMULTISAMPLE_TYPE(4), 5,
    D3DSWAPEFFECT(6), reinterpret_cast<HWND>(0x1234), FALSE, TRUE, D3DFORMAT(7), 8, 9, 10};

const struct {
    const char *device;
    const char *picture;
} decoders[] = {{"decoderDevice", "picture"}, {"nextDevice", "nextPicture"}};

const char *deviceOf(const void *picture)
{
    const bool first =
        qstrcmp(static_cast<const Object *>(picture)->name, decoders[0].picture) == 0;
    return decoders[first ? 0 : 1].device;
}

QString number(quint32 value)
{
    return QString::number(value);
}

QString hex(quint32 value)
{
    return QStringLiteral("0x%1").arg(value, 0, 16);
}

QString list(const QStringList &arguments)
{
    return arguments.join(QStringLiteral(", "));
}

// The name of an object, or of what is no object.
QString nameOf(const void *pointer)
{
    return pointer ? static_cast<const Object *>(pointer)->name : QStringLiteral("null");
}

QString nullness(const void *pointer)
{
    return pointer ? QStringLiteral("something") : QStringLiteral("null");
}

QString text(HWND window)
{
    if (!window) {
        return QStringLiteral("none");
    }
    return reinterpret_cast<quintptr>(window) == current->window()
        ? QStringLiteral("window")
        : QStringLiteral("another window");
}

QString text(const RECT *rect)
{
    return rect ? QStringLiteral("(%1 %2 %3 %4)")
                      .arg(rect->left)
                      .arg(rect->top)
                      .arg(rect->right)
                      .arg(rect->bottom)
                : QStringLiteral("null");
}

QString text(const D3DPRESENT_PARAMETERS &p)
{
    return '{'
        + list({QStringLiteral("%1x%2 %3 %4")
                    .arg(p.BackBufferWidth)
                    .arg(p.BackBufferHeight)
                    .arg(p.BackBufferFormat)
                    .arg(p.BackBufferCount),
            QStringLiteral("%1 %2").arg(p.MultiSampleType).arg(p.MultiSampleQuality),
            number(p.SwapEffect), text(p.hDeviceWindow), number(quint32(p.Windowed)),
            QStringLiteral("%1 %2").arg(p.EnableAutoDepthStencil).arg(p.AutoDepthStencilFormat),
            hex(p.Flags), number(p.FullScreen_RefreshRateInHz), hex(p.PresentationInterval)})
        + '}';
}

HRESULT call(const void *self, const char *operation, const QStringList &arguments = {})
{
    return current->call(static_cast<const Object *>(self), operation, list(arguments));
}

// Presenting makes the view's window red.
HRESULT present(HRESULT result)
{
    const HWND window = reinterpret_cast<HWND>(current->window());
    const HDC context = GetDC(window);
    RECT whole;
    GetClientRect(window, &whole);
    const HBRUSH red = CreateSolidBrush(RGB(255, 0, 0));
    FillRect(context, &whole, red);
    DeleteObject(red);
    ReleaseDC(window, context);
    return result;
}

// The result of a call that hands out an object.
template <class Native>
HRESULT handOut(HRESULT result, Native **object, const void *table, const char *name)
{
    if (SUCCEEDED(result)) {
        *object = reinterpret_cast<Native *>(current->make(table, name));
    }
    return result;
}

template <class Native> ULONG WINAPI addRef(Native *self)
{
    call(self, "AddRef");
    return ULONG(++reinterpret_cast<Object *>(self)->references);
}

template <class Native> ULONG WINAPI release(Native *self)
{
    call(self, "Release");
    return ULONG(--reinterpret_cast<Object *>(self)->references);
}

HRESULT WINAPI unexpected(const void *self)
{
    return call(self, "unexpected operation");
}

// A table whose operations are all unexpected but those of reference counting.
template <class Native, class Table> Table basicTable()
{
    Table table;
    auto *operations = reinterpret_cast<void **>(&table);
    std::fill_n(
        operations, sizeof table / sizeof *operations, reinterpret_cast<void *>(unexpected));
    table.AddRef = addRef<Native>;
    table.Release = release<Native>;
    return table;
}

extern const IDirect3DDevice9Vtbl deviceTable;

const IDirect3DSurface9Vtbl surfaceTable = [] {
    auto table = basicTable<IDirect3DSurface9, IDirect3DSurface9Vtbl>();
    table.GetDevice = [](IDirect3DSurface9 *self, IDirect3DDevice9 **device) -> HRESULT {
        return handOut(call(self, "GetDevice"), device, &deviceTable, deviceOf(self));
    };
    table.LockRect = [](IDirect3DSurface9 *self, D3DLOCKED_RECT *locked, const RECT *rect,
                         DWORD flags) -> HRESULT {
        *locked = {current->pitch, current->memory.data()};
        return call(self, "LockRect", {text(rect), hex(flags)});
    };
    table.UnlockRect = [](IDirect3DSurface9 *self) -> HRESULT { return call(self, "UnlockRect"); };
    return table;
}();

const IDirect3DSwapChain9Vtbl chainTable = [] {
    auto table = basicTable<IDirect3DSwapChain9, IDirect3DSwapChain9Vtbl>();
    table.Present = [](IDirect3DSwapChain9 *self, const RECT *source, const RECT *target,
                        HWND window, const RGNDATA *dirty, DWORD flags) -> HRESULT {
        return present(call(self, "Present",
            {text(source), text(target), text(window), nullness(dirty), number(flags)}));
    };
    table.GetBackBuffer = [](IDirect3DSwapChain9 *self, UINT index, D3DBACKBUFFER_TYPE type,
                              IDirect3DSurface9 **buffer) -> HRESULT {
        const HRESULT result = call(self, "GetBackBuffer", {number(index), number(type)});
        return handOut(result, buffer, &surfaceTable, "backBuffer");
    };
    table.GetPresentParameters = [](IDirect3DSwapChain9 *self,
                                     D3DPRESENT_PARAMETERS *parameters) -> HRESULT {
        *parameters = ownParameters;
        return call(self, "GetPresentParameters");
    };
    return table;
}();

const IDirect3DDevice9Vtbl deviceTable = [] {
    using Device = IDirect3DDevice9;
    auto table = basicTable<Device, IDirect3DDevice9Vtbl>();
    table.CreateOffscreenPlainSurface = [](Device *self, UINT width, UINT height, D3DFORMAT format,
                                            D3DPOOL pool, IDirect3DSurface9 **surface,
                                            HANDLE *shared) -> HRESULT {
        const HRESULT result = call(self, "CreateOffscreenPlainSurface",
            {number(width), number(height), hex(format), number(pool), nullness(shared)});
        return handOut(result, surface, &surfaceTable, "surface");
    };
    table.GetSwapChain = [](Device *self, UINT index, IDirect3DSwapChain9 **chain) -> HRESULT {
        const HRESULT result = call(self, "GetSwapChain", {number(index)});
        return handOut(result, chain, &chainTable, "ownChain");
    };
    table.CreateAdditionalSwapChain = [](Device *self, D3DPRESENT_PARAMETERS *parameters,
                                          IDirect3DSwapChain9 **chain) -> HRESULT {
        const HRESULT result = call(self, "CreateAdditionalSwapChain", {text(*parameters)});
        return handOut(result, chain, &chainTable, "chain");
    };
    table.Clear = [](Device *self, DWORD count, const D3DRECT *rects, DWORD flags, D3DCOLOR colour,
                      float depth, DWORD stencil) -> HRESULT {
        return call(self, "Clear",
            {number(count), nullness(rects), number(flags), hex(colour),
                QString::number(double(depth)), number(stencil)});
    };
    table.BeginScene = [](Device *self) -> HRESULT { return call(self, "BeginScene"); };
    table.EndScene = [](Device *self) -> HRESULT { return call(self, "EndScene"); };
    table.Present = [](Device *self, const RECT *source, const RECT *target, HWND window,
                        const RGNDATA *dirty) -> HRESULT {
        return present(
            call(self, "Present", {text(source), text(target), text(window), nullness(dirty)}));
    };
    table.GetBackBuffer = [](Device *self, UINT chain, UINT index, D3DBACKBUFFER_TYPE type,
                              IDirect3DSurface9 **buffer) -> HRESULT {
        const HRESULT result =
            call(self, "GetBackBuffer", {number(chain), number(index), number(type)});
        return handOut(result, buffer, &surfaceTable, "backBuffer");
    };
    table.SetRenderTarget = [](Device *self, DWORD index, IDirect3DSurface9 *surface) -> HRESULT {
        return call(self, "SetRenderTarget", {number(index), nameOf(surface)});
    };
    table.StretchRect = [](Device *self, IDirect3DSurface9 *source, const RECT *sourceRect,
                            IDirect3DSurface9 *target, const RECT *targetRect,
                            D3DTEXTUREFILTERTYPE filter) -> HRESULT {
        return call(self, "StretchRect",
            {nameOf(source), text(sourceRect), nameOf(target), text(targetRect), number(filter)});
    };
    return table;
}();

const IDirect3D9Vtbl direct3dTable = [] {
    auto table = basicTable<IDirect3D9, IDirect3D9Vtbl>();
    table.GetDeviceCaps = [](IDirect3D9 *self, UINT adapter, D3DDEVTYPE type,
                              D3DCAPS9 *caps) -> HRESULT {
        caps->DevCaps = current->devCaps;
        return call(self, "GetDeviceCaps", {number(adapter), number(type)});
    };
    table.GetAdapterDisplayMode = [](IDirect3D9 *self, UINT adapter,
                                      D3DDISPLAYMODE *mode) -> HRESULT {
        *mode = {1920, 1080, 60, D3DFMT_X8R8G8B8};
        return call(self, "GetAdapterDisplayMode", {number(adapter)});
    };
    table.CreateDevice = [](IDirect3D9 *self, UINT adapter, D3DDEVTYPE type, HWND window,
                             DWORD flags, D3DPRESENT_PARAMETERS *parameters,
                             IDirect3DDevice9 **device) -> HRESULT {
        const HRESULT result = call(self, "CreateDevice",
            {number(adapter), number(type), text(window), hex(flags), text(*parameters)});
        return handOut(result, device, &deviceTable, "device");
    };
    return table;
}();

}

// In place of the library's, by the linker's --wrap.
extern "C" IDirect3D9 *WINAPI __wrap_Direct3DCreate9(UINT sdkVersion)
{
    IDirect3D9 *direct3d = nullptr;
    handOut(HRESULT(current->call(QStringLiteral("Direct3DCreate9"), number(sdkVersion))),
        &direct3d, &direct3dTable, "direct3d");
    return direct3d;
}

FakeDirect3D9::FakeDirect3D9()
{
    current = this;
}

FakeDirect3D9::~FakeDirect3D9()
{
    current = nullptr;
}

void *FakeDirect3D9::picture(int decoder)
{
    Object *&lent = lentPictures[decoder];
    if (!lent) {
        make(&deviceTable, decoders[decoder].device);
        lent = make(&surfaceTable, decoders[decoder].picture);
    }
    return lent;
}

QStringList FakeDirect3D9::alive() const
{
    QStringList names;
    for (const Object &object : objects) {
        if (object.references != 0) {
            names << QStringLiteral("%1 %2").arg(object.name).arg(object.references);
        }
    }
    return names;
}

// One of that name which is still alive gets another reference.
FakeDirect3D9::Object *FakeDirect3D9::make(const void *table, const char *name)
{
    const auto living = std::find_if(objects.begin(), objects.end(), [&](const Object &object) {
        return object.references > 0 && qstrcmp(object.name, name) == 0;
    });
    if (living != objects.end()) {
        ++living->references;
        return &*living;
    }
    objects.push_back({table, name, 1});
    return &objects.back();
}

long FakeDirect3D9::call(const Object *object, const char *operation, const QString &arguments)
{
    const QString state = object->references > 0 ? QString() : QStringLiteral("released ");
    return call(state + object->name + '.' + operation, arguments);
}

long FakeDirect3D9::call(const QString &name, const QString &arguments)
{
    calls << name + '(' + arguments + ')';
    if (onCall) {
        onCall(name);
    }
    return failing.contains(name) ? D3DERR_INVALIDCALL : D3D_OK;
}
