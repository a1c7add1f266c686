#include "CameraPeer.h"
#include "LogCatcher.h"
#include "TestNetwork.h"
#include "VorlynReport.h"
#include "VorlynSDK.h"

#include <QJsonArray>
#include <QtTest>

#include <future>
#include <memory>

// What the client does with what a camera tells by itself.
class tst_VorlynSDKReports : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void nothingToTake();
    void oldestFirst();
    void ofAnotherWorkstation();
    void isNoAnswerToTheFirstRequest();
    void withoutIdIsTheFirstAnswer();
    void isNoSearchAnswer();
    void waitsThrowThemAway();

private:
    std::unique_ptr<QJsonObject> take() const
    {
        return std::unique_ptr<QJsonObject>(VorlynSDK::instance()->takeMessage());
    }
    void waitForMessages(int count) const;

    std::unique_ptr<LogCatcher> log;
    std::unique_ptr<CameraPeer> camera;
};

namespace {
const char mac[] = "0200000000AA"; // of veth-a

QJsonObject report(const QString &status, const QJsonValue &id = -1)
{
    return {{"id", id}, {"method", "report"}, {"srcid", "cam0"}, {"destid", mac},
        {"function", "bree"}, {"status", status}, {"mac", "02:56:4C:00:00:01"}};
}

VorlynDevice device()
{
    VorlynDevice result;
    result.setValue("srcid", "cam0");
    return result;
}
}

void tst_VorlynSDKReports::init()
{
    log = std::make_unique<LogCatcher>();
    camera = std::make_unique<CameraPeer>("10.77.0.2");
    QVERIFY(camera->isOpen());
    VorlynSDK::createInstance();
    VorlynSDK::instance()->startNetwork(
        TestNetwork::interface("veth-a"), TestNetwork::entry("10.77.0.1"));
    QTRY_COMPARE(log->count("setsockopt SO_SNDTIMEO 1:0 -> 0"), 2);
}

void tst_VorlynSDKReports::cleanup()
{
    VorlynSDK::destroyInstance();
    camera.reset();
    log.reset();
}

void tst_VorlynSDKReports::waitForMessages(int count) const
{
    QTRY_COMPARE(log->beginning("recv ").size(), count);
}

void tst_VorlynSDKReports::nothingToTake()
{
    QVERIFY(!take());
}

void tst_VorlynSDKReports::oldestFirst()
{
    for (const char *status : {"on", "body", "fall"})
        QVERIFY(camera->reply(report(status)));
    waitForMessages(3);
    for (const char *status : {"on", "body", "fall"}) {
        const auto message = take();
        QVERIFY(message);
        QCOMPARE(*message, report(status));
        QCOMPARE(VorlynReport::fromJson(*message).status, QString(status));
    }
    QVERIFY(!take());
}

void tst_VorlynSDKReports::ofAnotherWorkstation()
{
    QJsonObject other = report("on");
    other["destid"] = "0200000000AB";
    QVERIFY(camera->reply(other));
    QVERIFY(camera->reply(report("body")));
    waitForMessages(1);
    QCOMPARE(*take(), report("body"));
    QVERIFY(!take());
}

// Its id is 0.
void tst_VorlynSDKReports::isNoAnswerToTheFirstRequest()
{
    auto result = std::async(std::launch::async,
        [] { return VorlynSDK::instance()->setDeviceName({device()}, "Nursery"); });
    const QJsonObject request = camera->receiveRequest();
    QCOMPARE(request["id"], QJsonValue(0));
    QJsonObject refusal = report("on");
    refusal["result"] = "failure";
    for (int i = 0; i < 20; ++i)
        QVERIFY(camera->reply(refusal));
    QVERIFY(camera->reply(QJsonObject{{"id", 0}, {"destid", mac}, {"result", "success"}}));
    QCOMPARE(result.get(), 0);
}

// Which is why a report has an id.
void tst_VorlynSDKReports::withoutIdIsTheFirstAnswer()
{
    auto result = std::async(std::launch::async,
        [] { return VorlynSDK::instance()->setDeviceName({device()}, "Nursery"); });
    QVERIFY(!camera->receiveRequest().isEmpty());
    QVERIFY(camera->reply(report("on", QJsonValue::Undefined)));
    QCOMPARE(result.get(), -1);
}

void tst_VorlynSDKReports::isNoSearchAnswer()
{
    QVector<VorlynDevice> devices;
    auto search = std::async(
        std::launch::async, [&devices] { VorlynSDK::instance()->searchDevices(devices, 1); });
    const QJsonObject request = camera->receiveRequest();
    QVERIFY(camera->reply(report("on")));
    QVERIFY(camera->reply(
        QJsonObject{{"id", request["id"]}, {"destid", mac}, {"mac", "02:56:4C:00:00:02"}}));
    search.get();
    QCOMPARE(devices.size(), 1);
    QCOMPARE(devices.first().mac(), QString("02:56:4C:00:00:02"));
}

void tst_VorlynSDKReports::waitsThrowThemAway()
{
    for (int i = 0; i < 5; ++i)
        QVERIFY(camera->reply(report("on")));
    waitForMessages(5);
    const std::unique_ptr<QJsonObject> reply(VorlynSDK::instance()->waitResponse(0, 0.2));
    QVERIFY(!reply);
    QVERIFY(!take());
}

QTEST_GUILESS_MAIN(tst_VorlynSDKReports)
#include "tst_VorlynSDKReports.moc"
