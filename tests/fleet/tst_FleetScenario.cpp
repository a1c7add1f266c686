#include "FleetScenario.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

QVector<FleetCamera> threeCameras()
{
    QVector<FleetCamera> cameras(3);
    for (int i = 0; i < 3; ++i) {
        cameras[i].position = i + 1;
        cameras[i].fields["mac"] = QStringLiteral("02:00:00:00:00:0%1").arg(i + 1);
        cameras[i].setIp(QStringLiteral("10.77.0.1%1").arg(i + 1));
    }
    return cameras;
}

}

class tst_FleetScenario : public QObject
{
    Q_OBJECT

private slots:
    void wrong_data();
    void wrong();
    void missingFile();
    void entriesInOrder();
    void everyKey();
    void factoryState();
    void streams();
    void emptyStream();
    void usualStreams();
    void nobody_data();
    void nobody();
    void rulesAreShared();
    void documentedExample();
};

void tst_FleetScenario::wrong_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    const struct {
        const char *json;
        const char *error;
    } rows[] = {
        {"{\n  \"cameras\": [\n    oops\n", "s.json: line 3, column 5: "},
        {"", "s.json: line 1, column 1: "},
        {"[]", "s.json: \"cameras\" must be an array of objects"},
        {"{}", "s.json: \"cameras\" must be an array of objects"},
        {R"({"cameras":[5]})", "s.json: \"cameras\" must be an array of objects"},
        {R"({"cameras":[],"camera":1})", "s.json: unknown key \"camera\""},
        {R"({"cameras":[{"name":"x"}]})", "s.json: cameras[0]: unknown key \"name\""},
        {R"({"cameras":[{"fields":{}}]})", "s.json: cameras[0]: the key \"camera\" is missing"},
        {R"({"cameras":[{"camera":0}]})", "s.json: cameras[0]: \"camera\" must be a number from 1"},
        {R"({"cameras":[{"camera":""}]})",
            "s.json: cameras[0]: \"camera\" must be a number from 1"},
        {R"({"cameras":[{"camera":1,"fields":[]}]})",
            "s.json: cameras[0]: \"fields\" must be an object"},
        {R"({"cameras":[{"camera":1,"wifi":{}}]})",
            "s.json: cameras[0]: \"wifi\" must be an array"},
        {R"({"cameras":[{"camera":1,"wifi-scan-ms":"5"}]})",
            "s.json: cameras[0]: \"wifi-scan-ms\" must be a whole number from 0 to 600000"},
        {R"({"cameras":[{"camera":1,"restart-seconds":-1}]})",
            "s.json: cameras[0]: \"restart-seconds\" must be a number from 0 to 3600"},
        {R"({"cameras":[{"camera":1,"stream":5}]})",
            "s.json: cameras[0]: \"stream\" must be an object"},
        {R"({"cameras":[{"camera":1,"stream":{"codec":"H.264"}}]})",
            "s.json: cameras[0].stream: unknown key \"codec\""},
        {R"({"cameras":[{"camera":1,"stream":{"video":"h264"}}]})",
            "s.json: cameras[0].stream: \"video\" must be \"H.264\", \"H.265\" or \"none\""},
        {R"({"cameras":[{"camera":1,"stream":{"audio":"MP3"}}]})",
            "s.json: cameras[0].stream: \"audio\" must be \"AAC\", \"PCMA\" or \"none\""},
        {R"({"cameras":[{"camera":1,"stream":{"size":"641x480"}}]})",
            "s.json: cameras[0].stream: \"size\" must be a size like 1280x720"},
        {R"({"cameras":[{"camera":1,"stream":{"size":"32x32"}}]})",
            "s.json: cameras[0].stream: \"size\" must be"},
        {R"({"cameras":[{"camera":1,"stream":{"size":"1280x9000"}}]})",
            "s.json: cameras[0].stream: \"size\" must be"},
        {R"({"cameras":[{"camera":1,"stream":{"size":1280}}]})",
            "s.json: cameras[0].stream: \"size\" must be"},
        {R"({"cameras":[{"camera":1,"stream":{"fps":0}}]})",
            "s.json: cameras[0].stream: \"fps\" must be a whole number from 1 to 60"},
        {R"({"cameras":[{"camera":1,"stream":{"next-size":"big"}}]})",
            "s.json: cameras[0].stream: \"next-size\" must be a size like 1280x720"},
        {R"({"cameras":[{"camera":1,"stream":{"next-size-after":-1}}]})",
            "s.json: cameras[0].stream: \"next-size-after\" must be a number from 0 to 3600"},
        {R"({"cameras":[{"camera":1,"stream":{"always":1}}]})",
            "s.json: cameras[0].stream: \"always\" must be true or false"},
        {R"({"cameras":[{"camera":1,"stream":{"closed":"yes"}}]})",
            "s.json: cameras[0].stream: \"closed\" must be true or false"},
        {R"({"cameras":[{"camera":1},
                {"camera":2,"rules":[{"on":"SetName"},{"on":"SetName","delay":1}]}]})",
            "s.json: cameras[1].rules[1]: unknown key \"delay\" in a rule on \"SetName\""},
        {R"({"cameras":[{"camera":1,"reports":{}}]})",
            "s.json: cameras[0]: \"reports\" must be an array of objects"},
        {R"({"cameras":[{"camera":1,"reports":[{"raw":"x"},{"after":1}]}]})",
            "s.json: cameras[0].reports[1]: one of \"report\" and \"raw\" must be there"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.error) << QByteArray(row.json) << row.error;
}

