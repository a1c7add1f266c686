#include "Frames.h"
#include "LogCatcher.h"
#include "MetaMethods.h"
#include "Painting.h"
#include "RecordingDirect3D.h"
#include "ZRDirectVideoView.h"

#include <QMutex>
#include <QThread>
#include <QtTest>

#include <cstring>
#include <type_traits>

namespace {

constexpr int software = AV_PIX_FMT_YUV420P;
constexpr int softwareFull = AV_PIX_FMT_YUVJ420P;
constexpr int hardware = 51;

class Probe : public ZRDirectVideoView
{
public:
    explicit Probe(ZRDirect3DModule &module) : ZRDirectVideoView(nullptr, module) { }

    using ZRDirectVideoView::device;
    using ZRDirectVideoView::direct3d;
    using ZRDirectVideoView::displayWidget;
    using ZRDirectVideoView::format;
    using ZRDirectVideoView::frame;
    using ZRDirectVideoView::mutex;
    using ZRDirectVideoView::surface;
    using ZRDirectVideoView::swapChain;
    using ZRDirectVideoView::videoHeight;
    using ZRDirectVideoView::videoWidth;
};

const QStringList open = {
    "windowHandle()",
    "create(32)",
    "direct3d.getDeviceCaps(0, 1)",
    "direct3d.getAdapterDisplayMode(0)",
};

const QStringList upload = {
    "surface.setColours(limited)",
    "surface.lockRect(0x4000)",
    "surface.unlockRect()",
};

const QStringList stretch = {
    "device.clear(1, 0xff000000, 1, 0)",
    "device.beginScene()",
    "device.getBackBuffer(0, 0, 0)",
    "device.stretchRect(surface, null, backBuffer, null, 2)",
    "device.endScene()",
    "device.present()",
    "backBuffer.release()",
};

const QStringList black = {
    "device.clear(1, 0xff000000, 1, 0)",
    "device.beginScene()",
    "device.endScene()",
    "device.present()",
};

const QStringList releaseSoftware = {"surface.release()", "device.release()", "direct3d.release()"};
const QStringList releaseHardware = {"chain.release()", "device.release()", "direct3d.release()"};

QStringList first(int count, const QStringList &calls)
{
    return calls.mid(0, count);
}

QString createDevice(const char *flags = "0x46")
{
    return QStringLiteral("direct3d.createDevice(0, 1, window, %1, "
                          "{1920x1080 22 0, 0 0, 1, window, 1, 0 0, 0x10, 0, 0x80000000})")
        .arg(flags);
}

QString createSurface(int width, int height)
{
    return QStringLiteral("device.createOffscreenPlainSurface(%1, %2, 0x32315659, 0)")
        .arg(width)
        .arg(height);
}

QStringList buildSoftware(int width, int height)
{
    return open + QStringList{createDevice(), createSurface(width, height)};
}

// The surface of a hardware frame is an address that only the module looks behind.
quint8 *const decoderSurface = reinterpret_cast<quint8 *>(quintptr(4242));

Frame hardwareFrame(int width, int height)
{
    Frame frame = bareFrame(width, height, hardware);
    frame->buf[0] = av_buffer_alloc(1); // what keeps the surface
    frame->data[3] = decoderSurface;
    return frame;
}

const QStringList hardwareDevice = {
    "hardwareSurface(4242)",
    "picture.getDevice()",
    "picture.release()",
};

// The chain as it was made, with the desktop's size and the view's window.
QString createChain(const char *window = "window", int windowed = 1)
{
    return QStringLiteral("device.createAdditionalSwapChain("
                          "{1920x1080 21 3, 4 5, 6, %1, %2, 1 7, 0x8, 9, 0xa})")
        .arg(window)
        .arg(windowed);
}

QStringList buildHardware()
{
    return hardwareDevice + open
        + QStringList{"device.getSwapChain(0)", "ownChain.getPresentParameters()",
            "ownChain.release()", createChain()};
}

QStringList drawHardware(int width, int height)
{
    return {
        "device.clear(1, 0xff000000, 1, 0)",
        "device.beginScene()",
        "chain.getBackBuffer(0, 0)",
        "device.setRenderTarget(0, backBuffer)",
        "hardwareSurface(4242)",
        QStringLiteral("device.stretchRect(picture, 0 0 %1x%2, backBuffer, null, 2)")
            .arg(width)
            .arg(height),
        "picture.release()",
        "device.endScene()",
        "chain.present()",
        "backBuffer.release()",
    };
}

const QStringList replaceChain = {
    "direct3d.getAdapterDisplayMode(0)",
    "chain.getPresentParameters()",
    "chain.release()",
    createChain("none", 0),
};

// Counts the queued calls that reach an object.
struct CallCounter : QObject {
    bool eventFilter(QObject *, QEvent *event) override
    {
        calls += event->type() == QEvent::MetaCall;
        return false;
    }
    int calls = 0;
};

template <class Body> void runOnThread(Body body)
{
    std::unique_ptr<QThread> thread(QThread::create(body));
    thread->start();
    QVERIFY(thread->wait(60000));
}

bool lockedElsewhere(QMutex *mutex)
{
    bool locked = false;
    runOnThread([&] {
        locked = !mutex->tryLock();
        if (!locked) {
            mutex->unlock();
        }
    });
    return locked;
}

}

