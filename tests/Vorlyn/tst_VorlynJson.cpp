#include "VorlynJson.h"

#include <QJsonArray>
#include <QtTest>

class tst_VorlynJson : public QObject
{
    Q_OBJECT

private slots:
    void numbers_data();
    void numbers();
    void results_data();
    void results();
    void texts();
};

void tst_VorlynJson::numbers_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<int>("number");
    QTest::newRow("number") << QJsonValue(12) << 12;
    QTest::newRow("negative number") << QJsonValue(-12) << -12;
    QTest::newRow("fraction") << QJsonValue(1.5) << 0;
    QTest::newRow("beyond int") << QJsonValue(4e9) << 0;
    QTest::newRow("text") << QJsonValue("12") << 12;
    QTest::newRow("decimal text with a leading zero") << QJsonValue("012") << 12;
    QTest::newRow("hexadecimal text") << QJsonValue("0x12") << 0;
    QTest::newRow("words") << QJsonValue("twelve") << 0;
    QTest::newRow("empty text") << QJsonValue("") << 0;
    QTest::newRow("true") << QJsonValue(true) << 1;
    QTest::newRow("false") << QJsonValue(false) << 0;
    QTest::newRow("null") << QJsonValue() << 0;
    QTest::newRow("array") << QJsonValue(QJsonArray{12}) << 0;
    QTest::newRow("object") << QJsonValue(QJsonObject{{"id", 12}}) << 0;
}

void tst_VorlynJson::numbers()
{
    QFETCH(QJsonValue, value);
    QFETCH(int, number);
    QCOMPARE(intOf({{"key", value}}, "key"), number);
    QCOMPARE(intOf({{"KEY", value}}, "key"), 0);
    QCOMPARE(idOf({{"id", value}}), number);
    QCOMPARE(idOf({}), 0);
}

void tst_VorlynJson::results_data()
{
    QTest::addColumn<QJsonObject>("reply");
    QTest::addColumn<int>("result");
    QTest::newRow("success") << QJsonObject{{"result", "success"}} << 0;
    QTest::newRow("capitals") << QJsonObject{{"result", "SUCCESS"}} << 0;
    QTest::newRow("mixed") << QJsonObject{{"result", "sUccess"}} << 0;
    QTest::newRow("other") << QJsonObject{{"result", "failure"}} << -1;
    QTest::newRow("longer") << QJsonObject{{"result", "success "}} << -1;
    QTest::newRow("empty") << QJsonObject{{"result", ""}} << -1;
    QTest::newRow("missing") << QJsonObject() << -1;
    QTest::newRow("number") << QJsonObject{{"result", 0}} << -1;
    QTest::newRow("boolean") << QJsonObject{{"result", true}} << -1;
    QTest::newRow("other case of the key") << QJsonObject{{"Result", "success"}} << -1;
}

void tst_VorlynJson::results()
{
    QFETCH(QJsonObject, reply);
    QTEST(resultOf(reply), "result");
}

void tst_VorlynJson::texts()
{
    const QJsonObject object = {{"text", "a"}, {"number", 1}, {"boolean", true}};
    QCOMPARE(stringOf(object, "text"), QString("a"));
    QCOMPARE(stringOf(object, "number"), QString());
    QCOMPARE(stringOf(object, "boolean"), QString());
    QCOMPARE(stringOf(object, "absent"), QString());
}

QTEST_GUILESS_MAIN(tst_VorlynJson)
#include "tst_VorlynJson.moc"
