#include "FakeDirect3D9.h"
#include "Frames.h"
#include "LogCatcher.h"
#include "TestCard.h"
#include "ZRDirectVideoView.h"

#include <QMutex>
#include <QtTest>

#include <memory>

namespace {

constexpr int software = AV_PIX_FMT_YUV420P;
constexpr int softwareFull = AV_PIX_FMT_YUVJ420P;
constexpr int hardware = AV_PIX_FMT_DXVA2_VLD;

class Probe : public ZRDirectVideoView
{
public:
    using ZRDirectVideoView::device;
    using ZRDirectVideoView::direct3d;
    using ZRDirectVideoView::displayWidget;
    using ZRDirectVideoView::format;
    using ZRDirectVideoView::mutex;
    using ZRDirectVideoView::surface;
    using ZRDirectVideoView::swapChain;
};

const QStringList open = {
    "Direct3DCreate9(32)",
    "direct3d.GetDeviceCaps(0, 1)",
    "direct3d.GetAdapterDisplayMode(0)",
};

const QStringList upload = {
    "surface.LockRect(null, 0x4000)",
    "surface.UnlockRect()",
};

const QStringList stretch = {
    "device.Clear(0, null, 1, 0xff000000, 1, 0)",
    "device.BeginScene()",
    "device.GetBackBuffer(0, 0, 0)",
    "device.StretchRect(surface, null, backBuffer, null, 2)",
    "device.EndScene()",
    "device.Present(null, null, none, null)",
    "backBuffer.Release()",
};

const QStringList black = {
    "device.Clear(0, null, 1, 0xff000000, 1, 0)",
    "device.BeginScene()",
    "device.EndScene()",
    "device.Present(null, null, none, null)",
};

const QStringList releaseSoftware = {"surface.Release()", "device.Release()", "direct3d.Release()"};
const QStringList releaseHardware = {
    "chain.Release()", "decoderDevice.Release()", "direct3d.Release()"};
const QStringList decodersOwn = {"decoderDevice 1", "picture 1"};
const QStringList nextDecodersOwn = {"nextDevice 1", "nextPicture 1"};

QString createDevice(const char *flags = "0x46")
{
    return QStringLiteral("direct3d.CreateDevice(0, 1, window, %1, "
                          "{1920x1080 22 0, 0 0, 1, window, 1, 0 0, 0x10, 0, 0x80000000})")
        .arg(flags);
}

QString createSurface(int width, int height)
{
    return QStringLiteral("device.CreateOffscreenPlainSurface(%1, %2, 0x32315659, 0, null)")
        .arg(width)
        .arg(height);
}

QStringList buildSoftware(int width, int height)
{
    return open + QStringList{createDevice(), createSurface(width, height)};
}

const QStringList hardwareDevice = {
    "picture.AddRef()",
    "picture.GetDevice()",
    "picture.Release()",
};

// The device's own chain with the desktop's size and, where these are set, window and mode.
QString createChain(const char *window = "window", int windowed = 1)
{
    return QStringLiteral("decoderDevice.CreateAdditionalSwapChain("
                          "{1920x1080 21 3, 4 5, 6, %1, %2, 1 7, 0x8, 9, 0xa})")
        .arg(window)
        .arg(windowed);
}

QStringList buildHardware()
{
    return hardwareDevice + open
        + QStringList{"decoderDevice.GetSwapChain(0)", "ownChain.GetPresentParameters()",
            "ownChain.Release()", createChain()};
}

QStringList drawHardware(int width, int height)
{
    return {
        "decoderDevice.Clear(0, null, 1, 0xff000000, 1, 0)",
        "decoderDevice.BeginScene()",
        "chain.GetBackBuffer(0, 0)",
        "decoderDevice.SetRenderTarget(0, backBuffer)",
        "picture.AddRef()",
        QStringLiteral("decoderDevice.StretchRect(picture, (0 0 %1 %2), backBuffer, null, 2)")
            .arg(width)
            .arg(height),
        "picture.Release()",
        "decoderDevice.EndScene()",
        "chain.Present(null, null, none, null, 0)",
        "backBuffer.Release()",
    };
}

// What a chain answers about itself is what the next one is made of.
const QStringList replaceChain = {
    "direct3d.GetAdapterDisplayMode(0)",
    "chain.GetPresentParameters()",
    "chain.Release()",
    createChain("another window", 0),
};

QStringList first(int count, const QStringList &calls)
{
    return calls.mid(0, count);
}

// The same calls to other objects.
QStringList renamed(QStringList calls, const char *object, const char *other)
{
    return calls.replaceInStrings(object, other);
}

QStringList ofNextDecoder(const QStringList &calls)
{
    return renamed(renamed(calls, "decoderDevice", "nextDevice"), "picture", "nextPicture");
}

QStringList without(const QStringList &lost, QStringList calls)
{
    for (const QString &call : lost)
        calls.removeOne(call);
    return calls;
}

}