class tst_ZRDirectVideoView : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void isAWidgetAndAView();
    void startsEmpty();
    void takesAReferenceOfItsOwn();
    void buildsForSoftware_data();
    void buildsForSoftware();
    void choosesBehaviourByCaps_data();
    void choosesBehaviourByCaps();
    void drawsOnWithoutBuilding();
    void resizesTheSurface();
    void rebuildsWhenTheFormatChanges();
    void buildsForHardware();
    void rebuildsTheChainForEveryFrameOfAnotherSize();
    void keepsTheChainWhenItsParametersAreUnknown_data();
    void keepsTheChainWhenItsParametersAreUnknown();
    void goesFromHardwareToSoftware();
    void goesFromSoftwareToHardware();
    void hardwareFrameWithoutASurface();
    void hardwareFrameLosesItsSurface();
    void failedStepOfSoftware_data();
    void failedStepOfSoftware();
    void failedStepOfHardware_data();
    void failedStepOfHardware();
    void retriesWithAnotherFormatOnly();
    void retriesTheSurfaceWithAnotherSize();
    void followsTheSizeWithoutADevice_data();
    void followsTheSizeWithoutADevice();
    void losesTheChainForGood();
    void otherFormatsDrawNothing();
    void clearPaintsBlack();
    void blackRepaintsTheView();
    void clearWithoutADevice();
    void clearRebuilds();
    void clearOnTheHardwarePath();
    void emptyFramesAreBlack_data();
    void emptyFramesAreBlack();
    void failedLockPresentsTheOld();
    void withoutABackBuffer();
    void releasesAtItsEnd();

    void copiesPlanes_data();
    void copiesPlanes();
    void chromaPlanesSwapStrides();
    void leavesOutPlanesThatAreMissing();

    void drawingHoldsTheMutex();
    void updateWaitsForDrawing();
    void queuesOneCallAFrame();
    void staleCallsDieWithTheView();

    void layoutFollowsTheVideo();
    void layoutFollowsTheView();
    void paintsBlack();

private:
    QStringList show(const Frame &frame)
    {
        view->update(frame.get());
        return module->take();
    }

    std::unique_ptr<RecordingDirect3D> module;
    std::unique_ptr<Probe> view;
};

void tst_ZRDirectVideoView::init()
{
    module = std::make_unique<RecordingDirect3D>();
    module->chainParameters = {640, 480, 21, 3, 4, 5, 6, 0, false, true, 7, 8, 9, 10};
    view = std::make_unique<Probe>(*module);
    view->resize(800, 600);
}

void tst_ZRDirectVideoView::cleanup()
{
    view.reset();
    QCOMPARE(module->alive, 0);
}

void tst_ZRDirectVideoView::isAWidgetAndAView()
{
    static_assert(std::is_base_of_v<QWidget, ZRDirectVideoView>);
    static_assert(std::is_base_of_v<ZRVideoView, ZRDirectVideoView>);
    QCOMPARE(static_cast<void *>(static_cast<QWidget *>(view.get())),
        static_cast<void *>(view.get())); // QWidget is the first base
    QCOMPARE(
        ownMethods(ZRDirectVideoView::staticMetaObject), QStringList{"public slot notifyUpdate()"});

    // A holder of the interface finds the widget.
    ZRVideoView *video = view.get();
    QCOMPARE(dynamic_cast<QWidget *>(video), view.get());
}

void tst_ZRDirectVideoView::startsEmpty()
{
    QCOMPARE(view->displayWidget->parentWidget(), view.get());
    QVERIFY(!view->direct3d);
    QVERIFY(!view->device);
    QVERIFY(!view->surface);
    QVERIFY(!view->swapChain);
    QCOMPARE(view->videoWidth, 0);
    QCOMPARE(view->videoHeight, 0);
    QVERIFY(!view->mutex->isRecursive());
    QCOMPARE(view->format, -1);
    QVERIFY(view->frame);
    QVERIFY(!view->frame->buf[0]);
    QCOMPARE(module->take(), QStringList());
}

