#include "VorlynReport.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using Function = VorlynReport::Function;
using Content = VorlynReport::Content;

Q_DECLARE_METATYPE(VorlynReport::Function)
Q_DECLARE_METATYPE(VorlynReport::Content)

namespace {
QJsonObject message(const QJsonObject &more)
{
    QJsonObject object = {
        {"id", -1}, {"method", "report"}, {"srcid", "cam0"}, {"destid", "0200000000AA"}};
    for (auto key = more.begin(); key != more.end(); ++key)
        object[key.key()] = key.value();
    return object;
}

QJsonObject parsed(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

constexpr struct {
    const char *word;
    Function function;
    Content content;
} functions[] = {
    {"bree", Function::Bree, Content::Status},
    {"fall", Function::Fall, Content::Status},
    {"crying", Function::Crying, Content::Status},
    {"keycall", Function::KeyCall, Content::Status},
    {"keyword", Function::KeyWord, Content::Status},
    {"millimeterwave", Function::MillimeterWave, Content::Status},
    {"temperature", Function::Temperature, Content::Temperature},
    {"exttemperature", Function::ExtTemperature, Content::Temperature},
    {"sdcard", Function::SDCard, Content::Sizes},
    {"wifi", Function::WiFi, Content::Networks},
    {"microphone", Function::Microphone, Content::Nothing},
    {"speaker", Function::Speaker, Content::Nothing},
    {"image", Function::Image, Content::Nothing},
    {"confirm", Function::Confirm, Content::Nothing},
};

// With all that any function carries.
QJsonObject fullMessage(const QString &function)
{
    return message({{"function", function}, {"status", "On"}, {"temperature", 36.5},
        {"totalsize", 200}, {"freesize", 100}, {"result", "success"}});
}

const char *keyOf(Content content)
{
    switch (content) {
    case Content::Status:
        return "status";
    case Content::Temperature:
        return "temperature";
    case Content::Sizes:
        return "totalsize";
    case Content::Networks:
        return "result";
    case Content::Nothing:
        break;
    }
    return nullptr;
}
}

class tst_VorlynReport : public QObject
{
    Q_OBJECT

private slots:
    void empty();
    void functions_data();
    void functionWords_data() { functions_data(); }
    void functionWords();
    void missingContent_data() { functions_data(); }
    void missingContent();
    void values();
    void temperatures_data();
    void temperatures();
    void sizes_data();
    void sizes();
    void networks();
    void failedScan();
    void malformed_data();
    void malformed();
    void documentedReports();
};

void tst_VorlynReport::empty()
{
    const VorlynReport report;
    QVERIFY(!report.isValid());
    QCOMPARE(report.function, Function::None);
    QCOMPARE(VorlynReport::contentOf(Function::None), Content::Nothing);
}

void tst_VorlynReport::functions_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<Function>("function");
    QTest::addColumn<Content>("content");
    for (const auto &row : functions)
        QTest::newRow(row.word) << QString(row.word) << row.function << row.content;
}

void tst_VorlynReport::functionWords()
{
    QFETCH(QString, word);
    QFETCH(Function, function);
    for (const QString &spelt : {word, word.toUpper()}) {
        const VorlynReport report = VorlynReport::fromJson(fullMessage(spelt));
        QVERIFY(report.isValid());
        QCOMPARE(report.function, function);
        QCOMPARE(report.srcid, QString("cam0"));
    }
    QTEST(VorlynReport::contentOf(function), "content");
    QVERIFY(!VorlynReport::fromJson(fullMessage(word + ' ')).isValid());
}

void tst_VorlynReport::missingContent()
{
    QFETCH(QString, word);
    QFETCH(Content, content);
    const char *key = keyOf(content);
    QJsonObject object = message({{"function", word}});
    QCOMPARE(VorlynReport::fromJson(object).isValid(), key == nullptr);
    if (!key)
        return;
    object = fullMessage(word);
    for (const QJsonValue &value : {QJsonValue(), QJsonValue(true), QJsonValue(QJsonObject())}) {
        object[key] = value;
        QVERIFY(!VorlynReport::fromJson(object).isValid());
    }
}

// Each function reads its own keys only.
void tst_VorlynReport::values()
{
    const VorlynReport bree = VorlynReport::fromJson(fullMessage("bree"));
    QCOMPARE(bree.status, QString("On"));
    QCOMPARE(bree.temperature, 0.0);
    QCOMPARE(bree.totalSize, 0);
    const VorlynReport card = VorlynReport::fromJson(fullMessage("sdcard"));
    QCOMPARE(card.status, QString());
    QCOMPARE(card.totalSize, 200);
    QCOMPARE(card.freeSize, 100);
    const VorlynReport unknownWord =
        VorlynReport::fromJson(message({{"function", "bree"}, {"status", ""}}));
    QVERIFY(unknownWord.isValid());
    QCOMPARE(unknownWord.status, QString(""));
}

void tst_VorlynReport::temperatures_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<double>("temperature");
    QTest::newRow("number") << QJsonValue(36.456) << true << 36.456;
    QTest::newRow("whole number") << QJsonValue(-4) << true << -4.0;
    QTest::newRow("text") << QJsonValue("36.456") << true << 36.456;
    QTest::newRow("words") << QJsonValue("warm") << false << 0.0;
    QTest::newRow("empty text") << QJsonValue("") << false << 0.0;
    QTest::newRow("no number") << QJsonValue("nan") << false << 0.0;
    QTest::newRow("endless") << QJsonValue("inf") << false << 0.0;
    QTest::newRow("array") << QJsonValue(QJsonArray{36}) << false << 0.0;
}

