#include "ZRProgressDialog.h"

#include "MetaMethods.h"
#include "ModalDriver.h"

#include <QLabel>
#include <QProgressBar>
#include <QSemaphore>
#include <QtTest>

class tst_ZRProgressDialog : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void atFirst();
    void geometry_data();
    void geometry();
    void setProgress_data();
    void setProgress();
    void setMessage();
    void jobDrivesItBySignals();
    void messageMayComeBeforeExec();
    void endsItsJobInTheDestructor();
};

namespace {
QLabel *messageLabel(const QWidget &dialog)
{
    return dialog.findChild<QLabel *>("messageLabel");
}

QProgressBar *progressBar(const QWidget &dialog)
{
    return dialog.findChild<QProgressBar *>("progressBar");
}

class TalkingJob : public ZRProgressDialog
{
public:
    explicit TalkingJob(int &messages) : ZRProgressDialog(nullptr), messages(messages) { }
    ~TalkingJob() override { finishThread(); }

    void run() override
    {
        while (!isStopped()) {
            emit _setMessage(QString::number(++messages));
            emit _setProgress(0.5f);
            QThread::msleep(1);
        }
        emit _close();
    }

    int &messages;
};
}

void tst_ZRProgressDialog::metaObject()
{
    QCOMPARE(ownMethods(ZRProgressDialog::staticMetaObject),
        (QStringList{"public signal _setProgress(float)", "public signal _setMessage(QString)",
            "public slot setProgress(float)", "public slot setMessage(QString)"}));
    QCOMPARE(ZRProgressDialog::staticMetaObject.superClass(), &ZRWaitDialog::staticMetaObject);
}

void tst_ZRProgressDialog::atFirst()
{
    const ZRProgressDialog dialog(nullptr);
    QCOMPARE(dialog.size(), QSize(300, 60));
    QCOMPARE(messageLabel(dialog)->text(), QString());
    QCOMPARE(progressBar(dialog)->minimum(), 0);
    QCOMPARE(progressBar(dialog)->maximum(), 0);
    QVERIFY(dialog.isStopped());
}

void tst_ZRProgressDialog::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QRect>("message");
    QTest::addColumn<QRect>("bar");
    QTest::newRow("its own") << QSize(300, 60) << QRect(5, 10, 290, 30) << QRect(5, 40, 290, 10);
    QTest::newRow("larger") << QSize(451, 200) << QRect(5, 10, 441, 30) << QRect(5, 40, 441, 10);
}

void tst_ZRProgressDialog::geometry()
{
    QFETCH(QSize, size);
    QFETCH(QRect, message);
    QFETCH(QRect, bar);
    ZRProgressDialog dialog(nullptr);
    dialog.resize(size);
    dialog.show();
    QCOMPARE(messageLabel(dialog)->geometry(), message);
    QCOMPARE(progressBar(dialog)->geometry(), bar);
}

void tst_ZRProgressDialog::setProgress_data()
{
    QTest::addColumn<float>("progress");
    QTest::addColumn<int>("value");
    QTest::newRow("0") << 0.0f << 0;
    QTest::newRow("half") << 0.5f << 50;
    QTest::newRow("truncated") << 0.999f << 99;
    QTest::newRow("1") << 1.0f << 100;
    QTest::newRow("above") << 2.5f << 250;
}

void tst_ZRProgressDialog::setProgress()
{
    QFETCH(float, progress);
    QFETCH(int, value);
    ZRProgressDialog dialog(nullptr);
    dialog.setProgress(progress);
    QCOMPARE(progressBar(dialog)->value(), value);
    QCOMPARE(progressBar(dialog)->maximum(), 0); // goes on showing that it is busy
    QCOMPARE(progressBar(dialog)->minimum(), 0);
}

void tst_ZRProgressDialog::setMessage()
{
    ZRProgressDialog dialog(nullptr);
    dialog.setMessage("Searching devices");
    QCOMPARE(messageLabel(dialog)->text(), QStringLiteral("Searching devices"));
}

void tst_ZRProgressDialog::jobDrivesItBySignals()
{
    int messages = 0;
    TalkingJob dialog(messages);
    dialog.start();
    ModalDriver<TalkingJob> driver([](TalkingJob &job) {
        QTRY_VERIFY(messageLabel(job)->text().toInt() > 5);
        QTRY_COMPARE(progressBar(job)->value(), 50);
        job.reject();
    });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QVERIFY(messages > 5);
}

// The job speaks and ends at once; both wait for exec(), in order.
void tst_ZRProgressDialog::messageMayComeBeforeExec()
{
    class ShortJob : public ZRProgressDialog
    {
    public:
        using ZRProgressDialog::ZRProgressDialog;
        ~ShortJob() override { finishThread(); }
        void run() override
        {
            emit _setMessage("done");
            emit _setProgress(0.25f);
            emit _close();
            ended.release();
        }
        QSemaphore ended;
    } dialog(nullptr);
    dialog.start();
    QVERIFY(dialog.ended.tryAcquire(1, 30000));
    QCOMPARE(messageLabel(dialog)->text(), QString());
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QCOMPARE(messageLabel(dialog)->text(), QStringLiteral("done"));
    QCOMPARE(progressBar(dialog)->value(), 25);
}

void tst_ZRProgressDialog::endsItsJobInTheDestructor()
{
    for (int i = 0; i < 20; ++i) {
        int messages = 0;
        {
            TalkingJob dialog(messages);
            dialog.start();
            QTRY_VERIFY(!messageLabel(dialog)->text().isEmpty());
        }
        QVERIFY(messages > 0);
    }
}

QTEST_MAIN(tst_ZRProgressDialog)
#include "tst_ZRProgressDialog.moc"