// The view on Windows, down to Direct3D 9's own calls.
class tst_ZRDirect3DCalls : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void software_data();
    void software();
    void behaviourByCaps_data();
    void behaviourByCaps();
    void changeOfSize();
    void rowsKeepTheSurfacesPitch_data();
    void rowsKeepTheSurfacesPitch();
    void hardwareFrames();
    void hardwareChangeOfSize();
    void failedStepOfHardwareChangeOfSize_data();
    void failedStepOfHardwareChangeOfSize();
    void twoDecodersAfterEachOther_data();
    void twoDecodersAfterEachOther();
    void hardwareFrameWithoutASurface();
    void presentsIntoTheViewsWindow();
    void goesBetweenTheTwo();
    void failedStepOfSoftware_data();
    void failedStepOfSoftware();
    void failedStepOfHardware_data();
    void failedStepOfHardware();
    void failedLock();
    void failedLockOfNoPicture();
    void failedDrawing_data();
    void failedDrawing();
    void withoutABackBuffer();
    void hardwareWithoutABackBuffer();
    void clear();
    void clearOfHardware();
    void releasesAtItsEnd();

    void displayHasNoWindowBefore();
    void displayPaintsForItself();
    void displayIsPaintedAnew();
    void displayOfHardwareIsPaintedAnew();
    void displayIsLeftAloneWithoutAPicture();
    void displayIsBlackWithoutAPicture_data();
    void displayIsBlackWithoutAPicture();
    void displayWaitsForWhoeverDraws();

private:
    Frame hardwareFrame(int width, int height, int decoder = 0)
    {
        Frame frame = bareFrame(width, height, ::hardware);
        frame->buf[0] = av_buffer_alloc(1); // what keeps the surface
        frame->data[3] = static_cast<quint8 *>(fake->picture(decoder));
        return frame;
    }

    QStringList show(const Frame &frame)
    {
        view->update(frame.get());
        return fake->take();
    }

    bool mutexIsFree()
    {
        const bool locked = view->mutex->tryLock();
        if (locked) {
            view->mutex->unlock();
        }
        return locked;
    }

    void showOnScreen()
    {
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view.get()));
        QCoreApplication::processEvents();
        fake->take();
    }

    std::unique_ptr<FakeDirect3D9> fake;
    std::unique_ptr<Probe> view;
};

void tst_ZRDirect3DCalls::init()
{
    fake = std::make_unique<FakeDirect3D9>();
    view = std::make_unique<Probe>();
    view->resize(800, 600);
    fake->window = [this] { return view->displayWidget->internalWinId(); };
}

void tst_ZRDirect3DCalls::cleanup()
{
    fake->onCall = nullptr;
    view.reset();
    const QStringList left = fake->alive();
    QVERIFY2(without(decodersOwn + nextDecodersOwn, left).isEmpty(), qPrintable(left.join(' ')));
    QCOMPARE(fake->take().filter("released"), QStringList());
    fake.reset();
}

void tst_ZRDirect3DCalls::software_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("YUV420P") << ::software;
    QTest::newRow("YUVJ420P") << softwareFull;
}

void tst_ZRDirect3DCalls::software()
{
    QFETCH(const int, format);
    QCOMPARE(show(greyFrame(640, 480, format)), buildSoftware(640, 480) + upload + stretch);
    QCOMPARE(fake->alive(), (QStringList{"direct3d 1", "device 1", "surface 1"}));
    QCOMPARE(show(greyFrame(640, 480, format)), upload + stretch);
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 0, 800, 600));
}