void tst_FleetScenario::wrong()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    QString told;
    QVERIFY(!FleetScenario().parse(json, "s.json", &told));
    QVERIFY2(told.startsWith(error), qPrintable(told));
    QVERIFY(!told.contains('\n'));
}

void tst_FleetScenario::missingFile()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("none.json");
    QString error;
    QVERIFY(!FleetScenario().load(path, &error));
    QVERIFY2(error.startsWith(path + ": "), qPrintable(error));
}

void tst_FleetScenario::entriesInOrder()
{
    FleetScenario scenario;
    QString error;
    QVERIFY(scenario.parse(R"({"cameras":[
        {"camera":"all","fields":{"name":"all","model":7}},
        {"camera":2,"fields":{"name":"second"}},
        {"camera":"02:00:00:00:00:03","fields":{"mac":""}},
        {"camera":"02:00:00:00:00:03","fields":{"name":"third"}}]})",
        "s", &error));
    QVector<FleetCamera> cameras = threeCameras();
    QVERIFY2(scenario.apply(cameras, &error), qPrintable(error));
    QCOMPARE(cameras[0].field("name"), QString("all"));
    QCOMPARE(cameras[1].field("name"), QString("second"));
    QCOMPARE(cameras[2].field("name"), QString("third"));
    QCOMPARE(cameras[2].fields["mac"], QJsonValue(""));
    QCOMPARE(cameras[1].fields["model"], QJsonValue(7));
}

void tst_FleetScenario::everyKey()
{
    FleetScenario scenario;
    QString error;
    QVERIFY2(scenario.parse(R"({"note":"n","cameras":[{"camera":1,"note":"n",
        "fields":{"ip":"10.77.0.50"},"sd":{"totalsize":"64"},"wifi":[{"wifiname":"W","Signal":"5"}],
        "wifi-scan-ms":50,"restart-seconds":0.25,"after-reset":{"ip":"10.77.0.51"},
        "after-upgrade":{"ip":"10.77.0.52"},"rules":[{"on":"GetSD","silent":true,"note":"n"}],
        "reports":[{"raw":"x"},{"on":"GetSD","report":{}}]}]})",
                 "s", &error),
        qPrintable(error));
    QVector<FleetCamera> cameras = threeCameras();
    QVERIFY2(scenario.apply(cameras, &error), qPrintable(error));
    FleetCamera &camera = cameras.first();
    QCOMPARE(camera.field("ip"), QString("10.77.0.50"));
    QCOMPARE(camera.field("rtsppath1"), QString("rtsp://10.77.0.50:8554/live1"));
    QCOMPARE(camera.sd, (QJsonObject{{"totalsize", "64"}}));
    QCOMPARE(camera.wifi.size(), 1);
    QCOMPARE(camera.wifiScanMs, 50);
    QCOMPARE(camera.restartMs, 250);
    QCOMPARE(camera.afterReset["ip"].toString(), QString("10.77.0.51"));
    QCOMPARE(camera.afterUpgrade["ip"].toString(), QString("10.77.0.52"));
    QVERIFY(camera.rules.take("GetSD"));
    QVERIFY(cameras.last().rules.isEmpty());
    QCOMPARE(camera.reports.size(), 2);
    QCOMPARE(camera.reports.last().on, QString("GetSD"));
    QVERIFY(cameras.last().reports.isEmpty());
}

void tst_FleetScenario::factoryState()
{
    FleetScenario scenario;
    QString error;
    QVERIFY(
        scenario.parse(R"({"cameras":[{"camera":1,"fields":{"name":"made so"}}]})", "s", &error));
    QVector<FleetCamera> cameras = threeCameras();
    QVERIFY(scenario.apply(cameras, &error));
    cameras[0].fields["name"] = "told so";
    cameras[0].reset(false);
    QCOMPARE(cameras[0].field("name"), QString("made so"));
    QCOMPARE(cameras[2].factory, cameras[2].fields);
}