void tst_ZRDirectVideoView::takesAReferenceOfItsOwn()
{
    const Frame first = greyFrame(64, 48);
    const Frame second = greyFrame(64, 48);
    const auto references = [](const Frame &frame) {
        return av_buffer_get_ref_count(frame->buf[0]);
    };

    view->update(first.get());
    QCOMPARE(references(first), 2);
    QCOMPARE(view->frame->data[0], first->data[0]); // nothing is copied
    view->update(second.get());
    QCOMPARE(references(first), 1);
    QCOMPARE(references(second), 2);
    view->update(nullptr);
    QCOMPARE(references(second), 1);
    view->update(first.get());
    view->clear();
    QCOMPARE(references(first), 1);
    view->update(first.get());
    view.reset();
    QCOMPARE(references(first), 1);
}

void tst_ZRDirectVideoView::buildsForSoftware_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("colours");
    QTest::newRow("YUV420P") << software << "limited";
    QTest::newRow("YUVJ420P") << softwareFull << "full";
}

void tst_ZRDirectVideoView::buildsForSoftware()
{
    QFETCH(const int, format);
    QFETCH(const QString, colours);

    const QStringList calls = show(greyFrame(640, 480, format));

    const QStringList uploadThese = QStringList(upload).replaceInStrings("limited", colours);
    QCOMPARE(calls, buildSoftware(640, 480) + uploadThese + stretch);
    QCOMPARE(module->window, reinterpret_cast<ZRDirect3DWindow>(view->displayWidget));
    QCOMPARE(view->format, format);
    QCOMPARE(view->videoWidth, 640);
    QCOMPARE(view->videoHeight, 480);
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 0, 800, 600));
}

void tst_ZRDirectVideoView::choosesBehaviourByCaps_data()
{
    QTest::addColumn<quint32>("caps");
    QTest::addColumn<QByteArray>("flags");
    QTest::newRow("hardware transformation and light") << 0x10000u << QByteArray("0x46");
    QTest::newRow("among others") << 0xffffffffu << QByteArray("0x46");
    QTest::newRow("none") << 0u << QByteArray("0x26");
    QTest::newRow("others alone") << 0xfffeffffu << QByteArray("0x26");
}

void tst_ZRDirectVideoView::choosesBehaviourByCaps()
{
    QFETCH(const quint32, caps);
    QFETCH(const QByteArray, flags);
    module->devCaps = caps;
    QVERIFY(show(greyFrame(64, 48)).contains(createDevice(flags.constData())));
}

void tst_ZRDirectVideoView::drawsOnWithoutBuilding()
{
    show(greyFrame(64, 48));
    QCOMPARE(show(greyFrame(64, 48)), upload + stretch);
    view->notifyUpdate(); // draws what is held once more
    QCOMPARE(module->take(), upload + stretch);
}

void tst_ZRDirectVideoView::resizesTheSurface()
{
    show(greyFrame(640, 480));
    for (const QSize &size : {QSize(320, 480), QSize(320, 240), QSize(1280, 720)}) {
        const QStringList resize = {
            "surface.release()", createSurface(size.width(), size.height())};
        QCOMPARE(show(greyFrame(size.width(), size.height())), resize + upload + stretch);
        QCOMPARE(QSize(view->videoWidth, view->videoHeight), size);
        QCOMPARE(show(greyFrame(size.width(), size.height())), upload + stretch);
    }
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 75, 800, 450));
}

void tst_ZRDirectVideoView::rebuildsWhenTheFormatChanges()
{
    show(greyFrame(64, 48, software));
    const QStringList calls = show(greyFrame(64, 48, softwareFull));
    QCOMPARE(first(9, calls), releaseSoftware + buildSoftware(64, 48));
    QCOMPARE(view->format, softwareFull);
}

void tst_ZRDirectVideoView::buildsForHardware()
{
    QCOMPARE(show(hardwareFrame(1280, 720)), buildHardware() + drawHardware(1280, 720));
    QCOMPARE(view->format, hardware);
    QCOMPARE(view->videoWidth, 1280);
    QCOMPARE(view->videoHeight, 720);
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 75, 800, 450));

    QCOMPARE(show(hardwareFrame(1280, 720)), drawHardware(1280, 720));
}

void tst_ZRDirectVideoView::rebuildsTheChainForEveryFrameOfAnotherSize()
{
    show(hardwareFrame(1280, 720));
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(show(hardwareFrame(640, 480)), replaceChain + drawHardware(640, 480));
        QCOMPARE(view->videoWidth, 1280); // the stored size stays, and the layout with it
        QCOMPARE(view->videoHeight, 720);
        QCOMPARE(view->displayWidget->geometry(), QRect(0, 75, 800, 450));
    }
    QCOMPARE(show(hardwareFrame(1280, 480)), replaceChain + drawHardware(1280, 480));
    QCOMPARE(show(hardwareFrame(1280, 720)), drawHardware(1280, 720));
}