void tst_ZRDirect3DCalls::behaviourByCaps_data()
{
    QTest::addColumn<quint32>("caps");
    QTest::addColumn<QByteArray>("flags");
    QTest::newRow("hardware transformation and light") << 0x10000u << QByteArray("0x46");
    QTest::newRow("others alone") << 0xfffeffffu << QByteArray("0x26");
}

void tst_ZRDirect3DCalls::behaviourByCaps()
{
    QFETCH(const quint32, caps);
    QFETCH(const QByteArray, flags);
    fake->devCaps = caps;
    QVERIFY(show(greyFrame(64, 48)).contains(createDevice(flags.constData())));
}

void tst_ZRDirect3DCalls::changeOfSize()
{
    show(greyFrame(640, 480));
    for (const QSize &size : {QSize(320, 480), QSize(1280, 720)}) {
        const QStringList resize = {
            "surface.Release()", createSurface(size.width(), size.height())};
        QCOMPARE(show(greyFrame(size.width(), size.height())), resize + upload + stretch);
        QCOMPARE(show(greyFrame(size.width(), size.height())), upload + stretch);
    }
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 75, 800, 450));
}

void tst_ZRDirect3DCalls::rowsKeepTheSurfacesPitch_data()
{
    QTest::addColumn<int>("pitch");
    QTest::newRow("the width") << 64;
    QTest::newRow("beyond the width") << 96;
    QTest::newRow("far beyond the width") << 256;
}

void tst_ZRDirect3DCalls::rowsKeepTheSurfacesPitch()
{
    QFETCH(const int, pitch);
    constexpr int width = 64;
    constexpr int height = 48;
    constexpr quint8 untouched = 0xee;
    const Frame frame = greyFrame(width, height);
    for (int plane = 0; plane < 3; ++plane) {
        const int divisor = plane == 0 ? 1 : 2;
        for (int row = 0; row < height / divisor; ++row) {
            for (int x = 0; x < width / divisor; ++x) {
                frame->data[plane][row * frame->linesize[plane] + x] = quint8(plane * 70 + row + x);
            }
        }
    }
    fake->pitch = pitch;
    std::fill(fake->memory.begin(), fake->memory.end(), untouched);
    std::vector<quint8> expected = fake->memory;
    const auto place = [&](int plane, int start, int rowLength, int rows, int columns) {
        for (int row = 0; row < rows; ++row) {
            for (int x = 0; x < columns; ++x) {
                expected[size_t(start + row * rowLength + x)] = quint8(plane * 70 + row + x);
            }
        }
    };
    place(0, 0, pitch, height, width);
    place(2, height * pitch, pitch / 2, height / 2, width / 2); // V before U
    place(1, height * pitch * 5 / 4, pitch / 2, height / 2, width / 2);

    show(frame);

    QVERIFY(fake->memory == expected);
}

void tst_ZRDirect3DCalls::hardwareFrames()
{
    QCOMPARE(show(hardwareFrame(1280, 720)), buildHardware() + drawHardware(1280, 720));
    QCOMPARE(fake->alive(), (QStringList{"decoderDevice 2", "picture 1", "direct3d 1", "chain 1"}));
    QCOMPARE(view->format, ::hardware);
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 75, 800, 450));
    QCOMPARE(show(hardwareFrame(1280, 720)), drawHardware(1280, 720));
}

// With a size that isn't the one built for, each frame has a chain made for it, and the layout
// stays.
void tst_ZRDirect3DCalls::hardwareChangeOfSize()
{
    show(hardwareFrame(1280, 720));
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(show(hardwareFrame(640, 480)), replaceChain + drawHardware(640, 480));
        QCOMPARE(view->displayWidget->geometry(), QRect(0, 75, 800, 450));
    }
    QCOMPARE(show(hardwareFrame(1280, 720)), drawHardware(1280, 720));
}