void tst_VorlynReport::temperatures()
{
    QFETCH(QJsonValue, value);
    for (const char *function : {"temperature", "exttemperature"}) {
        const VorlynReport report =
            VorlynReport::fromJson(message({{"function", function}, {"temperature", value}}));
        QTEST(report.isValid(), "valid");
        QTEST(report.temperature, "temperature");
    }
}

void tst_VorlynReport::sizes_data()
{
    QTest::addColumn<QJsonValue>("total");
    QTest::addColumn<QJsonValue>("free");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<int>("totalSize");
    QTest::addColumn<int>("freeSize");
    QTest::newRow("numbers") << QJsonValue(1024) << QJsonValue(10) << true << 1024 << 10;
    QTest::newRow("texts") << QJsonValue("1024") << QJsonValue("10") << true << 1024 << 10;
    QTest::newRow("no card") << QJsonValue(0) << QJsonValue(0) << true << 0 << 0;
    QTest::newRow("no free size") << QJsonValue(1024) << QJsonValue() << false << 0 << 0;
    QTest::newRow("words") << QJsonValue("big") << QJsonValue(10) << false << 0 << 0;
    QTest::newRow("largest") << QJsonValue(INT_MAX) << QJsonValue(INT_MIN) << true << INT_MAX
                             << INT_MIN;
    const QJsonValue notWhole[] = {30412.5, 1e12, -1e12, "1024.5", "1e4", "1000000000000", ""};
    for (const QJsonValue &value : notWhole) {
        const QString name =
            value.isString() ? '"' + value.toString() + '"' : QString::number(value.toDouble());
        QTest::newRow(qPrintable("total " + name)) << value << QJsonValue(10) << false << 0 << 0;
        QTest::newRow(qPrintable("free " + name)) << QJsonValue(1024) << value << false << 0 << 0;
    }
}

void tst_VorlynReport::sizes()
{
    QFETCH(QJsonValue, total);
    QFETCH(QJsonValue, free);
    const VorlynReport report = VorlynReport::fromJson(
        message({{"function", "sdcard"}, {"totalsize", total}, {"freesize", free}}));
    QTEST(report.isValid(), "valid");
    QTEST(report.totalSize, "totalSize");
    QTEST(report.freeSize, "freeSize");
}

void tst_VorlynReport::networks()
{
    const VorlynReport report = VorlynReport::fromJson(parsed(
        R"({"method":"report","srcid":"cam0","function":"wifi","result":"SUCCESS","WifiList":[
            {"wifiname":"Home","Signal":80},{"wifiname":"","Signal":1},
            {"wifiname":"Text","Signal":"70"},{"Signal":5},"none"]})"));
    QVERIFY(report.isValid());
    QCOMPARE(report.scanResult, 0);
    QCOMPARE(report.networks.size(), 2);
    QCOMPARE(report.networks.first().name, QString("Home"));
    QCOMPARE(report.networks.first().signal, 80);
    QCOMPARE(report.networks.last().name, QString("Text"));
    QCOMPARE(report.networks.last().signal, 0);
}

void tst_VorlynReport::failedScan()
{
    const VorlynReport report =
        VorlynReport::fromJson(message({{"function", "wifi"}, {"result", "failure"}}));
    QVERIFY(report.isValid());
    QCOMPARE(report.scanResult, -1);
    QVERIFY(report.networks.isEmpty());
}

void tst_VorlynReport::malformed_data()
{
    QTest::addColumn<QJsonObject>("object");
    QJsonObject object = fullMessage("bree");
    QTest::newRow("nothing") << QJsonObject();
    const auto changed = [&object](const char *key, const QJsonValue &value) {
        QJsonObject copy = object;
        copy[key] = value;
        return copy;
    };
    QTest::newRow("a reply") << changed("method", "GetSD");
    QTest::newRow("another case") << changed("method", "Report");
    QTest::newRow("no method") << changed("method", QJsonValue());
    QTest::newRow("nobody") << changed("srcid", "");
    QTest::newRow("sender as number") << changed("srcid", 7);
    QTest::newRow("no function") << changed("function", "");
    QTest::newRow("networks as text")
        << message({{"function", "wifi"}, {"result", "success"}, {"WifiList", "Home"}});
    QTest::newRow("function as number") << changed("function", 1);
    QTest::newRow("function without reports") << changed("function", "beep");
    QTest::newRow("status as number") << changed("status", 1);
}

void tst_VorlynReport::malformed()
{
    QFETCH(QJsonObject, object);
    const VorlynReport report = VorlynReport::fromJson(object);
    QVERIFY(!report.isValid());
    QCOMPARE(report.srcid, QString());
}

void tst_VorlynReport::documentedReports()
{
    QFile page(QStringLiteral(PROTOCOL_PAGE));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(page.readAll());
    const int section = text.indexOf("\n## Reports\n");
    const int start = text.indexOf("```json\n", section);
    QVERIFY(section > 0 && start > section);
    const QString block = text.mid(start + 8, text.indexOf("\n```", start + 8) - start - 8);
    const QStringList lines = QString(block).replace("\n ", " ").split('\n');
    QCOMPARE(lines.size(), 5);
    for (const QString &line : lines) {
        const QJsonObject object = parsed(line.toUtf8());
        QVERIFY2(VorlynReport::fromJson(object).isValid(), qPrintable(line));
        QCOMPARE(object["id"], QJsonValue(-1));
        QVERIFY(!object.contains("mac"));
    }
    for (const auto &row : functions)
        QVERIFY2(text.indexOf(QString("| \"%1\"").arg(row.word), section) > 0
                || text.indexOf(QString(", \"%1\"").arg(row.word), section) > 0,
            row.word);
}

QTEST_GUILESS_MAIN(tst_VorlynReport)
#include "tst_VorlynReport.moc"
