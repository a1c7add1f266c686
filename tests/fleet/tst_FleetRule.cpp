#include "FleetFrame.h"
#include "FleetRule.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>
#include <QtEndian>

namespace {

QJsonObject parse(const char *json)
{
    return QJsonDocument::fromJson(json).object();
}

FleetRulePointer rule(const char *json)
{
    const FleetRulePointer rule(new FleetRule);
    const QString problem = rule->read(parse(json));
    if (!problem.isEmpty())
        qFatal("%s", qPrintable(problem));
    return rule;
}

QJsonObject objectOf(const QByteArray &datagram)
{
    return QJsonDocument::fromJson(datagram.mid(8)).object();
}

}

class tst_FleetRule : public QObject
{
    Q_OBJECT

private slots:
    void wrong_data();
    void wrong();
    void timesAndAfter();
    void firstThatFits();
    void any();
    void bodyFaults_data();
    void bodyFaults();
    void idTypes_data();
    void idTypes();
    void size();
    void malformed();
    void lengthError();
    void cut();
    void silent();
    void copies();
    void burst();
    void delays();
    void httpFaults();
    void streamFaults_data();
    void streamFaults();
};

void tst_FleetRule::wrong_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("problem");
    const struct {
        const char *json;
        const char *problem;
    } rows[] = {
        {R"({"silent":true})", "the key \"on\" is missing"},
        {R"({"on":"setname"})", "\"on\" must be the name of a method"},
        {R"({"on":5})", "\"on\" must be the name of a method"},
        {R"({"on":"SetName","dely-ms":5})", "unknown key \"dely-ms\" in a rule on \"SetName\""},
        {R"({"on":"SetName","status":500})", "unknown key \"status\""},
        {R"({"on":"upload","copies":2})", "unknown key \"copies\" in a rule on \"upload\""},
        {R"({"on":"stream","copies":2})", "unknown key \"copies\" in a rule on \"stream\""},
        {R"({"on":"page","garbage":2})", "unknown key \"garbage\" in a rule on \"page\""},
        {R"({"on":"stream","status":200})", "\"status\" must be a whole number from 300 to 999"},
        {R"({"on":"stream","silent":1})", "\"silent\" must be true"},
        {R"({"on":"stream","reset":false})", "\"reset\" must be true"},
        {R"({"on":"stream","garbage":0})", "\"garbage\" must be a whole number from 1"},
        {R"({"on":"stream","freeze-after":-1})",
            "\"freeze-after\" must be a number from 0 to 3600"},
        {R"({"on":"stream","close-after":"1"})", "\"close-after\" must be a number from 0 to 3600"},
        {R"({"on":"stream","lose-every":0})", "\"lose-every\" must be a whole number from 1"},
        {R"({"on":"stream","corrupt-every":1.5})", "\"corrupt-every\" must be a whole number"},
        {R"({"on":"SetName","delay-ms":-1})", "\"delay-ms\" must be a whole number from 0"},
        {R"({"on":"SetName","delay-ms":1.5})", "\"delay-ms\" must be a whole number from 0"},
        {R"({"on":"SetName","delay-ms":"5"})", "\"delay-ms\" must be a whole number from 0"},
        {R"({"on":"SetName","silent":false})", "\"silent\" must be true"},
        {R"({"on":"SetName","times":0})", "\"times\" must be a whole number from 1"},
        {R"({"on":"SetName","after":-1})", "\"after\" must be"},
        {R"({"on":"SetName","apply":1})", "\"apply\" must be true or false"},
        {R"({"on":"SetName","set":[]})", "\"set\" must be an object"},
        {R"({"on":"SetName","remove":"result"})", "\"remove\" must be an array of texts"},
        {R"({"on":"SetName","remove":[1]})", "\"remove\" must be an array of texts"},
        {R"({"on":"SetName","id-as":"number"})", "\"id-as\" must be \"text\" or \"boolean\""},
        {R"({"on":"SetName","copies":0})", "\"copies\" must be"},
        {R"({"on":"SetName","size":70000})", "\"size\" must be"},
        {R"({"on":"upload","status":99})", "\"status\" must be"},
        {R"({"on":"upload","Result":"0"})", "\"Result\" must be a whole number"},
        {R"({"on":"page","body":5})", "\"body\" must be a text"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.json) << QByteArray(row.json) << row.problem;
}

