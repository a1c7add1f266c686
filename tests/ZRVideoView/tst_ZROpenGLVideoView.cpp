#include "MetaMethods.h"
#include "PictureTest.h"
#include "TestCard.h"
#include "ZROpenGLPicture.h"
#include "ZROpenGLVideoView.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QThread>
#include <QtTest>

#include <type_traits>

class tst_ZROpenGLVideoView : public PictureTest
{
    Q_OBJECT

    View createView(QWidget *parent) override
    {
        auto *view = new ZROpenGLVideoView(parent);
        return {view, view};
    }

private slots:
    void isAWidgetWithOneSlot();
    void shaders();
    void holdsAReference();
    void asksForOneCallAFrame();
    void movesToAnotherWindow();
};

void tst_ZROpenGLVideoView::isAWidgetWithOneSlot()
{
    static_assert(std::is_base_of_v<QOpenGLWidget, ZROpenGLVideoView>);
    static_assert(std::is_base_of_v<ZRVideoView, ZROpenGLVideoView>);
    QCOMPARE(
        ownMethods(ZROpenGLVideoView::staticMetaObject), QStringList{"public slot notifyUpdate()"});
}

void tst_ZROpenGLVideoView::shaders()
{
    QCOMPARE(ZROpenGLPicture::vertexShader,
        "attribute vec4 vertexIn; attribute vec2 textureIn; varying vec2 textureOut; void "
        "main(void) "
        "{ gl_Position = vertexIn; textureOut = textureIn; }");
    QCOMPARE(ZROpenGLPicture::fragmentShader,
        "varying vec2 textureOut; uniform sampler2D textureY; uniform sampler2D textureU; uniform "
        "sampler2D textureV; uniform mat3 colorConversionMatrix; void main(void){ vec3 yuv; vec3 "
        "rgb; yuv.x = texture2D(textureY, textureOut).r; yuv.y = texture2D(textureU, textureOut).r "
        "- "
        "0.5; yuv.z = texture2D(textureV, textureOut).r - 0.5; rgb = colorConversionMatrix * yuv; "
        "gl_FragColor = vec4(rgb, 1); }");
}

void tst_ZROpenGLVideoView::holdsAReference()
{
    const Frame frame = greyFrame(64, 48);
    {
        ZROpenGLVideoView view;
        view.update(frame.get());
        QCOMPARE(av_buffer_get_ref_count(frame->buf[0]), 2);
        view.clear();
        QCOMPARE(av_buffer_get_ref_count(frame->buf[0]), 1);
        view.update(frame.get());
        view.update(nullptr);
        QCOMPARE(av_buffer_get_ref_count(frame->buf[0]), 1);
        view.update(frame.get());
    }
    QCOMPARE(av_buffer_get_ref_count(frame->buf[0]), 1);
}

// Counts the queued calls that reach an object.
struct CallCounter : QObject {
    bool eventFilter(QObject *, QEvent *event) override
    {
        calls += event->type() == QEvent::MetaCall;
        return false;
    }
    int calls = 0;
};

void tst_ZROpenGLVideoView::asksForOneCallAFrame()
{
    const Frame frame = greyFrame(64, 48);
    ZROpenGLVideoView view;
    CallCounter counter;
    view.installEventFilter(&counter);
    std::unique_ptr<QThread> thread(QThread::create([&] {
        for (int i = 0; i < 5; ++i) {
            view.update(frame.get());
        }
        view.clear();
    }));
    thread->start();
    QVERIFY(thread->wait(60000));
    QCOMPARE(counter.calls, 0);
    QCoreApplication::sendPostedEvents(&view);
    QCOMPARE(counter.calls, 6);

    view.update(frame.get()); // on the GUI thread nothing is queued
    QCoreApplication::sendPostedEvents(&view);
    QCOMPARE(counter.calls, 6);
}

// Which gives it a new OpenGL context.
void tst_ZROpenGLVideoView::movesToAnotherWindow()
{
    open({320, 240});
    const Frame card = TestCard::frame(320, 240, AV_PIX_FMT_YUV420P);
    view.video->update(card.get());
    const auto shown = [&] {
        const QImage shot = TestCard::shot(*view.widget);
        return TestCard::likeness(shot, shot.rect(), *card) >= 35;
    };
    QTRY_VERIFY_WITH_TIMEOUT(shown(), 20000);

    QWidget other(nullptr, Qt::X11BypassWindowManagerHint);
    other.setGeometry(500, 300, 340, 260);
    view.widget->setParent(&other);
    view.widget->move(3, 5);
    view.widget->show();
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    QTRY_VERIFY_WITH_TIMEOUT(shown(), 20000);
    view.widget->setParent(window.get());
}

QTEST_MAIN(tst_ZROpenGLVideoView)
#include "tst_ZROpenGLVideoView.moc"
