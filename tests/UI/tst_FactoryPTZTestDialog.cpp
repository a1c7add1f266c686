#include "CameraBench.h"
#include "Devices.h"
#include "FactoryTestDialogs.h"
#include "PTZButton.h"
#include "PTZPad.h"
#include "VorlynSDK.h"

#include <QJsonObject>
#include <QSignalSpy>
#include <QtTest>

#include <future>
#include <memory>

namespace {
// Each request and the answer to it, on a thread of its own as the dialog waits on the GUI's.
class Camera
{
public:
    Camera(CameraBench &bench, int requests) :
        talk(std::async(std::launch::async, [&bench, requests] {
            QStringList heard;
            for (int i = 0; i < requests; ++i) {
                const QJsonObject request = bench.answerNext("success");
                heard << QStringLiteral("%1 %2 %3")
                             .arg(request["method"].toString(), request["command"].toString(),
                                 CameraBench::targets(request).join(','));
            }
            return heard;
        }))
    { }

    // Blocks until all have come, or long enough.
    QStringList heard() { return talk.get(); }
    bool isDone() const
    {
        return talk.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

private:
    std::future<QStringList> talk;
};

PTZPad *pad(FactoryPTZTestDialog &dialog)
{
    return dialog.findChild<PTZPad *>("pad");
}

PTZButton *button(FactoryPTZTestDialog &dialog, const char *name)
{
    return dialog.findChild<PTZButton *>(name);
}
}

class tst_FactoryPTZTestDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { bench.reset(); }
    void movesWhileHeld_data();
    void movesWhileHeld();
    void closingStopsTheMotor();
    void destructorStopsTheMotor();
    void silentWithoutAPress();
    void releaseDuringTheWait();
    void withoutSdk();

private:
    std::unique_ptr<CameraBench> bench;
};

void tst_FactoryPTZTestDialog::init()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
}

void tst_FactoryPTZTestDialog::movesWhileHeld_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("command");
    for (const char *command : {"up", "down", "left", "right"})
        QTest::newRow(command) << QString("%1Button").arg(command) << command;
}

void tst_FactoryPTZTestDialog::movesWhileHeld()
{
    QFETCH(QString, name);
    QFETCH(QString, command);
    FactoryPTZTestDialog dialog(nullptr);
    dialog.setDevice(makeDevices({"a"})[0]);
    dialog.show();
    PTZButton *button = ::button(dialog, qPrintable(name));
    Camera moving(*bench, 1);
    QTest::mousePress(button, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(moving.isDone(), 30000);
    QCOMPARE(moving.heard(), QStringList(QString("SetPTZ %1 cam0").arg(command)));
    Camera stopping(*bench, 1);
    QTest::mouseRelease(button, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(stopping.isDone(), 30000);
    QCOMPARE(stopping.heard(), QStringList("SetPTZ stop cam0"));
}

// Esc while an arrow is held: the pad hears of the release when the dialog hides.
void tst_FactoryPTZTestDialog::closingStopsTheMotor()
{
    Camera camera(*bench, 2);
    {
        FactoryPTZTestDialog dialog(nullptr);
        dialog.setDevice(makeDevices({"a"})[0]);
        dialog.show();
        const QSignalSpy commands(pad(dialog), &PTZPad::command);
        QTest::mousePress(button(dialog, "leftButton"), Qt::LeftButton);
        QTRY_COMPARE(commands.count(), 1);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
    }
    QCOMPARE(camera.heard(), QStringList({"SetPTZ left cam0", "SetPTZ stop cam0"}));
    QVERIFY(bench->isQuiet());
}

void tst_FactoryPTZTestDialog::destructorStopsTheMotor()
{
    Camera camera(*bench, 2);
    auto dialog = std::make_unique<FactoryPTZTestDialog>(nullptr);
    dialog->setDevice(makeDevices({"a"})[0]);
    dialog->show();
    {
        const QSignalSpy commands(pad(*dialog), &PTZPad::command);
        QTest::mousePress(button(*dialog, "upButton"), Qt::LeftButton);
        QTRY_COMPARE(commands.count(), 1);
    }
    dialog.reset();
    QCOMPARE(camera.heard(), QStringList({"SetPTZ up cam0", "SetPTZ stop cam0"}));
    QVERIFY(bench->isQuiet());
}

void tst_FactoryPTZTestDialog::silentWithoutAPress()
{
    {
        FactoryPTZTestDialog dialog(nullptr);
        dialog.setDevice(makeDevices({"a"})[0]);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    }
    QVERIFY(bench->isQuiet());
}

// A camera that does not answer: the press blocks, and the stop goes out after it.
void tst_FactoryPTZTestDialog::releaseDuringTheWait()
{
    FactoryPTZTestDialog dialog(nullptr);
    dialog.setDevice(makeDevices({"a"})[0]);
    dialog.show();
    PTZButton *button = ::button(dialog, "rightButton");
    const QSignalSpy commands(pad(dialog), &PTZPad::command);
    QTest::mousePress(button, Qt::LeftButton);
    QTimer::singleShot(0, button, [button] { QTest::mouseRelease(button, Qt::LeftButton); });
    QTRY_COMPARE_WITH_TIMEOUT(commands.count(), 2, 30000);
    QVERIFY(!button->isPressed());
    for (const char *command : {"right", "stop"})
        QCOMPARE(bench->request()["command"].toString(), QString(command));
    QVERIFY(bench->isQuiet());
}

void tst_FactoryPTZTestDialog::withoutSdk()
{
    bench.reset();
    VorlynSDK::destroyInstance();
    FactoryPTZTestDialog dialog(nullptr);
    dialog.show();
    const QSignalSpy commands(pad(dialog), &PTZPad::command);
    QTest::mouseClick(button(dialog, "upButton"), Qt::LeftButton);
    QTRY_COMPARE(commands.count(), 2);
    QVERIFY(dialog.isVisible());
}

QTEST_MAIN(tst_FactoryPTZTestDialog)
#include "tst_FactoryPTZTestDialog.moc"
