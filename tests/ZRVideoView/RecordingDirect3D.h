#pragma once

#include "ZRDirect3D.h"
#include "ZRYuvPicture.h"

#include <QRect>
#include <QSet>
#include <QStringList>

#include <functional>
#include <vector>

// Writes down each call with its arguments, as "device.present()", and can have any of them fail.
// Objects go by the names direct3d, device, surface, backBuffer, chain, ownChain (the chain that
// the device came with) and picture (a hardware frame's surface).
class RecordingDirect3D : public ZRDirect3DModule
{
public:
    // What was called since the last take.
    QStringList take() { return std::exchange(calls, {}); }

    QStringList calls;
    QSet<QString> failing; // as "device.present"
    std::function<void(const QString &)> onCall; // gets "device.present"
    int alive = 0; // objects handed out and not released

    quint32 devCaps = 0x10000;
    ZRDirect3DDisplayMode mode = {1920, 1080, 22};
    ZRDirect3DPresentParameters chainParameters;
    int pitch = 2048;
    std::vector<quint8> memory = std::vector<quint8>(4 << 20); // of the surface

    static QString text(const ZRDirect3DPresentParameters &p)
    {
        return QStringLiteral("{%1x%2 %3 %4, %5 %6, %7, %8, %9, %10 %11, 0x%12, %13, 0x%14}")
            .arg(p.backBufferWidth)
            .arg(p.backBufferHeight)
            .arg(p.backBufferFormat)
            .arg(p.backBufferCount)
            .arg(p.multiSampleType)
            .arg(p.multiSampleQuality)
            .arg(p.swapEffect)
            .arg(p.deviceWindow ? QStringLiteral("window") : QStringLiteral("none"))
            .arg(p.windowed)
            .arg(p.enableAutoDepthStencil)
            .arg(p.autoDepthStencilFormat)
            .arg(p.flags, 0, 16)
            .arg(p.refreshRate)
            .arg(p.presentationInterval, 0, 16);
    }

    ZRDirect3DWindow windowHandle(QWidget *widget) override
    {
        window = reinterpret_cast<ZRDirect3DWindow>(widget);
        call("windowHandle");
        return window;
    }

    ZRDirect3D *create(unsigned sdkVersion) override
    {
        return call("create", QString::number(sdkVersion)) < 0 ? nullptr : new Direct3D(this);
    }

    ZRDirect3DSurface *hardwareSurface(void *surface) override
    {
        const QString id = QString::number(reinterpret_cast<quintptr>(surface));
        const bool failed = call("hardwareSurface", id) < 0;
        return failed || !surface ? nullptr : new Surface(this, "picture");
    }

    ZRDirect3DWindow window = 0;

private:
    int call(const QString &name, const QString &arguments = {})
    {
        calls << name + '(' + arguments + ')';
        if (onCall) {
            onCall(name);
        }
        return failing.contains(name) ? -1 : 0;
    }

    static QString name(ZRDirect3DSurface *surface)
    {
        return surface ? static_cast<Surface *>(surface)->name : QStringLiteral("null");
    }

    static QString text(const QRect *rect)
    {
        return rect ? QStringLiteral("%1 %2 %3x%4")
                          .arg(rect->x())
                          .arg(rect->y())
                          .arg(rect->width())
                          .arg(rect->height())
                    : QStringLiteral("null");
    }

    template <class Interface> class Object : public Interface
    {
    public:
        Object(RecordingDirect3D *owner, const char *name) : owner(owner), name(name)
        {
            ++owner->alive;
        }

        void release() override
        {
            call("release");
            --owner->alive;
            delete this;
        }

        int call(const char *operation, const QString &arguments = {})
        {
            return owner->call(name + '.' + operation, arguments);
        }

        // The result of a call that hands out an object.
        template <class Made, class Wanted>
        int handOut(int result, const char *made, Wanted **object)
        {
            if (result >= 0) {
                *object = new Made(owner, made);
            }
            return result;
        }

        RecordingDirect3D *const owner;
        const QString name;
    };

    class Surface : public Object<ZRDirect3DSurface>
    {
    public:
        using Object::Object;

        int lockRect(ZRDirect3DLockedRect *rect, quint32 flags) override
        {
            *rect = {owner->pitch, owner->memory.data()};
            return call("lockRect", QStringLiteral("0x%1").arg(flags, 0, 16));
        }
        int unlockRect() override { return call("unlockRect"); }
        int getDevice(ZRDirect3DDevice **device) override
        {
            return handOut<Device>(call("getDevice"), "device", device);
        }
        int getDesc(ZRDirect3DSurfaceDesc *) override { return call("getDesc"); }
        void setColours(const ZRVideoColours &colours) override
        {
            call("setColours", colours.fullRange ? "full" : "limited");
        }
    };