void tst_ZRDirectVideoView::keepsTheChainWhenItsParametersAreUnknown_data()
{
    QTest::addColumn<QString>("step");
    QTest::newRow("display mode") << "direct3d.getAdapterDisplayMode";
    QTest::newRow("present parameters") << "chain.getPresentParameters";
}

void tst_ZRDirectVideoView::keepsTheChainWhenItsParametersAreUnknown()
{
    QFETCH(const QString, step);
    show(hardwareFrame(1280, 720));
    module->failing << step;
    const QStringList calls = show(hardwareFrame(640, 480));
    QVERIFY(!calls.contains("chain.release()"));
    QCOMPARE(calls.mid(calls.size() - 10), drawHardware(640, 480));
}

void tst_ZRDirectVideoView::goesFromHardwareToSoftware()
{
    show(hardwareFrame(1280, 720));
    QCOMPARE(
        show(greyFrame(640, 480)), releaseHardware + buildSoftware(640, 480) + upload + stretch);
    QVERIFY(!view->swapChain);
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 0, 800, 600));
}

void tst_ZRDirectVideoView::goesFromSoftwareToHardware()
{
    show(greyFrame(640, 480));
    QCOMPARE(show(hardwareFrame(1280, 720)),
        releaseSoftware + buildHardware() + drawHardware(1280, 720));
    QVERIFY(!view->surface);
}

void tst_ZRDirectVideoView::hardwareFrameWithoutASurface()
{
    const Frame frame = hardwareFrame(1280, 720);
    frame->data[3] = nullptr;
    QCOMPARE(show(frame), (QStringList{"hardwareSurface(0)", "windowHandle()"}));
    QCOMPARE(view->format, hardware);
    QCOMPARE(view->videoWidth, 1280);
    QCOMPARE(show(hardwareFrame(1280, 720)), QStringList()); // not before the format changes
}

void tst_ZRDirectVideoView::hardwareFrameLosesItsSurface()
{
    show(hardwareFrame(1280, 720));
    const Frame frame = hardwareFrame(1280, 720);
    frame->data[3] = nullptr;
    const QStringList expected = {"device.clear(1, 0xff000000, 1, 0)", "device.beginScene()",
        "chain.getBackBuffer(0, 0)", "device.setRenderTarget(0, backBuffer)", "hardwareSurface(0)",
        "device.endScene()", "chain.present()", "backBuffer.release()"};
    QCOMPARE(show(frame), expected);
}

// After a failed step nothing is drawn and nothing logged, then and with the next frame.
void tst_ZRDirectVideoView::failedStepOfSoftware_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QStringList>("calls");

    const QString device = createDevice();
    QTest::newRow("module") << "create" << first(2, open);
    QTest::newRow("caps") << "direct3d.getDeviceCaps"
                          << first(3, open) + QStringList{"direct3d.release()"};
    QTest::newRow("display mode") << "direct3d.getAdapterDisplayMode"
                                  << open + QStringList{"direct3d.release()"};
    QTest::newRow("device") << "direct3d.createDevice" << open + QStringList{device};
    QTest::newRow("surface") << "device.createOffscreenPlainSurface" << buildSoftware(64, 48);
}

void tst_ZRDirectVideoView::failedStepOfSoftware()
{
    QFETCH(const QString, step);
    module->failing << step;
    const QRect before = view->displayWidget->geometry();
    LogCatcher log;

    QTEST(show(greyFrame(64, 48)), "calls");

    QCOMPARE(view->format, software);
    QCOMPARE(view->displayWidget->geometry(), before);
    module->failing.clear();
    QCOMPARE(show(greyFrame(64, 48)), QStringList());
    QCOMPARE(log.lines(), QStringList());
}

void tst_ZRDirectVideoView::failedStepOfHardware_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QStringList>("calls");

    const QStringList release = {"device.release()", "direct3d.release()"};
    const QStringList start = hardwareDevice + open;
    QTest::newRow("surface") << "hardwareSurface"
                             << QStringList{"hardwareSurface(4242)", "windowHandle()"};
    QTest::newRow("device") << "picture.getDevice"
                            << hardwareDevice + QStringList{"windowHandle()"};
    QTest::newRow("module") << "create" << first(5, start) + QStringList{"device.release()"};
    QTest::newRow("caps") << "direct3d.getDeviceCaps" << first(6, start) + release;
    QTest::newRow("display mode") << "direct3d.getAdapterDisplayMode" << start + release;
    QTest::newRow("own chain") << "device.getSwapChain"
                               << start + QStringList{"device.getSwapChain(0)"} + release;
    QTest::newRow("its parameters") << "ownChain.getPresentParameters"
                                    << start
            + QStringList{"device.getSwapChain(0)", "ownChain.getPresentParameters()",
                "ownChain.release()"}
            + release;
    QTest::newRow("chain") << "device.createAdditionalSwapChain" << buildHardware() + release;
}