void tst_ZRDirect3DCalls::failedStepOfHardwareChangeOfSize_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QStringList>("callsAfter"); // once the step succeeds again

    const QStringList draw = drawHardware(640, 480);
    QTest::newRow("display mode") << "direct3d.GetAdapterDisplayMode"
                                  << first(1, replaceChain) + draw << replaceChain + draw;
    QTest::newRow("its parameters")
        << "chain.GetPresentParameters" << first(2, replaceChain) + draw << replaceChain + draw;
    QTest::newRow("chain") << "decoderDevice.CreateAdditionalSwapChain" << replaceChain
                           << QStringList(); // it is lost
}

void tst_ZRDirect3DCalls::failedStepOfHardwareChangeOfSize()
{
    QFETCH(const QString, step);
    show(hardwareFrame(1280, 720));
    fake->failing << step;
    LogCatcher log;

    QTEST(show(hardwareFrame(640, 480)), "calls");

    fake->failing.clear();
    QTEST(show(hardwareFrame(640, 480)), "callsAfter");
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(mutexIsFree());
    view->clear();
    fake->take();
    show(hardwareFrame(640, 480));
    QVERIFY(view->swapChain);
}

void tst_ZRDirect3DCalls::twoDecodersAfterEachOther_data()
{
    QTest::addColumn<bool>("cleared");
    QTest::newRow("with clear() between") << true;
    QTest::newRow("without") << false;
}

// Only a frame of another format, or one after clear(), makes the view ask whose device it is.
void tst_ZRDirect3DCalls::twoDecodersAfterEachOther()
{
    QFETCH(const bool, cleared);
    const QStringList draw = drawHardware(1280, 720);
    show(hardwareFrame(1280, 720));
    if (cleared) {
        view->clear();
        fake->take();
    }
    const Frame next = hardwareFrame(1280, 720, 1);

    QCOMPARE(show(next),
        cleared ? releaseHardware + ofNextDecoder(buildHardware() + draw)
                : renamed(draw, "picture", "nextPicture"));

    const QString kept = cleared ? "nextDevice 2" : "decoderDevice 2";
    QCOMPARE(fake->alive().filter("Device 2"), QStringList{kept});
    QCOMPARE(show(next), cleared ? ofNextDecoder(draw) : renamed(draw, "picture", "nextPicture"));
}

void tst_ZRDirect3DCalls::hardwareFrameWithoutASurface()
{
    const Frame bare = hardwareFrame(64, 48);
    bare->data[3] = nullptr;
    LogCatcher log;
    QCOMPARE(show(bare), QStringList());
    QCOMPARE(view->format, ::hardware);
    QCOMPARE(show(hardwareFrame(64, 48)), QStringList()); // of the same format

    view->clear();
    QCOMPARE(show(hardwareFrame(64, 48)), buildHardware() + drawHardware(64, 48));
    const QStringList ofThePicture = {"picture.AddRef()",
        "decoderDevice.StretchRect(picture, (0 0 64 48), backBuffer, null, 2)",
        "picture.Release()"};
    QCOMPARE(show(bare), without(ofThePicture, drawHardware(64, 48)));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(mutexIsFree());
}

// The decoder's device belongs to another window, and its own chain presents there.
void tst_ZRDirect3DCalls::presentsIntoTheViewsWindow()
{
    const QStringList calls = show(hardwareFrame(1280, 720));
    QVERIFY(view->displayWidget->internalWinId());
    QVERIFY(view->displayWidget->internalWinId() != view->internalWinId());
    QVERIFY(calls.contains(createChain("window")));
    QVERIFY(calls.contains("chain.Present(null, null, none, null, 0)"));
    QVERIFY(calls.filter("decoderDevice.Present").isEmpty());
}

void tst_ZRDirect3DCalls::goesBetweenTheTwo()
{
    show(hardwareFrame(1280, 720));
    QCOMPARE(
        show(greyFrame(640, 480)), releaseHardware + buildSoftware(640, 480) + upload + stretch);
    QVERIFY(!view->swapChain);
    QCOMPARE(show(hardwareFrame(1280, 720)),
        releaseSoftware + buildHardware() + drawHardware(1280, 720));
    QVERIFY(!view->surface);
    show(greyFrame(640, 480));
    QCOMPARE(first(3, show(greyFrame(640, 480, softwareFull))), releaseSoftware);
}

