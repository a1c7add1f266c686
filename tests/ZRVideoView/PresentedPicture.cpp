#define CINTERFACE // for tables that can be copied and changed
#include "PresentedPicture.h"

#include <d3d9.h>

#include <utility>

extern "C" IDirect3D9 *WINAPI __real_Direct3DCreate9(UINT sdkVersion);

namespace {

QImage picture;
bool isRead = false;
bool unaided = false;

IDirect3D9Vtbl direct3dTable;
decltype(IDirect3D9Vtbl::CreateDevice) systemCreateDevice;
IDirect3DDevice9Vtbl deviceTable;
decltype(IDirect3DDevice9Vtbl::Present) systemPresent;
decltype(IDirect3DDevice9Vtbl::StretchRect) systemStretchRect;

D3DSURFACE_DESC describe(IDirect3DSurface9 *surface)
{
    D3DSURFACE_DESC desc = {};
    surface->lpVtbl->GetDesc(surface, &desc);
    return desc;
}

QImage copyOf(IDirect3DDevice9 *device, IDirect3DSurface9 *target)
{
    const D3DSURFACE_DESC desc = describe(target);
    IDirect3DSurface9 *memory = nullptr;
    device->lpVtbl->CreateOffscreenPlainSurface(
        device, desc.Width, desc.Height, desc.Format, D3DPOOL_SYSTEMMEM, &memory, nullptr);
    if (!memory) {
        return {};
    }
    QImage image;
    D3DLOCKED_RECT locked = {};
    if (SUCCEEDED(device->lpVtbl->GetRenderTargetData(device, target, memory))
        && SUCCEEDED(memory->lpVtbl->LockRect(memory, &locked, nullptr, D3DLOCK_READONLY))) {
        const auto *bits = static_cast<const uchar *>(locked.pBits);
        image = QImage(bits, int(desc.Width), int(desc.Height), locked.Pitch, QImage::Format_RGB32)
                    .copy();
        memory->lpVtbl->UnlockRect(memory);
    }
    memory->lpVtbl->Release(memory);
    return image;
}

HRESULT WINAPI present(IDirect3DDevice9 *device, const RECT *source, const RECT *target,
    HWND window, const RGNDATA *dirty)
{
    IDirect3DSurface9 *buffer = nullptr;
    if (isRead) {
        device->lpVtbl->GetBackBuffer(device, 0, 0, D3DBACKBUFFER_TYPE_MONO, &buffer);
    }
    if (buffer) {
        picture = copyOf(device, buffer);
        buffer->lpVtbl->Release(buffer);
    }
    return systemPresent(device, source, target, window, dirty);
}

bool fillsItsWindow(IDirect3DDevice9 *device, const D3DSURFACE_DESC &target)
{
    D3DDEVICE_CREATION_PARAMETERS made = {};
    RECT client = {};
    device->lpVtbl->GetCreationParameters(device, &made);
    GetClientRect(made.hFocusWindow, &client);
    return client.right >= LONG(target.Width) && client.bottom >= LONG(target.Height);
}

// Wine converts YUV only as far as the window reaches when the target is a back buffer that is
// larger than its window. By way of a target of its own all of it arrives.
HRESULT WINAPI stretchRect(IDirect3DDevice9 *device, IDirect3DSurface9 *source,
    const RECT *sourceRect, IDirect3DSurface9 *target, const RECT *targetRect,
    D3DTEXTUREFILTERTYPE filter)
{
    const D3DSURFACE_DESC desc = describe(target);
    unaided = fillsItsWindow(device, desc);
    if (unaided) {
        return systemStretchRect(device, source, sourceRect, target, targetRect, filter);
    }
    IDirect3DSurface9 *middle = nullptr;
    device->lpVtbl->CreateRenderTarget(device, desc.Width, desc.Height, desc.Format,
        D3DMULTISAMPLE_NONE, 0, FALSE, &middle, nullptr);
    if (!middle) {
        return D3DERR_INVALIDCALL;
    }
    HRESULT result = systemStretchRect(device, source, sourceRect, middle, targetRect, filter);
    if (SUCCEEDED(result)) {
        result = systemStretchRect(device, middle, targetRect, target, targetRect, D3DTEXF_NONE);
    }
    middle->lpVtbl->Release(middle);
    return result;
}

// Has the object use that table, a copy of its own.
template <class Native, class Table> void retable(Native *native, Table *table)
{
    *table = *native->lpVtbl;
    native->lpVtbl = table;
}

HRESULT WINAPI createDevice(IDirect3D9 *direct3d, UINT adapter, D3DDEVTYPE type, HWND window,
    DWORD flags, D3DPRESENT_PARAMETERS *parameters, IDirect3DDevice9 **device)
{
    const HRESULT result =
        systemCreateDevice(direct3d, adapter, type, window, flags, parameters, device);
    if (SUCCEEDED(result)) {
        retable(*device, &deviceTable);
        systemPresent = std::exchange(deviceTable.Present, present);
        systemStretchRect = std::exchange(deviceTable.StretchRect, stretchRect);
    }
    return result;
}

}

extern "C" IDirect3D9 *WINAPI __wrap_Direct3DCreate9(UINT sdkVersion)
{
    IDirect3D9 *direct3d = __real_Direct3DCreate9(sdkVersion);
    if (direct3d) {
        retable(direct3d, &direct3dTable);
        systemCreateDevice = std::exchange(direct3dTable.CreateDevice, createDevice);
    }
    return direct3d;
}

QImage PresentedPicture::last()
{
    return picture;
}

bool PresentedPicture::isUnaided()
{
    return unaided;
}

void PresentedPicture::forget()
{
    picture = QImage();
    isRead = true;
}