void tst_ZRDirectVideoView::failedStepOfHardware()
{
    QFETCH(const QString, step);
    module->failing << step;
    const QRect before = view->displayWidget->geometry();
    LogCatcher log;

    QTEST(show(hardwareFrame(64, 48)), "calls");

    QCOMPARE(view->format, hardware);
    QCOMPARE(view->displayWidget->geometry(), before);
    QCOMPARE(module->alive, 0);
    module->failing.clear();
    QCOMPARE(show(hardwareFrame(64, 48)), QStringList());
    QCOMPARE(log.lines(), QStringList());
}

void tst_ZRDirectVideoView::retriesWithAnotherFormatOnly()
{
    module->failing << "create";
    show(greyFrame(64, 48));
    module->failing.clear();
    QCOMPARE(show(greyFrame(128, 96)), QStringList()); // another size isn't enough
    QVERIFY(show(greyFrame(64, 48, softwareFull)).contains("device.present()"));

    module->failing << "create";
    view->clear();
    show(greyFrame(64, 48));
    module->failing.clear();
    view->clear();
    module->take();
    QCOMPARE(show(greyFrame(64, 48)), buildSoftware(64, 48) + upload + stretch);
}

// A device without its surface draws nothing; the next size brings another attempt at it.
void tst_ZRDirectVideoView::retriesTheSurfaceWithAnotherSize()
{
    module->failing << "device.createOffscreenPlainSurface";
    show(greyFrame(64, 48));
    module->failing.clear();
    QCOMPARE(show(greyFrame(64, 48)), QStringList());
    QCOMPARE(show(greyFrame(128, 96)), QStringList{createSurface(128, 96)} + upload + stretch);

    // The layout follows the new size whether or not there is a surface for it.
    view->resize(100, 100);
    module->failing << "device.createOffscreenPlainSurface";
    show(greyFrame(50, 100));
    QVERIFY(!view->surface);
    QCOMPARE(view->displayWidget->geometry(), QRect(25, 0, 50, 100));
}

void tst_ZRDirectVideoView::followsTheSizeWithoutADevice_data()
{
    QTest::addColumn<QString>("step");
    for (const char *step : {"create", "direct3d.getDeviceCaps", "direct3d.getAdapterDisplayMode",
             "direct3d.createDevice"})
        QTest::newRow(step) << step;
}

// With the next size, as nothing more is done with the frame that found no device.
void tst_ZRDirectVideoView::followsTheSizeWithoutADevice()
{
    QFETCH(const QString, step);
    view->resize(100, 100);
    module->failing << step;
    const QRect before = view->displayWidget->geometry();
    LogCatcher log;
    show(greyFrame(64, 48));
    QCOMPARE(view->displayWidget->geometry(), before);

    QCOMPARE(show(greyFrame(50, 100)), QStringList());

    QCOMPARE(QSize(view->videoWidth, view->videoHeight), QSize(50, 100));
    QCOMPARE(view->displayWidget->geometry(), QRect(25, 0, 50, 100));
    QCOMPARE(log.lines(), QStringList());
}

void tst_ZRDirectVideoView::losesTheChainForGood()
{
    show(hardwareFrame(1280, 720));
    module->failing << "device.createAdditionalSwapChain";
    QCOMPARE(show(hardwareFrame(640, 480)), replaceChain);
    QVERIFY(!view->swapChain);
    module->failing.clear();
    QCOMPARE(show(hardwareFrame(640, 480)), QStringList());
}

void tst_ZRDirectVideoView::otherFormatsDrawNothing()
{
    QCOMPARE(show(greyFrame(64, 48, AV_PIX_FMT_YUV444P)), QStringList());
    QCOMPARE(view->format, -1);

    show(greyFrame(64, 48));
    QCOMPARE(show(greyFrame(64, 48, AV_PIX_FMT_YUV422P)), releaseSoftware);
    QCOMPARE(view->format, software); // stays as it was, so the same format builds nothing
    QCOMPARE(show(greyFrame(50, 100, AV_PIX_FMT_YUV422P)), QStringList());
    QCOMPARE(QSize(view->videoWidth, view->videoHeight), QSize(64, 48));
    QCOMPARE(show(greyFrame(64, 48)), QStringList());
    view->clear();
    QCOMPARE(show(greyFrame(64, 48)), buildSoftware(64, 48) + upload + stretch);
}

