#include "PictureTest.h"
#include "ZRDirectVideoView.h"
#include "ZRMemoryDirect3D.h"
#include "ZROpenGLPainter.h"

#include <QtTest>

class tst_ZROpenGLPainter : public PictureTest
{
    Q_OBJECT

    View createView(QWidget *parent) override
    {
        auto *view = new ZRDirectVideoView(parent, module);
        return {view, view};
    }

    ZRMemoryDirect3D module{ZROpenGLPainter::create};

private slots:
    void knowsProcessorsByName_data();
    void knowsProcessorsByName();
    void aVirtualScreenHasNone();
    void takesItsWindowAway();
};

void tst_ZROpenGLPainter::knowsProcessorsByName_data()
{
    QTest::addColumn<QByteArray>("renderer");
    QTest::addColumn<bool>("hardware");
    QTest::newRow("none") << QByteArray() << false;
    QTest::newRow("Mesa") << QByteArray("llvmpipe (LLVM 15.0.6, 256 bits)") << false;
    QTest::newRow("Mesa, older") << QByteArray("Gallium 0.4 on softpipe") << false;
    QTest::newRow("OpenSWR") << QByteArray("SWR (LLVM 11.0.0, 256 bits)") << false;
    QTest::newRow("classic") << QByteArray("Software Rasterizer") << false;
    QTest::newRow("macOS") << QByteArray("Apple Software Renderer") << false;
    QTest::newRow("Intel") << QByteArray("Mesa Intel(R) UHD Graphics 620 (KBL GT2)") << true;
    QTest::newRow("AMD") << QByteArray("AMD Radeon RX 580 Series (polaris10, LLVM 15.0.6)") << true;
    QTest::newRow("NVIDIA") << QByteArray("NVIDIA GeForce GTX 1650/PCIe/SSE2") << true;
}

void tst_ZROpenGLPainter::knowsProcessorsByName()
{
    QFETCH(const QByteArray, renderer);
    QFETCH(const bool, hardware);
    QCOMPARE(ZROpenGLPainter::isHardware(renderer), hardware);
}

void tst_ZROpenGLPainter::aVirtualScreenHasNone()
{
    QVERIFY(!ZROpenGLPainter::hasHardware());
}

void tst_ZROpenGLPainter::takesItsWindowAway()
{
    QWidget widget(nullptr, Qt::X11BypassWindowManagerHint);
    widget.setGeometry(20, 20, 64, 48);
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    std::unique_ptr<ZRVideoPainter> painter = ZROpenGLPainter::create(&widget);
    QVERIFY(painter);
    QCOMPARE(widget.findChildren<QWidget *>().size(), 1);
    painter.reset();
    QCOMPARE(widget.findChildren<QWidget *>().size(), 0);
}

QTEST_MAIN(tst_ZROpenGLPainter)
#include "tst_ZROpenGLPainter.moc"