void tst_FleetRule::wrong()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, problem);
    const QString told = FleetRule().read(parse(json));
    QVERIFY2(told.startsWith(problem), qPrintable(told));
}

void tst_FleetRule::timesAndAfter()
{
    const FleetRulePointer shared = rule(R"({"on":"GetSD","times":2,"after":1})");
    FleetRules first;
    first.append(shared);
    FleetRules second = first;
    const QVector<bool> expected{false, true, true, false, false};
    for (bool met : expected) {
        QCOMPARE(!first.take("SetName").isNull(), false); // doesn't count
        QCOMPARE(!first.take("GetSD").isNull(), met);
    }
    QCOMPARE(shared->used, 2);
    second.take("GetSD");
    QVERIFY(second.take("GetSD")); // each camera has its own count
    QCOMPARE(shared->used, 3);
}

void tst_FleetRule::firstThatFits()
{
    FleetRules rules;
    rules.append(rule(R"({"on":"GetSD","times":1,"copies":2})"));
    rules.append(rule(R"({"on":"GetSD","times":1,"copies":3})"));
    QCOMPARE(rules.take("GetSD")->faults["copies"].toInt(), 2);
    QCOMPARE(rules.take("GetSD")->faults["copies"].toInt(), 3);
    QVERIFY(!rules.take("GetSD"));
}

void tst_FleetRule::any()
{
    FleetRules rules;
    rules.append(rule(R"({"on":"any"})"));
    QVERIFY(rules.take("search"));
    QVERIFY(rules.take("SetName"));
    QVERIFY(!rules.take("upload"));
    QVERIFY(!rules.take("page"));
}

void tst_FleetRule::bodyFaults_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("other case") << QByteArray(R"({"on":"any","set":{"result":"SUCCESS"}})")
                                << QByteArray(R"({"id":3,"result":"SUCCESS","destid":"W"})");
    QTest::newRow("missing") << QByteArray(R"({"on":"any","remove":["result","none"]})")
                             << QByteArray(R"({"id":3,"destid":"W"})");
    QTest::newRow("other reader and numbers")
        << QByteArray(R"({"on":"any","set":{"destid":"X","httpport":80,"mac":""}})")
        << QByteArray(R"({"id":3,"result":"success","destid":"X","httpport":80,"mac":""})");
    QTest::newRow("set, then remove")
        << QByteArray(R"({"on":"any","set":{"a":1,"b":null},"remove":["a"]})")
        << QByteArray(R"({"id":3,"result":"success","destid":"W","b":null})");
}

void tst_FleetRule::bodyFaults()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, expected);
    FleetReply reply;
    reply.body = parse(R"({"id":3,"result":"success","destid":"W"})");
    reply.spoil(*rule(json));
    QCOMPARE(reply.datagrams().size(), 1);
    QCOMPARE(objectOf(reply.datagrams().first()), parse(expected));
}

void tst_FleetRule::idTypes_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<int>("id");
    QTest::addColumn<QJsonObject>("expected");
    QTest::newRow("text") << QByteArray("text") << 12 << QJsonObject{{"id", "12"}};
    QTest::newRow("true") << QByteArray("boolean") << 1 << QJsonObject{{"id", true}};
    QTest::newRow("false") << QByteArray("boolean") << 0 << QJsonObject{{"id", false}};
}

void tst_FleetRule::idTypes()
{
    QFETCH(QByteArray, type);
    QFETCH(int, id);
    FleetReply reply;
    reply.body = {{"id", id}};
    reply.spoil(*rule("{\"on\":\"any\",\"id-as\":\"" + type + "\"}"));
    QTEST(objectOf(reply.datagrams().first()), "expected");
}

void tst_FleetRule::size()
{
    for (int size : {2047, 2048, 2049, 9000}) {
        FleetReply reply;
        reply.body = {{"id", 3}};
        reply.size = size;
        const QByteArray datagram = reply.datagrams().first();
        QCOMPARE(datagram.size(), size);
        QCOMPARE(int(qFromBigEndian<quint32>(datagram.constData())), size);
        QCOMPARE(objectOf(datagram)["id"].toInt(), 3);
    }
}

void tst_FleetRule::malformed()
{
    FleetReply reply;
    reply.body = {{"id", 3}};
    reply.spoil(*rule(R"({"on":"any","malformed":true})"));
    QCOMPARE(reply.datagrams(), QVector<QByteArray>{FleetFrame::encode("{\"id\":3")});
}