// After a failed step nothing is drawn and nothing logged, then and with the next frame.
void tst_ZRDirect3DCalls::failedStepOfSoftware_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QStringList>("calls");

    QTest::newRow("module") << "Direct3DCreate9" << first(1, open);
    QTest::newRow("caps") << "direct3d.GetDeviceCaps"
                          << first(2, open) + QStringList{"direct3d.Release()"};
    QTest::newRow("display mode") << "direct3d.GetAdapterDisplayMode"
                                  << open + QStringList{"direct3d.Release()"};
    QTest::newRow("device") << "direct3d.CreateDevice" << open + QStringList{createDevice()};
    QTest::newRow("surface") << "device.CreateOffscreenPlainSurface" << buildSoftware(64, 48);
}

void tst_ZRDirect3DCalls::failedStepOfSoftware()
{
    QFETCH(const QString, step);
    fake->failing << step;
    LogCatcher log;

    QTEST(show(greyFrame(64, 48)), "calls");

    fake->failing.clear();
    QCOMPARE(show(greyFrame(64, 48)), QStringList());
    QCOMPARE(log.lines(), QStringList());
    view->clear();
    fake->take();
    show(greyFrame(64, 48));
    QVERIFY(view->surface);
}

void tst_ZRDirect3DCalls::failedStepOfHardware_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QStringList>("calls");

    const QStringList release = {"decoderDevice.Release()", "direct3d.Release()"};
    const QStringList start = hardwareDevice + open;
    QTest::newRow("device") << "picture.GetDevice" << hardwareDevice;
    QTest::newRow("module") << "Direct3DCreate9"
                            << first(4, start) + QStringList{"decoderDevice.Release()"};
    QTest::newRow("caps") << "direct3d.GetDeviceCaps" << first(5, start) + release;
    QTest::newRow("display mode") << "direct3d.GetAdapterDisplayMode" << start + release;
    QTest::newRow("own chain") << "decoderDevice.GetSwapChain"
                               << start + QStringList{"decoderDevice.GetSwapChain(0)"} + release;
    QTest::newRow("its parameters") << "ownChain.GetPresentParameters"
                                    << start
            + QStringList{"decoderDevice.GetSwapChain(0)", "ownChain.GetPresentParameters()",
                "ownChain.Release()"}
            + release;
    QTest::newRow("chain") << "decoderDevice.CreateAdditionalSwapChain"
                           << buildHardware() + release;
}

void tst_ZRDirect3DCalls::failedStepOfHardware()
{
    QFETCH(const QString, step);
    fake->failing << step;
    LogCatcher log;

    QTEST(show(hardwareFrame(64, 48)), "calls");

    QCOMPARE(fake->alive(), decodersOwn);
    fake->failing.clear();
    QCOMPARE(show(hardwareFrame(64, 48)), QStringList());
    QCOMPARE(log.lines(), QStringList());
}

void tst_ZRDirect3DCalls::failedLock()
{
    show(greyFrame(64, 48, ::software, 200));
    fake->failing << "surface.LockRect";
    const std::vector<quint8> before = fake->memory;
    LogCatcher log;

    QCOMPARE(show(greyFrame(64, 48, ::software, 100)), upload + stretch);

    QCOMPARE(log.lines(), QStringList{"lock failure"});
    QVERIFY(fake->memory == before);
}

// A frame without a first plane is found after the surface was locked, and ends the lock.
void tst_ZRDirect3DCalls::failedLockOfNoPicture()
{
    show(greyFrame(64, 48));
    const std::vector<quint8> before = fake->memory;
    const Frame noPicture = greyFrame(64, 48, ::software, 100);
    noPicture->data[0] = nullptr;
    LogCatcher log;

    QCOMPARE(show(noPicture), upload + stretch);

    QCOMPARE(log.lines(), QStringList{"lock failure"});
    QVERIFY(fake->memory == before);
}

