#include "ZRMemoryDirect3D.h"
#include "ZRVideoPainter.h"
#include "ZRYuvPicture.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QtTest>

#include <cstring>
#include <optional>

using namespace ZRDirect3DValue;

namespace {

// Each picture that was shown; none for black.
using Shown = std::vector<std::optional<ZRYuvPicture>>;

class NotingPainter : public ZRVideoPainter
{
public:
    explicit NotingPainter(Shown &shown) : shown(shown) { }

    void show(const ZRYuvPicture *picture) override
    {
        shown.push_back(picture ? std::make_optional(*picture) : std::nullopt);
    }

private:
    Shown &shown;
};

}

class tst_ZRMemoryDirect3D : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void handsOutCapsAndMode();
    void createsThePainterForTheWindow();
    void failsWithoutAPainter();
    void refusesSurfaces_data();
    void refusesSurfaces();
    void describesSurfaces();
    void newSurfacesAreBlack();
    void presentShowsWhatWasStretched();
    void clearShowsBlack();
    void shownPictureOutlivesItsSurface();
    void coloursGoWithThePicture();
    void chromaIsCompleted_data();
    void chromaIsCompleted();
    void unlockNeedsALock();
    void hasNoHardwarePath();

private:
    ZRDirect3DSurface *createSurface(unsigned width, unsigned height);
    void present(ZRDirect3DSurface *surface);

    Shown shown;
    QWidget *painted = nullptr;
    bool refuse = false;
    ZRMemoryDirect3D module{[this](QWidget *window) -> std::unique_ptr<ZRVideoPainter> {
        painted = window;
        return refuse ? nullptr : std::make_unique<NotingPainter>(shown);
    }};
    std::unique_ptr<QWidget> window;
    ZRDirect3D *direct3d = nullptr;
    ZRDirect3DDevice *device = nullptr;
};

void tst_ZRMemoryDirect3D::init()
{
    shown.clear();
    window = std::make_unique<QWidget>();
    direct3d = module.create(sdkVersion);
    ZRDirect3DPresentParameters parameters;
    QVERIFY(direct3d->createDevice(defaultAdapter, deviceTypeHal, module.windowHandle(window.get()),
                createSoftwareVertexProcessing, &parameters, &device)
        >= 0);
}

void tst_ZRMemoryDirect3D::cleanup()
{
    device->release();
    direct3d->release();
}

ZRDirect3DSurface *tst_ZRMemoryDirect3D::createSurface(unsigned width, unsigned height)
{
    ZRDirect3DSurface *surface = nullptr;
    device->createOffscreenPlainSurface(width, height, formatYV12, poolDefault, &surface);
    return surface;
}

void tst_ZRMemoryDirect3D::present(ZRDirect3DSurface *surface)
{
    ZRDirect3DSurface *backBuffer = nullptr;
    QVERIFY(device->getBackBuffer(0, 0, backBufferMono, &backBuffer) >= 0);
    QVERIFY(device->stretchRect(surface, nullptr, backBuffer, nullptr, filterLinear) >= 0);
    QVERIFY(device->stretchRect(backBuffer, nullptr, backBuffer, nullptr, filterLinear) < 0);
    backBuffer->release();
    QVERIFY(device->present() >= 0);
}

void tst_ZRMemoryDirect3D::handsOutCapsAndMode()
{
    ZRDirect3DCaps caps{1};
    QVERIFY(direct3d->getDeviceCaps(defaultAdapter, deviceTypeHal, &caps) >= 0);
    QCOMPARE(caps.devCaps, 0u); // no transformation and light in hardware

    ZRDirect3DDisplayMode mode;
    QVERIFY(direct3d->getAdapterDisplayMode(defaultAdapter, &mode) >= 0);
    const QSize size = QGuiApplication::primaryScreen()->size();
    QCOMPARE(QSize(int(mode.width), int(mode.height)), size);
    QCOMPARE(mode.format, formatX8R8G8B8);
}

void tst_ZRMemoryDirect3D::createsThePainterForTheWindow()
{
    QCOMPARE(painted, window.get());
}

