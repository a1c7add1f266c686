#include "FleetReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

namespace {
QJsonObject parsed(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}
}

class tst_FleetReport : public QObject
{
    Q_OBJECT

private slots:
    void leastEntry();
    void everyKey();
    void wrong_data();
    void wrong();
    void envelope();
    void keysLieOverTheEnvelope();
    void raw();
};

void tst_FleetReport::leastEntry()
{
    FleetReport report;
    QCOMPARE(report.read(parsed(R"({"report":{}})")), QString());
    QCOMPARE(report.on, QString("any"));
    QCOMPARE(report.afterSeconds, 0.0);
    QCOMPARE(report.everySeconds, 1.0);
    QCOMPARE(report.times, 1);
    QCOMPARE(report.count, 1);
}

void tst_FleetReport::everyKey()
{
    FleetReport report;
    QCOMPARE(
        report.read(parsed(R"({"on":"WifiScan","after":2.5,"every":0.01,"times":7,"count":10000,
        "report":{"function":"bree"},"note":"n"})")),
        QString());
    QCOMPARE(report.on, QString("WifiScan"));
    QCOMPARE(report.afterSeconds, 2.5);
    QCOMPARE(report.everySeconds, 0.01);
    QCOMPARE(report.times, 7);
    QCOMPARE(report.count, 10000);
    QCOMPARE(report.keys, parsed(R"({"function":"bree"})"));
}

void tst_FleetReport::wrong_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("problem");
    const QString oneOf = "one of \"report\" and \"raw\" must be there";
    const struct {
        const char *json;
        QString problem;
    } rows[] = {
        {R"({})", oneOf},
        {R"({"report":{},"raw":""})", oneOf},
        {R"({"report":[]})", "\"report\" must be an object"},
        {R"({"raw":1})", "\"raw\" must be a text"},
        {R"({"raw":"","befor":1})", "unknown key \"befor\""},
        {R"({"raw":"","on":"upload"})", "\"on\" must be the name of a method or \"any\""},
        {R"({"raw":"","key":""})", "\"key\" must be a word"},
        {R"({"raw":"","key":"a b"})", "\"key\" must be a word"},
        {R"({"raw":"","key":1})", "\"key\" must be a word"},
        {R"({"raw":"","key":"b","on":"any"})", "only one of \"key\" and \"on\" may be there"},
        {R"({"raw":"","after":-1})", "\"after\" must be a number from 0 to 3600"},
        {R"({"raw":"","every":0})", "\"every\" must be a number above 0, up to 3600"},
        {R"({"raw":"","times":0})", "\"times\" must be a whole number from 1"},
        {R"({"raw":"","count":0})", "\"count\" must be a whole number from 1 to 1000000"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.json) << QByteArray(row.json) << row.problem;
}

void tst_FleetReport::wrong()
{
    QFETCH(QByteArray, json);
    FleetReport report;
    QTEST(report.read(parsed(json)), "problem");
}

void tst_FleetReport::envelope()
{
    FleetReport report;
    report.keys = {{"function", "bree"}, {"status", "body"}};
    QCOMPARE(report.text("cam", "pc"),
        QByteArray(R"({"destid":"pc","function":"bree","id":-1,"method":"report","srcid":"cam",)"
                   R"("status":"body"})"));
}

void tst_FleetReport::keysLieOverTheEnvelope()
{
    FleetReport report;
    report.keys = {{"srcid", "another"}, {"id", 0}, {"destid", 7}};
    QCOMPARE(report.text("cam", "pc"),
        QByteArray(R"({"destid":7,"id":0,"method":"report","srcid":"another"})"));
}

void tst_FleetReport::raw()
{
    FleetReport report;
    QCOMPARE(report.read({{"raw", R"({"method":)"}}), QString());
    QCOMPARE(report.text("cam", "pc"), QByteArray(R"({"method":)"));
    FleetReport empty;
    QCOMPARE(empty.read({{"raw", ""}}), QString());
    QCOMPARE(empty.text("cam", "pc"), QByteArray());
}

QTEST_GUILESS_MAIN(tst_FleetReport)
#include "tst_FleetReport.moc"