void tst_ZRDirect3DCalls::failedDrawing_data()
{
    QTest::addColumn<bool>("ofHardware");
    QTest::addColumn<QStringList>("steps");

    const struct {
        bool ofHardware;
        QStringList steps;
    } rows[] = {
        {false,
            {"surface.UnlockRect", "device.Clear", "device.BeginScene", "device.StretchRect",
                "device.EndScene", "device.Present"}},
        {true,
            {"decoderDevice.Clear", "decoderDevice.BeginScene", "decoderDevice.SetRenderTarget",
                "decoderDevice.StretchRect", "decoderDevice.EndScene", "decoderDevice.Present",
                "chain.Present"}},
    };
    for (const auto &row : rows) {
        for (const QString &step : row.steps) {
            QTest::newRow(qPrintable(step)) << row.ofHardware << QStringList{step};
        }
        QTest::addRow("lost device, %s", row.ofHardware ? "hardware" : "software")
            << row.ofHardware << row.steps;
    }
}

// What goes wrong in drawing, as on a device that is lost, is nobody's business: all the other
// calls are made, then and with the next frame.
void tst_ZRDirect3DCalls::failedDrawing()
{
    QFETCH(const bool, ofHardware);
    QFETCH(const QStringList, steps);
    const Frame frame = ofHardware ? hardwareFrame(64, 48) : greyFrame(64, 48);
    const QStringList picture = ofHardware ? drawHardware(64, 48) : upload + stretch;
    show(frame);
    const QStringList alive = fake->alive();
    fake->failing = steps.toSet();
    LogCatcher log;
    for (int round = 0; round < 3; ++round) {
        QCOMPARE(show(frame), picture);
        view->update(nullptr);
        QCOMPARE(fake->take(), ofHardware ? renamed(black, "device.", "decoderDevice.") : black);
        QCOMPARE(fake->alive(), alive);
        QVERIFY(mutexIsFree());
    }
    QCOMPARE(log.lines(), QStringList());
    fake->failing.clear();
    QCOMPARE(show(frame), picture);
}

void tst_ZRDirect3DCalls::withoutABackBuffer()
{
    show(greyFrame(64, 48));
    fake->failing << "device.GetBackBuffer";
    QCOMPARE(show(greyFrame(64, 48)),
        without({"device.StretchRect(surface, null, backBuffer, null, 2)", "backBuffer.Release()"},
            upload + stretch));
}

void tst_ZRDirect3DCalls::hardwareWithoutABackBuffer()
{
    show(hardwareFrame(64, 48));
    fake->failing << "chain.GetBackBuffer";
    LogCatcher log;
    const QStringList ofTheBuffer = {"decoderDevice.SetRenderTarget(0, backBuffer)",
        "picture.AddRef()", "decoderDevice.StretchRect(picture, (0 0 64 48), backBuffer, null, 2)",
        "picture.Release()", "backBuffer.Release()"};
    QCOMPARE(show(hardwareFrame(64, 48)), without(ofTheBuffer, drawHardware(64, 48)));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(mutexIsFree());
    fake->failing.clear();
    QCOMPARE(show(hardwareFrame(64, 48)), drawHardware(64, 48));
}

void tst_ZRDirect3DCalls::clear()
{
    view->clear();
    QCOMPARE(fake->take(), QStringList());

    show(greyFrame(64, 48));
    view->clear();
    QCOMPARE(fake->take(), black);
    QVERIFY(view->device); // the objects stay until the next frame
    QCOMPARE(show(greyFrame(64, 48)), releaseSoftware + buildSoftware(64, 48) + upload + stretch);
}

void tst_ZRDirect3DCalls::clearOfHardware()
{
    show(hardwareFrame(64, 48));
    view->clear();
    QCOMPARE(fake->take(), renamed(black, "device.", "decoderDevice."));
    QCOMPARE(show(hardwareFrame(64, 48)), releaseHardware + buildHardware() + drawHardware(64, 48));
}

void tst_ZRDirect3DCalls::releasesAtItsEnd()
{
    show(greyFrame(64, 48));
    view.reset();
    QCOMPARE(fake->take(), releaseSoftware);
    QCOMPARE(fake->alive(), QStringList());

    view = std::make_unique<Probe>();
    show(hardwareFrame(64, 48));
    view.reset();
    QCOMPARE(fake->take(), releaseHardware);
    QCOMPARE(fake->alive(), decodersOwn);
}