void tst_ZRMemoryDirect3D::failsWithoutAPainter()
{
    refuse = true;
    ZRDirect3DPresentParameters parameters;
    ZRDirect3DDevice *none = nullptr;
    QVERIFY(direct3d->createDevice(defaultAdapter, deviceTypeHal, module.windowHandle(window.get()),
                createSoftwareVertexProcessing, &parameters, &none)
        < 0);
    refuse = false;
    QVERIFY(!none);
}

void tst_ZRMemoryDirect3D::refusesSurfaces_data()
{
    QTest::addColumn<unsigned>("width");
    QTest::addColumn<unsigned>("height");
    QTest::addColumn<quint32>("format");
    QTest::newRow("no width") << 0u << 8u << formatYV12;
    QTest::newRow("no height") << 8u << 0u << formatYV12;
    QTest::newRow("too wide") << 16385u << 8u << formatYV12;
    QTest::newRow("too high") << 8u << 0x7fffffffu << formatYV12;
    QTest::newRow("below 0") << 8u << unsigned(-8) << formatYV12;
    QTest::newRow("another format") << 8u << 8u << formatX8R8G8B8;
}

void tst_ZRMemoryDirect3D::refusesSurfaces()
{
    QFETCH(const unsigned, width);
    QFETCH(const unsigned, height);
    QFETCH(const quint32, format);
    ZRDirect3DSurface *surface = nullptr;
    QVERIFY(device->createOffscreenPlainSurface(width, height, format, poolDefault, &surface) < 0);
    QVERIFY(!surface);
}

void tst_ZRMemoryDirect3D::describesSurfaces()
{
    ZRDirect3DSurface *surface = createSurface(641, 361);
    ZRDirect3DSurfaceDesc desc;
    QVERIFY(surface->getDesc(&desc) >= 0);
    QCOMPARE(desc.format, formatYV12);
    QCOMPARE(desc.width, 641u);
    QCOMPARE(desc.height, 361u);
    surface->release();
}

void tst_ZRMemoryDirect3D::newSurfacesAreBlack()
{
    ZRDirect3DSurface *surface = createSurface(5, 7);
    present(surface);
    const ZRYuvPicture &picture = *shown.back();
    for (int plane = 0; plane < 3; ++plane) {
        for (int row = 0; row < picture.rows(plane); ++row) {
            for (int x = 0; x < picture.rowLength(plane); ++x) {
                QCOMPARE(int(picture.row(plane, row)[x]), plane == 0 ? 16 : 128);
            }
        }
    }
    surface->release();
}

void tst_ZRMemoryDirect3D::presentShowsWhatWasStretched()
{
    ZRDirect3DSurface *surface = createSurface(64, 48);
    ZRDirect3DLockedRect locked;
    QVERIFY(surface->lockRect(&locked, lockDoNotWait) >= 0);
    QVERIFY(locked.pitch >= 64);
    std::memset(locked.bits, 100, size_t(locked.pitch) * 48);
    std::memset(locked.bits + locked.pitch * 48, 150, size_t(locked.pitch) * 12); // V
    std::memset(locked.bits + locked.pitch * 60, 200, size_t(locked.pitch) * 12); // U
    QVERIFY(surface->unlockRect() >= 0);
    QVERIFY(shown.empty());

    present(surface);

    QCOMPARE(int(shown.size()), 1);
    const ZRYuvPicture &picture = *shown.back();
    QCOMPARE(picture.width, 64);
    QCOMPARE(picture.height, 48);
    QCOMPARE(picture.planes[0], locked.bits); // nothing was copied
    QCOMPARE(int(picture.row(0, 47)[63]), 100);
    QCOMPARE(int(picture.row(1, 0)[0]), 200);
    QCOMPARE(int(picture.row(1, 23)[31]), 200);
    QCOMPARE(int(picture.row(2, 0)[0]), 150);
    QCOMPARE(int(picture.row(2, 23)[31]), 150);
    surface->release();
}