void tst_ZRDirectVideoView::clearPaintsBlack()
{
    show(greyFrame(64, 48));
    view->clear();
    QCOMPARE(module->take(), black);
    QCOMPARE(view->format, -1);
    QVERIFY(view->device); // the objects stay until the next frame
    QVERIFY(view->surface);
    QCOMPARE(view->videoWidth, 64);

    view->notifyUpdate();
    QCOMPARE(module->take(), black);
}

void tst_ZRDirectVideoView::blackRepaintsTheView()
{
    PaintCounter counter(*view);
    QVERIFY(counter.waitForRest());
    const Frame frame = greyFrame(100, 100); // fills the view, so nothing moves
    counter.paintsOf([&] { view->update(frame.get()); });
    QCOMPARE(counter.paintsOf([&] { view->update(frame.get()); }), 0);
    QCOMPARE(counter.paintsOf([&] { view->clear(); }), 1);
    QCOMPARE(counter.paintsOf([&] { view->update(nullptr); }), 1);

    const Frame other = greyFrame(100, 100, AV_PIX_FMT_YUV422P);
    counter.paintsOf([&] { view->update(other.get()); });
    QVERIFY(!view->device);
    QCOMPARE(counter.paintsOf([&] { view->clear(); }), 1);
    QCOMPARE(counter.paintsOf([&] { view->update(nullptr); }), 1);
}

void tst_ZRDirectVideoView::clearWithoutADevice()
{
    view->clear();
    QCOMPARE(module->take(), QStringList());
    view->displayWidget->hide();
    const QImage image = painted(*view);
    QImage expected(image.size(), image.format());
    expected.fill(Qt::black);
    QCOMPARE(image, expected);
}

void tst_ZRDirectVideoView::clearRebuilds()
{
    show(greyFrame(64, 48));
    view->clear();
    module->take();
    QCOMPARE(show(greyFrame(64, 48)), releaseSoftware + buildSoftware(64, 48) + upload + stretch);
}

void tst_ZRDirectVideoView::clearOnTheHardwarePath()
{
    show(hardwareFrame(64, 48));
    view->clear();
    QCOMPARE(module->take(), black);
    QCOMPARE(show(hardwareFrame(64, 48)), releaseHardware + buildHardware() + drawHardware(64, 48));
}

void tst_ZRDirectVideoView::emptyFramesAreBlack_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("no width") << QSize(0, 48);
    QTest::newRow("no height") << QSize(64, 0);
    QTest::newRow("width below 0") << QSize(-64, 48);
    QTest::newRow("height below 0") << QSize(64, -48);
}

void tst_ZRDirectVideoView::emptyFramesAreBlack()
{
    QFETCH(const QSize, size);
    const Frame empty = greyFrame(64, 48);
    empty->width = size.width();
    empty->height = size.height();
    QCOMPARE(show(empty), QStringList());
    QCOMPARE(view->format, -1);

    show(greyFrame(64, 48));
    QCOMPARE(show(empty), black);
    QCOMPARE(view->format, software); // only clear() forgets it
    view->update(nullptr);
    QCOMPARE(module->take(), black);
    QCOMPARE(show(greyFrame(64, 48)), upload + stretch);
}

void tst_ZRDirectVideoView::failedLockPresentsTheOld()
{
    show(greyFrame(64, 48, software, 200));
    module->failing << "surface.lockRect";
    const std::vector<quint8> before = module->memory;
    LogCatcher log;

    QCOMPARE(show(greyFrame(64, 48, software, 100)), upload + stretch);

    QCOMPARE(log.lines(), QStringList{"lock failure"});
    QVERIFY(module->memory == before);
    QCOMPARE(show(greyFrame(64, 48)), upload + stretch);
    QCOMPARE(log.count("lock failure"), 2); // for each frame

    module->failing.clear();
    log.clear();
    const Frame noPicture = greyFrame(64, 48);
    noPicture->data[0] = nullptr;
    QCOMPARE(show(noPicture), upload + stretch); // it is found missing after the lock
    QCOMPARE(log.lines(), QStringList{"lock failure"});
}

void tst_ZRDirectVideoView::withoutABackBuffer()
{
    show(greyFrame(64, 48));
    module->failing << "device.getBackBuffer";
    QStringList expected = upload + stretch;
    expected.removeOne("device.stretchRect(surface, null, backBuffer, null, 2)");
    expected.removeOne("backBuffer.release()");
    QCOMPARE(show(greyFrame(64, 48)), expected);

    show(hardwareFrame(64, 48));
    module->failing << "chain.getBackBuffer";
    QCOMPARE(show(hardwareFrame(64, 48)),
        (QStringList{"device.clear(1, 0xff000000, 1, 0)", "device.beginScene()",
            "chain.getBackBuffer(0, 0)", "device.endScene()", "chain.present()"}));
}