    class SwapChain : public Object<ZRDirect3DSwapChain>
    {
    public:
        using Object::Object;

        int getPresentParameters(ZRDirect3DPresentParameters *parameters) override
        {
            *parameters = owner->chainParameters;
            return call("getPresentParameters");
        }
        int getBackBuffer(unsigned index, int type, ZRDirect3DSurface **surface) override
        {
            const int result = call("getBackBuffer", QStringLiteral("%1, %2").arg(index).arg(type));
            return handOut<Surface>(result, "backBuffer", surface);
        }
        int present() override { return call("present"); }
    };

    class Device : public Object<ZRDirect3DDevice>
    {
    public:
        using Object::Object;

        int createOffscreenPlainSurface(unsigned width, unsigned height, quint32 format, int pool,
            ZRDirect3DSurface **surface) override
        {
            const int result = call("createOffscreenPlainSurface",
                QStringLiteral("%1, %2, 0x%3, %4")
                    .arg(width)
                    .arg(height)
                    .arg(format, 0, 16)
                    .arg(pool));
            return handOut<Surface>(result, "surface", surface);
        }
        int getSwapChain(unsigned index, ZRDirect3DSwapChain **chain) override
        {
            return handOut<SwapChain>(
                call("getSwapChain", QString::number(index)), "ownChain", chain);
        }
        int createAdditionalSwapChain(
            ZRDirect3DPresentParameters *parameters, ZRDirect3DSwapChain **chain) override
        {
            const int result =
                call("createAdditionalSwapChain", RecordingDirect3D::text(*parameters));
            return handOut<SwapChain>(result, "chain", chain);
        }
        int clear(quint32 flags, quint32 colour, float depth, quint32 stencil) override
        {
            return call("clear",
                QStringLiteral("%1, 0x%2, %3, %4")
                    .arg(flags)
                    .arg(colour, 0, 16)
                    .arg(double(depth))
                    .arg(stencil));
        }
        int beginScene() override { return call("beginScene"); }
        int endScene() override { return call("endScene"); }
        int present() override { return call("present"); }
        int getBackBuffer(
            unsigned swapChain, unsigned index, int type, ZRDirect3DSurface **surface) override
        {
            const int result = call(
                "getBackBuffer", QStringLiteral("%1, %2, %3").arg(swapChain).arg(index).arg(type));
            return handOut<Surface>(result, "backBuffer", surface);
        }
        int setRenderTarget(unsigned index, ZRDirect3DSurface *surface) override
        {
            return call("setRenderTarget",
                QStringLiteral("%1, %2").arg(index).arg(RecordingDirect3D::name(surface)));
        }
        int stretchRect(ZRDirect3DSurface *source, const QRect *sourceRect,
            ZRDirect3DSurface *target, const QRect *targetRect, int filter) override
        {
            return call("stretchRect",
                QStringLiteral("%1, %2, %3, %4, %5")
                    .arg(RecordingDirect3D::name(source), RecordingDirect3D::text(sourceRect),
                        RecordingDirect3D::name(target), RecordingDirect3D::text(targetRect))
                    .arg(filter));
        }
    };

    class Direct3D : public Object<ZRDirect3D>
    {
    public:
        explicit Direct3D(RecordingDirect3D *owner) : Object(owner, "direct3d") { }

        int getDeviceCaps(unsigned adapter, int deviceType, ZRDirect3DCaps *caps) override
        {
            caps->devCaps = owner->devCaps;
            return call("getDeviceCaps", QStringLiteral("%1, %2").arg(adapter).arg(deviceType));
        }
        int getAdapterDisplayMode(unsigned adapter, ZRDirect3DDisplayMode *mode) override
        {
            *mode = owner->mode;
            return call("getAdapterDisplayMode", QString::number(adapter));
        }
        int createDevice(unsigned adapter, int deviceType, ZRDirect3DWindow window, quint32 flags,
            ZRDirect3DPresentParameters *parameters, ZRDirect3DDevice **device) override
        {
            const bool known = window == owner->window && parameters->deviceWindow == window;
            const int result = call("createDevice",
                QStringLiteral("%1, %2, %3, 0x%4, %5")
                    .arg(adapter)
                    .arg(deviceType)
                    .arg(known ? QStringLiteral("window") : QStringLiteral("another window"))
                    .arg(flags, 0, 16)
                    .arg(RecordingDirect3D::text(*parameters)));
            return handOut<Device>(result, "device", device);
        }
    };
};
