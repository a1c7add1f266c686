#include "MetaMethods.h"
#include "TestLog.h"
#include "WiFiInfoWidget.h"

#include <QLabel>
#include <QtTest>

#include <thread>

class tst_WiFiInfoWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER); }
    void metaObject();
    void lists();
    void places_data();
    void places();
    void anotherThreadChangesNothing();
    void followsTheLanguage();

private:
    static void verifyPlaces(const WiFiInfoWidget &widget, const QSize &size)
    {
        QCOMPARE(widget.findChild<QLabel *>("titleLabel")->geometry(),
            QRect(10, 0, size.width() - 10, 30));
        QCOMPARE(widget.findChild<QListWidget *>("wifiList")->geometry(),
            QRect(1, 30, size.width() - 2, size.height() - 31));
    }
};

void tst_WiFiInfoWidget::metaObject()
{
    const QMetaObject &meta = WiFiInfoWidget::staticMetaObject;
    QCOMPARE(meta.className(), "WiFiInfoWidget");
    QCOMPARE(meta.superClass(), &ZRWidget::staticMetaObject);
    QCOMPARE(ownMethods(meta), QStringList());
    QCOMPARE(ownProperties(meta), QStringList());
}

void tst_WiFiInfoWidget::lists()
{
    const struct {
        QVector<VorlynDeviceWiFiInfo> infos;
        QStringList texts;
    } rows[] = {
        {{{"b", 3}, {"a", -70}, {"b", 3}}, {"b (3)", "a (-70)", "b (3)"}}, // the order stays
        {{{"%2 %1", 1000}}, {"%2 %1 (1000)"}},
        {{}, {}},
    };
    WiFiInfoWidget widget(nullptr);
    QCOMPARE(TestLog::networksOf(widget), QStringList());
    for (const auto &row : rows) {
        widget.setInfos(row.infos);
        QCOMPARE(TestLog::networksOf(widget), row.texts);
    }
}

void tst_WiFiInfoWidget::places_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("small") << QSize(160, 100);
    QTest::newRow("large") << QSize(300, 401);
}

// A list that comes before the widget shows is placed with it, and again with each new size.
void tst_WiFiInfoWidget::places()
{
    QFETCH(QSize, size);
    WiFiInfoWidget widget(nullptr);
    widget.resize(100, 50);
    widget.setInfos({{"a", 1}});
    verifyPlaces(widget, QSize(100, 50));
    widget.show();
    widget.resize(size);
    verifyPlaces(widget, size);
}

// The call that crosses over finds no method of that name.
void tst_WiFiInfoWidget::anotherThreadChangesNothing()
{
    WiFiInfoWidget widget(nullptr);
    widget.setInfos({{"a", 1}});
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression("No such method WiFiInfoWidget::setInfos"));
    std::thread([&widget] { widget.setInfos({{"b", 2}}); }).join();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    QCOMPARE(TestLog::networksOf(widget), QStringList("a (1)"));
}

void tst_WiFiInfoWidget::followsTheLanguage()
{
    ZRLocalize::loadLanguage("en");
    const WiFiInfoWidget widget(nullptr);
    const auto *title = widget.findChild<QLabel *>("titleLabel");
    QCOMPARE(title->text(), ZRLocalize::translate("WiFi List"));
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    QCOMPARE(title->text(), ZRLocalize::translate("WiFi List"));
    QCOMPARE(title->text(), QString::fromUtf8("WiFi列表"));
}

QTEST_MAIN(tst_WiFiInfoWidget)
#include "tst_WiFiInfoWidget.moc"