void tst_ZRMemoryDirect3D::clearShowsBlack()
{
    ZRDirect3DSurface *surface = createSurface(64, 48);
    present(surface);
    QVERIFY(shown.back());

    device->clear(clearTarget, opaqueBlack, 1.0f, 0);
    device->beginScene();
    device->endScene();
    device->present();

    QCOMPARE(int(shown.size()), 2);
    QVERIFY(!shown.back());
    surface->release();
}

// A window that is resized between two frames is painted from the picture once more.
void tst_ZRMemoryDirect3D::shownPictureOutlivesItsSurface()
{
    ZRDirect3DSurface *surface = createSurface(64, 48);
    present(surface);
    surface->release();
    QCOMPARE(int(shown.back()->row(0, 47)[63]), 16);
    QCOMPARE(int(shown.back()->row(1, 23)[31]), 128);
}

void tst_ZRMemoryDirect3D::coloursGoWithThePicture()
{
    ZRDirect3DSurface *surface = createSurface(64, 48);
    const ZRVideoColours colours{0.2126f, 0.0722f, true};
    surface->setColours(colours);
    present(surface);
    QVERIFY(shown.back()->colours == colours);
    surface->release();
}

void tst_ZRMemoryDirect3D::chromaIsCompleted_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    for (const int width : {1, 2, 3, 64, 65}) {
        for (const int height : {1, 2, 3, 4, 5, 6, 7, 8, 48, 49, 50, 51}) {
            QTest::addRow("%dx%d", width, height) << width << height;
        }
    }
}

// Written as the view does: V at height * pitch, U at (height + height / 4) * pitch, half the
// height and width of each, rounded down. Row r has the value r + 1, U 100 more.
void tst_ZRMemoryDirect3D::chromaIsCompleted()
{
    QFETCH(const int, width);
    QFETCH(const int, height);
    ZRDirect3DSurface *surface = createSurface(unsigned(width), unsigned(height));
    for (int time = 0; time < 2; ++time) { // and again, into what was completed
        ZRDirect3DLockedRect locked;
        QVERIFY(surface->lockRect(&locked, lockDoNotWait) >= 0);
        const auto write = [&](int startRow, int value) {
            for (int row = 0; row < height / 2; ++row) {
                std::memset(locked.bits + startRow * locked.pitch + row * locked.pitch / 2,
                    value + row, size_t(width / 2));
            }
        };
        write(height, 1);
        write(height + height / 4, 101);
        QVERIFY(surface->unlockRect() >= 0);
    }
    present(surface);

    const ZRYuvPicture &picture = *shown.back();
    for (const int plane : {1, 2}) {
        // Where V's last row lies under U's first, its neighbour takes its place.
        const int written = plane == 1 ? height / 2 : std::min(height / 2, height / 4 * 2);
        for (int row = 0; row < (height + 1) / 2; ++row) {
            const int value = written == 0 || width == 1
                ? 128
                : std::min(row, written - 1) + (plane == 1 ? 101 : 1);
            for (int x = 0; x < (width + 1) / 2; ++x) {
                QCOMPARE(int(picture.row(plane, row)[x]), value);
            }
        }
    }
    surface->release();
}

void tst_ZRMemoryDirect3D::unlockNeedsALock()
{
    ZRDirect3DSurface *surface = createSurface(64, 48);
    ZRDirect3DLockedRect locked;
    QVERIFY(surface->unlockRect() < 0);
    QVERIFY(surface->lockRect(&locked, lockDoNotWait) >= 0);
    QVERIFY(surface->unlockRect() >= 0);
    QVERIFY(surface->unlockRect() < 0);
    surface->release();
}

void tst_ZRMemoryDirect3D::hasNoHardwarePath()
{
    int anything = 0;
    ZRDirect3DSwapChain *chain = nullptr;
    ZRDirect3DPresentParameters parameters;
    QVERIFY(!module.hardwareSurface(&anything));
    QVERIFY(!module.hardwareSurface(nullptr));
    QVERIFY(device->getSwapChain(0, &chain) < 0);
    QVERIFY(device->createAdditionalSwapChain(&parameters, &chain) < 0);
    QVERIFY(!chain);
}

QTEST_MAIN(tst_ZRMemoryDirect3D)
#include "tst_ZRMemoryDirect3D.moc"