void tst_ZRDirect3DCalls::displayHasNoWindowBefore()
{
    showOnScreen();
    QVERIFY(!view->displayWidget->internalWinId());
    show(greyFrame(64, 48));
    QVERIFY(view->displayWidget->internalWinId());
}

// Nothing that Qt paints may get over the picture.
void tst_ZRDirect3DCalls::displayPaintsForItself()
{
    show(greyFrame(64, 48));
    for (const auto attribute : {Qt::WA_NativeWindow, Qt::WA_PaintOnScreen,
             Qt::WA_NoSystemBackground, Qt::WA_OpaquePaintEvent}) {
        QVERIFY2(
            view->displayWidget->testAttribute(attribute), qPrintable(QString::number(attribute)));
    }
    QVERIFY(!view->displayWidget->paintEngine());
}

void tst_ZRDirect3DCalls::displayIsPaintedAnew()
{
    showOnScreen();
    show(greyFrame(64, 48));
    QCoreApplication::processEvents();
    fake->take();

    view->displayWidget->repaint();
    QCOMPARE(fake->take(), upload + stretch);

    view->resize(500, 300); // the display gets another size
    QTRY_VERIFY(!fake->calls.isEmpty());
    const QStringList calls = fake->take();
    QCOMPARE(first(9, calls), upload + stretch);
    QCOMPARE(calls.filter("Create"), QStringList());
}

void tst_ZRDirect3DCalls::displayOfHardwareIsPaintedAnew()
{
    showOnScreen();
    show(hardwareFrame(1280, 720));
    QCoreApplication::processEvents();
    fake->take();

    view->displayWidget->repaint();
    QCOMPARE(fake->take(), drawHardware(1280, 720));
}

void tst_ZRDirect3DCalls::displayIsLeftAloneWithoutAPicture()
{
    showOnScreen();
    show(greyFrame(64, 48));
    view->clear();
    QCoreApplication::processEvents();
    QCOMPARE(fake->take(), black); // and black does not ask for itself again

    view->displayWidget->repaint();
    QCOMPARE(fake->take(), QStringList());

    fake->failing << "direct3d.CreateDevice";
    show(greyFrame(64, 48));
    QCoreApplication::processEvents();
    fake->take();
    view->displayWidget->repaint();
    QCOMPARE(fake->take(), QStringList());
}

void tst_ZRDirect3DCalls::displayIsBlackWithoutAPicture_data()
{
    QTest::addColumn<bool>("ofHardware");
    QTest::newRow("software") << false;
    QTest::newRow("hardware") << true; // where black is presented to the decoder's own window
}

void tst_ZRDirect3DCalls::displayIsBlackWithoutAPicture()
{
    QFETCH(const bool, ofHardware);
    showOnScreen();
    show(ofHardware ? hardwareFrame(1280, 720) : greyFrame(1280, 720));
    const auto middle = [this] { return TestCard::shot(*view).pixelColor(view->rect().center()); };
    QTRY_COMPARE_WITH_TIMEOUT(middle(), QColor(Qt::red), 20000);

    view->clear();

    QTRY_VERIFY_WITH_TIMEOUT(TestCard::isBlack(TestCard::shot(*view)), 20000);
    view->resize(500, 400);
    QCoreApplication::processEvents();
    QTRY_VERIFY_WITH_TIMEOUT(TestCard::isBlack(TestCard::shot(*view)), 20000);
}

// A system that asks for a repaint in the middle of a drawing isn't served twice, nor does it wait.
void tst_ZRDirect3DCalls::displayWaitsForWhoeverDraws()
{
    showOnScreen();
    show(greyFrame(64, 48));
    QCoreApplication::processEvents();
    fake->take();
    fake->onCall = [this](const QString &call) {
        if (call == "device.Present") {
            view->displayWidget->repaint();
        }
    };
    QCOMPARE(show(greyFrame(64, 48)), upload + stretch);
    fake->onCall = nullptr;
    QVERIFY(mutexIsFree());
}

QTEST_MAIN(tst_ZRDirect3DCalls)
#include "tst_ZRDirect3DCalls.moc"
