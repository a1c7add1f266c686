#include "ZRMemoryDirect3D.h"
#include "ZRYuvPicture.h"

#include <QGuiApplication>
#include <QScreen>

extern "C" {
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cstring>

using namespace ZRDirect3DValue;

namespace {

constexpr int ok = 0;
constexpr int failed = -1;

constexpr int maxSide = 16384; // as of Direct3D's own surfaces
constexpr int pitchUnit = 128; // keeps the rows of all planes apart by whole vectors
constexpr int tail = 64; // vector code may read that far behind a plane

// A YV12 picture as it is written through LockRect: rows of Y, then V, then U, the chroma rows at
// half the pitch.
class Memory
{
public:
    static std::shared_ptr<Memory> create(int width, int height)
    {
        std::shared_ptr<Memory> memory(new Memory(width, height));
        return memory->bytes ? memory : nullptr;
    }
    ~Memory() { av_free(bytes); }
    Q_DISABLE_COPY(Memory)

    // Writers place V and U by whole divisions of the height. Where these round down, the chroma
    // planes come out one row or column short, or one over the other's end: what is missing is
    // made from its neighbour.
    void complete()
    {
        const int vRows = std::min(height / 2, height / 4 * 2);
        const int uRows = height / 2;
        quint8 *written = bytes + (qptrdiff(height) + height / 4) * pitch;
        if (written != plane(1)) {
            std::memmove(plane(1), written, size_t(uRows) * chromaPitch());
        }
        completePlane(plane(2), vRows);
        completePlane(plane(1), uRows);
    }

    ZRYuvPicture picture() const
    {
        ZRYuvPicture picture;
        for (int i = 0; i < 3; ++i) {
            picture.planes[i] = plane(i);
            picture.strides[i] = i == 0 ? pitch : chromaPitch();
        }
        picture.width = width;
        picture.height = height;
        picture.colours = colours;
        return picture;
    }

    const int width;
    const int height;
    const int pitch;
    quint8 *const bytes;
    ZRVideoColours colours;

private:
    Memory(int width, int height) :
        width(width),
        height(height),
        pitch((width + pitchUnit - 1) / pitchUnit * pitchUnit),
        bytes(static_cast<quint8 *>(av_malloc(size_t(pitch) * (height + chromaRows()) + tail)))
    {
        if (bytes) {
            std::memset(bytes, colours.black(), size_t(pitch) * height);
            std::memset(plane(2), neutral, size_t(pitch) * chromaRows() + tail);
        }
    }

    int chromaPitch() const { return pitch / 2; }
    int chromaRows() const { return (height + 1) / 2; }

    quint8 *plane(int number) const
    {
        const qptrdiff rowsBefore[] = {0, chromaRows(), 0};
        return bytes + (number == 0 ? 0 : qptrdiff(height) * pitch)
            + rowsBefore[number] * chromaPitch();
    }

    void completePlane(quint8 *plane, int rows) const
    {
        const int columns = width / 2;
        if (rows == 0 || columns == 0) {
            std::memset(plane, neutral, size_t(chromaRows()) * chromaPitch());
            return;
        }
        if (width % 2 != 0) {
            for (int row = 0; row < rows; ++row) {
                quint8 *end = plane + qptrdiff(row) * chromaPitch() + columns;
                *end = end[-1];
            }
        }
        for (int row = rows; row < chromaRows(); ++row) {
            quint8 *target = plane + qptrdiff(row) * chromaPitch();
            std::memcpy(target, target - chromaPitch(), size_t(chromaPitch()));
        }
    }

    static constexpr int neutral = 128;
};

class Surface : public ZRDirect3DSurface
{
public:
    explicit Surface(std::shared_ptr<Memory> memory) : memory(std::move(memory)) { }

    void release() override { delete this; }

    int lockRect(ZRDirect3DLockedRect *rect, quint32) override
    {
        *rect = {memory->pitch, memory->bytes};
        locked = true;
        return ok;
    }

    int unlockRect() override
    {
        if (!locked) {
            return failed;
        }
        locked = false;
        memory->complete();
        return ok;
    }

    int getDevice(ZRDirect3DDevice **) override { return failed; } // for hardware frames alone

    int getDesc(ZRDirect3DSurfaceDesc *desc) override
    {
        *desc = {formatYV12, quint32(memory->width), quint32(memory->height)};
        return ok;
    }

    void setColours(const ZRVideoColours &colours) override { memory->colours = colours; }

    const std::shared_ptr<Memory> memory;

private:
    bool locked = false;
};

// Stands for what is going to be presented and has no memory of its own.
class BackBuffer : public ZRDirect3DSurface
{
public:
    void release() override { }
    int lockRect(ZRDirect3DLockedRect *, quint32) override { return failed; }
    int unlockRect() override { return failed; }
    int getDevice(ZRDirect3DDevice **) override { return failed; }

    int getDesc(ZRDirect3DSurfaceDesc *desc) override
    {
        *desc = {formatX8R8G8B8, 0, 0};
        return ok;
    }

    void setColours(const ZRVideoColours &) override { }
};

class Device : public ZRDirect3DDevice
{
public:
    explicit Device(std::unique_ptr<ZRVideoPainter> painter) : painter(std::move(painter)) { }

    void release() override { delete this; }

    int createOffscreenPlainSurface(
        unsigned width, unsigned height, quint32 format, int, ZRDirect3DSurface **surface) override
    {
        if (format != formatYV12 || width - 1 >= maxSide || height - 1 >= maxSide) {
            return failed;
        }
        std::shared_ptr<Memory> memory = Memory::create(int(width), int(height));
        if (!memory) {
            return failed;
        }
        *surface = new Surface(std::move(memory));
        return ok;
    }

    int getSwapChain(unsigned, ZRDirect3DSwapChain **) override { return failed; }
    int createAdditionalSwapChain(ZRDirect3DPresentParameters *, ZRDirect3DSwapChain **) override
    {
        return failed;
    }

    int clear(quint32, quint32, float, quint32) override
    {
        drawn = nullptr;
        return ok;
    }

    int beginScene() override { return ok; }
    int endScene() override { return ok; }

    int present() override
    {
        const ZRYuvPicture picture = drawn ? drawn->picture() : ZRYuvPicture();
        painter->show(drawn ? &picture : nullptr);
        shown = drawn;
        return ok;
    }

    int getBackBuffer(unsigned, unsigned, int, ZRDirect3DSurface **surface) override
    {
        *surface = &backBuffer;
        return ok;
    }

    int setRenderTarget(unsigned, ZRDirect3DSurface *) override { return ok; }

    int stretchRect(
        ZRDirect3DSurface *source, const QRect *, ZRDirect3DSurface *, const QRect *, int) override
    {
        ZRDirect3DSurfaceDesc desc;
        source->getDesc(&desc);
        if (desc.format != formatYV12) {
            return failed;
        }
        drawn = static_cast<Surface *>(source)->memory;
        return ok;
    }

private:
    BackBuffer backBuffer;
    std::shared_ptr<Memory> drawn;
    std::shared_ptr<Memory> shown; // the painter reads it until the next Present
    std::unique_ptr<ZRVideoPainter> painter;
};

class Direct3D : public ZRDirect3D
{
public:
    explicit Direct3D(const ZRMemoryDirect3D::PainterFactory &createPainter) :
        createPainter(createPainter)
    { }

    void release() override { delete this; }

    int getDeviceCaps(unsigned, int, ZRDirect3DCaps *caps) override
    {
        *caps = {};
        return ok;
    }

    int getAdapterDisplayMode(unsigned, ZRDirect3DDisplayMode *mode) override
    {
        const QSize size = QGuiApplication::primaryScreen()->size();
        *mode = {quint32(size.width()), quint32(size.height()), formatX8R8G8B8};
        return ok;
    }

    int createDevice(unsigned, int, ZRDirect3DWindow window, quint32, ZRDirect3DPresentParameters *,
        ZRDirect3DDevice **device) override
    {
        std::unique_ptr<ZRVideoPainter> painter =
            createPainter(reinterpret_cast<QWidget *>(window));
        if (!painter) {
            return failed;
        }
        *device = new Device(std::move(painter));
        return ok;
    }

private:
    const ZRMemoryDirect3D::PainterFactory createPainter;
};

}

ZRMemoryDirect3D::ZRMemoryDirect3D(PainterFactory createPainter) :
    createPainter(std::move(createPainter))
{ }

ZRDirect3DWindow ZRMemoryDirect3D::windowHandle(QWidget *widget)
{
    return reinterpret_cast<ZRDirect3DWindow>(widget);
}

ZRDirect3D *ZRMemoryDirect3D::create(unsigned)
{
    return new Direct3D(createPainter);
}

ZRDirect3DSurface *ZRMemoryDirect3D::hardwareSurface(void *)
{
    return nullptr;
}