void tst_FleetRule::lengthError()
{
    FleetReply reply;
    reply.body = {{"id", 3}};
    reply.spoil(*rule(R"({"on":"any","length-error":-4})"));
    QCOMPARE(reply.datagrams(), QVector<QByteArray>{FleetFrame::encode("{\"id\":3}", -4)});
}

void tst_FleetRule::cut()
{
    FleetReply reply;
    reply.body = {{"id", 3}};
    reply.spoil(*rule(R"({"on":"any","cut":3})"));
    QCOMPARE(reply.datagrams(), QVector<QByteArray>{QByteArray(3, '\0')});
}

void tst_FleetRule::silent()
{
    FleetReply reply;
    reply.spoil(*rule(R"({"on":"any","silent":true,"copies":3,"burst":4})"));
    QVERIFY(reply.datagrams().isEmpty());
}

void tst_FleetRule::copies()
{
    FleetReply reply;
    reply.body = {{"id", 3}};
    reply.spoil(*rule(R"({"on":"any","copies":3})"));
    QCOMPARE(reply.datagrams(), QVector<QByteArray>(3, FleetFrame::encode("{\"id\":3}")));
}

void tst_FleetRule::burst()
{
    FleetReply reply;
    reply.body = {{"id", 3}};
    reply.spoil(*rule(R"({"on":"any","burst":2})"));
    const QVector<QByteArray> expected{FleetFrame::encode("{\"id\":1000000}"),
        FleetFrame::encode("{\"id\":1000001}"), FleetFrame::encode("{\"id\":3}")};
    QCOMPARE(reply.datagrams(), expected);
}

void tst_FleetRule::delays()
{
    FleetReply reply;
    reply.delayMs = 300; // of the camera itself
    reply.spoil(*rule(R"({"on":"any","delay-ms":500})"));
    QCOMPARE(reply.delayMs, 800);
}

void tst_FleetRule::httpFaults()
{
    FleetHttpAnswer answer;
    answer.spoil(*rule(R"({"on":"upload","Result":-7,"status":500,"delay-ms":20})"));
    QCOMPARE(answer.body, QByteArray("{\"Result\":-7}"));
    QCOMPARE(answer.contentType, QByteArray("application/json"));
    QCOMPARE(answer.status, 500);
    QCOMPARE(answer.delayMs, 20);

    answer = FleetHttpAnswer();
    answer.spoil(*rule(R"({"on":"upload","body":"[1]","content-type":"application/json"})"));
    QCOMPARE(answer.body, QByteArray("[1]"));
    QCOMPARE(answer.contentType, QByteArray("application/json"));
    QVERIFY(!answer.silent);

    answer = FleetHttpAnswer();
    answer.spoil(*rule(R"({"on":"page","silent":true,"reset-after":0})"));
    QVERIFY(answer.silent);
    QCOMPARE(answer.resetAfter, qint64(0));
}

void tst_FleetRule::streamFaults_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<bool>("any");
    QTest::addColumn<bool>("answersItself");
    QTest::newRow("none") << QByteArray(R"({"on":"stream","times":3})") << false << false;
    QTest::newRow("no delay") << QByteArray(R"({"on":"stream","delay-ms":0})") << false << false;
    for (const char *fault : {"\"status\":404", "\"silent\":true", "\"garbage\":9"})
        QTest::newRow(fault) << QByteArray("{\"on\":\"stream\",") + fault + '}' << true << true;
    for (const char *fault : {"\"reset\":true", "\"delay-ms\":1", "\"freeze-after\":0",
             "\"close-after\":0", "\"lose-every\":1", "\"corrupt-every\":1"})
        QTest::newRow(fault) << QByteArray("{\"on\":\"stream\",") + fault + '}' << true << false;
}

void tst_FleetRule::streamFaults()
{
    QFETCH(QByteArray, json);
    FleetRules rules;
    rules.append(rule(json.constData()));
    for (const char *other : {"SetName", "page", "upload"})
        QVERIFY(!rules.take(other));
    const FleetRulePointer taken = rules.take("stream");
    QVERIFY(taken);
    FleetStreamFaults faults;
    faults.spoil(*taken);
    QTEST(faults.any(), "any");
    QTEST(faults.answersItself(), "answersItself");
}

QTEST_GUILESS_MAIN(tst_FleetRule)
#include "tst_FleetRule.moc"