void tst_ZRDirectVideoView::releasesAtItsEnd()
{
    show(greyFrame(64, 48));
    view.reset();
    QCOMPARE(module->take(), releaseSoftware);

    view = std::make_unique<Probe>(*module);
    show(hardwareFrame(64, 48));
    view.reset();
    QCOMPARE(module->take(), releaseHardware);

    view = std::make_unique<Probe>(*module);
    view.reset();
    QCOMPARE(module->take(), QStringList());
}

void tst_ZRDirectVideoView::copiesPlanes_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QVector<int>>("strides");
    QTest::newRow("a pitch beyond the width") << QSize(64, 48) << 96 << QVector<int>{64, 32, 32};
    QTest::newRow("strides beyond the width") << QSize(64, 48) << 64 << QVector<int>{80, 48, 48};
    QTest::newRow("odd height") << QSize(64, 49) << 64 << QVector<int>{64, 32, 32};
    QTest::newRow("height no multiple of four") << QSize(64, 50) << 64 << QVector<int>{64, 32, 32};
    QTest::newRow("odd width") << QSize(63, 48) << 64 << QVector<int>{64, 32, 32};
    QTest::newRow("odd pitch") << QSize(62, 48) << 63 << QVector<int>{64, 32, 32};
    QTest::newRow("a pitch below the width") << QSize(64, 48) << 40 << QVector<int>{64, 32, 32};
    QTest::newRow("a stride of Y below the width")
        << QSize(64, 48) << 64 << QVector<int>{50, 32, 32};
    QTest::newRow("strides of chroma below the width")
        << QSize(64, 48) << 64 << QVector<int>{64, 20, 20};
    QTest::newRow("different strides of chroma") << QSize(64, 48) << 64 << QVector<int>{64, 24, 40};
    QTest::newRow("no stride of Y") << QSize(64, 48) << 64 << QVector<int>{0, 32, 32};
    QTest::newRow("negative strides") << QSize(64, 48) << 64 << QVector<int>{-64, -32, -32};
    QTest::newRow("one pixel") << QSize(1, 1) << 64 << QVector<int>{64, 32, 32};
    QTest::newRow("two by two") << QSize(2, 2) << 64 << QVector<int>{64, 32, 32};
}

// Against the rule, byte by byte: what goes where, and nothing anywhere else.
void tst_ZRDirectVideoView::copiesPlanes()
{
    QFETCH(const QSize, size);
    QFETCH(const int, pitch);
    QFETCH(const QVector<int>, strides);
    constexpr int planeSize = 10000;
    const Frame frame = bareFrame(size.width(), size.height(), software);
    for (int plane = 0; plane < 3; ++plane) {
        frame->buf[plane] = av_buffer_alloc(planeSize);
        frame->data[plane] = frame->buf[plane]->data;
        frame->linesize[plane] = strides[plane];
        for (int i = 0; i < planeSize; ++i) {
            frame->data[plane][i] = quint8(1 + (i * 7 + plane * 85) % 250);
        }
    }
    module->pitch = pitch;
    std::vector<quint8> expected = module->memory;
    const auto copy = [&](int plane, int stride, int divisor, int start) {
        const int length = std::min({stride, pitch / divisor, size.width() / divisor});
        for (int row = 0; row < size.height() / divisor; ++row) {
            for (int x = 0; x < length; ++x) {
                expected[size_t(start + row * pitch / divisor + x)] =
                    frame->data[plane][row * stride + x];
            }
        }
    };
    const int height = size.height();
    copy(0, strides[0], 1, 0);
    copy(2, strides[1], 2, height * pitch);
    copy(1, strides[2], 2, (height + height / 4) * pitch);

    show(frame);

    QVERIFY(module->memory == expected);
}

// Each chroma plane is read with the other one's stride, and must be.
void tst_ZRDirectVideoView::chromaPlanesSwapStrides()
{
    const Frame frame = bareFrame(8, 8, software);
    for (int plane = 0; plane < 3; ++plane) {
        frame->buf[plane] = av_buffer_alloc(1000);
        frame->data[plane] = frame->buf[plane]->data;
        for (int i = 0; i < 1000; ++i) {
            frame->data[plane][i] = quint8(i);
        }
    }
    frame->linesize[0] = 8;
    frame->linesize[1] = 10;
    frame->linesize[2] = 20;
    module->pitch = 16;

    show(frame);

    const quint8 *v = module->memory.data() + 8 * 16;
    const quint8 *u = module->memory.data() + (8 + 2) * 16;
    for (int row = 0; row < 4; ++row) {
        QCOMPARE(int(v[row * 8]), row * 10); // V with the line size of U
        QCOMPARE(int(u[row * 8]), row * 20); // U with the line size of V
    }
}