// Later entries change what they tell and leave the rest.
void tst_FleetScenario::streams()
{
    FleetScenario scenario;
    QString error;
    QVERIFY2(scenario.parse(R"({"cameras":[{"camera":"all","stream":{"video":"H.265","audio":"PCMA",
        "size":"640x480","fps":10,"next-size":"1920x1080","next-size-after":2.5,"note":"n"}},
        {"camera":2,"stream":{"audio":"none","always":true}},
        {"camera":3,"stream":{"video":"none","closed":true}}]})",
                 "s", &error),
        qPrintable(error));
    QVector<FleetCamera> cameras = threeCameras();
    QVERIFY2(scenario.apply(cameras, &error), qPrintable(error));
    const FleetStreamShape &first = cameras[0].stream;
    QCOMPARE(first.video, FleetStreamShape::H265);
    QCOMPARE(first.audio, FleetStreamShape::Pcma);
    QCOMPARE(first.size, QSize(640, 480));
    QCOMPARE(first.fps, 10);
    QCOMPARE(first.nextSize, QSize(1920, 1080));
    QCOMPARE(first.nextSizeAfter, 2.5);
    QVERIFY(!first.always && !first.closed);
    QCOMPARE(cameras[1].stream.video, FleetStreamShape::H265);
    QCOMPARE(cameras[1].stream.audio, FleetStreamShape::NoAudio);
    QVERIFY(cameras[1].stream.always);
    QCOMPARE(cameras[2].stream.video, FleetStreamShape::NoVideo);
    QCOMPARE(cameras[2].stream.audio, FleetStreamShape::Pcma);
    QVERIFY(cameras[2].stream.closed);
    QCOMPARE(cameras[2].stream.description()["size"].toString(), QString());
    QCOMPARE(first.description()["size"].toString(), QString("640x480"));
}

void tst_FleetScenario::emptyStream()
{
    FleetScenario scenario;
    QString error;
    QVERIFY(scenario.parse(R"({"cameras":[{"camera":"all","stream":{"video":"none"}},
        {"camera":2,"stream":{"audio":"none"}}]})",
        "s.json", &error));
    QVector<FleetCamera> cameras = threeCameras();
    QVERIFY(!scenario.apply(cameras, &error));
    QCOMPARE(error, QString("s.json: the stream of camera 2 has neither picture nor sound"));
}

void tst_FleetScenario::usualStreams()
{
    const QJsonObject first = FleetStreamShape::usual(1).description();
    QCOMPARE(first, (QJsonObject{{"video", "H.264"}, {"audio", "AAC"}, {"size", "1280x720"}}));
    for (int position = 1; position <= 20; ++position) {
        const FleetStreamShape shape = FleetStreamShape::usual(position);
        QVERIFY(!shape.isEmpty());
        QVERIFY(!shape.always && !shape.closed && !shape.nextSize.isValid());
        QCOMPARE(shape.fps, 25);
        QCOMPARE(shape.description(), FleetStreamShape::usual(position + 8).description());
    }
}

void tst_FleetScenario::nobody_data()
{
    QTest::addColumn<QByteArray>("camera");
    QTest::newRow("position") << QByteArray("4");
    QTest::newRow("mac") << QByteArray("\"02:00:00:00:00:09\"");
}

void tst_FleetScenario::nobody()
{
    QFETCH(QByteArray, camera);
    FleetScenario scenario;
    QString error;
    QVERIFY(scenario.parse("{\"cameras\":[{\"camera\":" + camera + "}]}", "s.json", &error));
    QVector<FleetCamera> cameras = threeCameras();
    QVERIFY(!scenario.apply(cameras, &error));
    QCOMPARE(error, QString("s.json: cameras[0]: \"camera\" names none of the 3 cameras"));
}

void tst_FleetScenario::rulesAreShared()
{
    FleetScenario scenario;
    QString error;
    QVERIFY(scenario.parse(R"({"cameras":[{"camera":"all","rules":[
        {"on":"GetSD","times":1,"silent":true},{"on":"SetName","silent":true}]}]})",
        "s", &error));
    QVector<FleetCamera> cameras = threeCameras();
    QVERIFY(scenario.apply(cameras, &error));
    QCOMPARE(scenario.unusedRules(), QStringList({"cameras[0].rules[0]", "cameras[0].rules[1]"}));
    QVERIFY(cameras[0].rules.take("GetSD"));
    QVERIFY(!cameras[0].rules.take("GetSD"));
    QVERIFY(cameras[1].rules.take("GetSD"));
    QCOMPARE(scenario.unusedRules(), QStringList{"cameras[0].rules[1]"});
}

// The scenario of docs/fleet.md is one that works.
void tst_FleetScenario::documentedExample()
{
    QFile page(QStringLiteral(FLEET_PAGE));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QByteArray text = page.readAll();
    const int start = text.indexOf("```json\n");
    QVERIFY(start > 0);
    const QByteArray example = text.mid(start + 8, text.indexOf("\n```", start + 8) - start - 8);
    FleetScenario scenario;
    QString error;
    QVERIFY2(scenario.parse(example, "fleet.md", &error), qPrintable(error));
    QVERIFY(!scenario.unusedRules().isEmpty());
}

QTEST_GUILESS_MAIN(tst_FleetScenario)
#include "tst_FleetScenario.moc"
