#include "MetaMethods.h"
#include "ToastChecks.h"
#include "ZRToast.h"

#include <QThread>
#include <QtTest>

class tst_ZRToast : public QObject
{
    Q_OBJECT

private slots:
    void fromAnotherThread(); // first, before a table makes the types of the arguments known
    void metaObject();
    void shorterForms_data();
    void shorterForms();

    void placement_data() { ToastChecks::placementRows(); }
    void placement() { ToastChecks::placement<ZRToast>(); }
    void look() { ToastChecks::look<ZRToast>(); }
    void secondReplacesFirst() { ToastChecks::secondReplacesFirst<ZRToast>(); }
    void hides() { ToastChecks::hides<ZRToast>(); }
    void livesTwoSeconds() { ToastChecks::livesTwoSeconds<ZRToast>(); }
    void earlierTimerCutsSecondShort() { ToastChecks::earlierTimerCutsSecondShort<ZRToast>(); }
    void clickHidesAfterTheSignal() { ToastChecks::clickHidesAfterTheSignal<ZRToast>(); }
    void hostMayGoFirst() { ToastChecks::hostMayGoFirst<ZRToast>(); }
};

namespace {
void runOnThread(const std::function<void()> &job)
{
    const QScopedPointer<QThread> thread(QThread::create(job));
    thread->start();
    QVERIFY(thread->wait(30000));
}
}

void tst_ZRToast::metaObject()
{
    QCOMPARE(ownMethods(ZRToast::staticMetaObject),
        (QStringList{"public slot showToast(QString,Qt::Alignment,int,int)",
            "public slot showToast(QString,Qt::Alignment,int)",
            "public slot showToast(QString,Qt::Alignment)", "public slot showToast(QString)",
            "public slot hideToast()"}));
}

void tst_ZRToast::shorterForms_data()
{
    QTest::addColumn<int>("arguments");
    QTest::addColumn<Qt::Alignment>("alignment"); // of the full form that does the same
    QTest::addColumn<int>("marginX");
    QTest::newRow("no second margin") << 3 << Qt::Alignment(Qt::AlignRight | Qt::AlignBottom) << 7;
    QTest::newRow("no margins") << 2 << Qt::Alignment(Qt::AlignRight | Qt::AlignBottom) << 5;
    QTest::newRow("message alone") << 1 << Qt::Alignment(Qt::AlignHCenter | Qt::AlignBottom) << 5;
}

void tst_ZRToast::shorterForms()
{
    QFETCH(int, arguments);
    QFETCH(Qt::Alignment, alignment);
    QFETCH(int, marginX);
    const QString message("message");
    ZRToast toast(nullptr);
    toast.resize(300, 200);
    toast.showToast(message, alignment, marginX, 5);
    const QRect expected = ToastChecks::toastOf(toast)->geometry();
    toast.hideToast();

    // By name, as callers on other threads do.
    QGenericArgument all[] = {
        Q_ARG(QString, message), Q_ARG(Qt::Alignment, alignment), Q_ARG(int, marginX)};
    std::fill(all + arguments, all + 3, QGenericArgument());
    QVERIFY(QMetaObject::invokeMethod(&toast, "showToast", all[0], all[1], all[2]));
    QCOMPARE(ToastChecks::toastOf(toast)->geometry(), expected);
}

void tst_ZRToast::fromAnotherThread()
{
    ZRToast toast(nullptr);
    toast.resize(300, 200);
    runOnThread([&] { toast.showToast("message", Qt::AlignRight | Qt::AlignBottom, 7, 9); });
    QVERIFY(!ToastChecks::toastOf(toast)); // it waits for this thread's event loop
    QTRY_VERIFY(ToastChecks::toastOf(toast));
    const ZRLabel *label = ToastChecks::toastOf(toast);
    QCOMPARE(label->text(), QStringLiteral("message"));
    QCOMPARE(label->pos(), QPoint(300 - 7 - label->width(), 200 - 9 - label->height()));

    runOnThread([&] { toast.hideToast(); });
    QVERIFY(ToastChecks::toastOf(toast));
    QTRY_VERIFY(!ToastChecks::toastOf(toast));
}

QTEST_MAIN(tst_ZRToast)
#include "tst_ZRToast.moc"