void tst_ZRDirectVideoView::leavesOutPlanesThatAreMissing()
{
    module->pitch = 64;
    const Frame frame = greyFrame(64, 48, software, 200);
    frame->data[1] = nullptr;
    show(frame);
    QCOMPARE(int(module->memory[0]), 200);
    QCOMPARE(int(module->memory[48 * 64]), 128); // V
    QCOMPARE(int(module->memory[60 * 64]), 0); // U
}

void tst_ZRDirectVideoView::drawingHoldsTheMutex()
{
    QStringList unlocked;
    int looked = 0;
    module->onCall = [&](const QString &call) {
        ++looked;
        if (!lockedElsewhere(view->mutex)) {
            unlocked << call;
        }
    };
    show(greyFrame(64, 48));
    show(hardwareFrame(64, 48));
    show(hardwareFrame(32, 24));
    view->update(nullptr);
    QVERIFY(looked > 30);
    QCOMPARE(unlocked, QStringList());

    QVERIFY(view->mutex->tryLock()); // and afterwards it is free
    view->mutex->unlock();
    module->onCall = nullptr;
}

void tst_ZRDirectVideoView::updateWaitsForDrawing()
{
    const Frame first = greyFrame(64, 48);
    const Frame second = greyFrame(64, 48);
    std::unique_ptr<QThread> thread(QThread::create([&] { view->update(second.get()); }));
    module->onCall = [&](const QString &call) {
        if (call == "device.present" && !thread->isRunning()) {
            thread->start();
            QVERIFY(!thread->wait(100)); // for as long as the present takes
            QCOMPARE(view->frame->data[0], first->data[0]);
        }
    };
    view->update(first.get());
    module->onCall = nullptr;
    QVERIFY(thread->wait(60000));
    QCOMPARE(view->frame->data[0], second->data[0]);
}

void tst_ZRDirectVideoView::queuesOneCallAFrame()
{
    constexpr int frames = 5;
    CallCounter counter;
    view->installEventFilter(&counter);
    runOnThread([&] {
        for (int i = 1; i <= frames; ++i) {
            view->update(greyFrame(64, 48, software, i * 10).get());
        }
    });
    QCOMPARE(module->take(), QStringList()); // nothing is drawn on that thread

    QCoreApplication::sendPostedEvents(view.get());

    QCOMPARE(counter.calls, frames);
    const QStringList calls = module->take();
    QCOMPARE(calls.count("device.present()"), frames);
    QCOMPARE(int(module->memory[0]), frames * 10); // each showed the frame held by then

    runOnThread([&] { view->clear(); });
    QCOMPARE(view->format, -1);
    QCoreApplication::sendPostedEvents(view.get());
    QCOMPARE(module->take(), black);
    QCOMPARE(counter.calls, frames + 1);

    view->update(greyFrame(64, 48).get()); // on the GUI thread nothing is queued
    QVERIFY(module->take().contains("device.present()"));
    QCoreApplication::sendPostedEvents(view.get());
    QCOMPARE(counter.calls, frames + 1);
}

void tst_ZRDirectVideoView::staleCallsDieWithTheView()
{
    runOnThread([&] { view->update(greyFrame(64, 48).get()); });
    view.reset();
    QCoreApplication::processEvents();
    QCOMPARE(module->take(), QStringList());
}

void tst_ZRDirectVideoView::layoutFollowsTheVideo()
{
    show(greyFrame(1920, 1080));
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 75, 800, 450));
    view->resize(1000, 500);
    show(greyFrame(640, 480));
    QCOMPARE(view->displayWidget->geometry(), QRect(167, 0, 666, 500));
}

void tst_ZRDirectVideoView::layoutFollowsTheView()
{
    view->setAttribute(Qt::WA_DontShowOnScreen);
    view->show();
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 0, 800, 600)); // no video yet
    show(greyFrame(640, 480));
    view->resize(1000, 500);
    QCOMPARE(view->displayWidget->geometry(), QRect(167, 0, 666, 500));
    view->clear(); // forgets no size
    view->resize(500, 1000);
    QCOMPARE(view->displayWidget->geometry(), QRect(0, 312, 500, 375));
}

void tst_ZRDirectVideoView::paintsBlack()
{
    view->resize(70, 50);
    view->displayWidget->hide();
    const QImage image = painted(*view);
    QImage expected(image.size(), image.format());
    expected.fill(Qt::black);
    QCOMPARE(image, expected);
}

QTEST_MAIN(tst_ZRDirectVideoView)
#include "tst_ZRDirectVideoView.moc"
