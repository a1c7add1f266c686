#include "FactoryWiFiTestDialog.h"
#include "TestLog.h"

#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QtTest>

#include <future>

namespace {
class Dialog : public FactoryWiFiTestDialog
{
public:
    Dialog() : FactoryWiFiTestDialog(nullptr) { }

    QLabel *title() { return findChild<QLabel *>("titleLabel"); }
    QListWidget *list() { return findChild<QListWidget *>("wifiList"); }
    QProgressBar *progress() { return findChild<QProgressBar *>("progress"); }
    QPushButton *pass() { return findChild<QPushButton *>("passButton"); }
    QPushButton *fail() { return findChild<QPushButton *>("failButton"); }

    QStringList texts() const { return TestLog::networksOf(*this); }
};

const QVector<VorlynDeviceWiFiInfo> networks = {
    {"Zoo", 80}, {"Home", -42}, {"", 0}, {"Home", 7}, {"%2 %1", 5}, {"客厅", 99}};
const QStringList networkTexts = {
    "Zoo (80)", "Home (-42)", " (0)", "Home (7)", "%2 %1 (5)", "客厅 (99)"};
}

class tst_FactoryWiFiTestDialog : public QObject
{
    Q_OBJECT

private slots:
    void atFirst();
    void infosWaitForTheUpdate();
    void updateListsThem();
    void secondUpdateClears();
    void failedScan_data();
    void failedScan();
    void geometry_data();
    void geometry();
    void updateLaysOutAnew();
    void progressIsFivePixelsHigh();
    void updateCrossesThreads();
    void infosDoNotCross();
    void slotsByName();
    void bothQueuedByName();
    void isTranslated();
};

void tst_FactoryWiFiTestDialog::atFirst()
{
    Dialog dialog;
    dialog.show();
    QVERIFY(dialog.progress()->isVisible());
    QCOMPARE(dialog.progress()->minimum(), 0);
    QCOMPARE(dialog.progress()->maximum(), 0); // busy
    QVERIFY(!dialog.list()->isVisible());
    QCOMPARE(dialog.title()->text(), QString("Loading WiFi Info"));
    QCOMPARE(dialog.windowTitle(), QString("Test WiFi"));
    QVERIFY(dialog.pass()->isEnabled());
    QVERIFY(dialog.fail()->isEnabled());
}

void tst_FactoryWiFiTestDialog::infosWaitForTheUpdate()
{
    Dialog dialog;
    dialog.show();
    dialog.setInfos(-1, networks);
    QCoreApplication::processEvents();
    QVERIFY(dialog.progress()->isVisible());
    QVERIFY(!dialog.list()->isVisible());
    QCOMPARE(dialog.texts(), QStringList());
    QCOMPARE(dialog.title()->text(), QString("Loading WiFi Info"));
}

void tst_FactoryWiFiTestDialog::updateListsThem()
{
    Dialog dialog;
    dialog.show();
    dialog.setInfos(0, networks);
    dialog.updateWiFi();
    QVERIFY(!dialog.progress()->isVisible());
    QVERIFY(dialog.list()->isVisible());
    QCOMPARE(dialog.texts(), networkTexts); // in their order
    QCOMPARE(dialog.title()->text(), QString("Test WiFi"));
}

void tst_FactoryWiFiTestDialog::secondUpdateClears()
{
    Dialog dialog;
    dialog.setInfos(0, networks);
    dialog.updateWiFi();
    dialog.updateWiFi();
    QCOMPARE(dialog.texts(), networkTexts);
    dialog.setInfos(0, {{"Other", 1}});
    QCOMPARE(dialog.texts(), networkTexts);
    dialog.updateWiFi();
    QCOMPARE(dialog.texts(), QStringList("Other (1)"));
    dialog.setInfos(0, {});
    dialog.updateWiFi();
    QCOMPARE(dialog.texts(), QStringList());
}

void tst_FactoryWiFiTestDialog::failedScan_data()
{
    QTest::addColumn<int>("result");
    QTest::newRow("timeout") << -1;
    QTest::newRow("another failure") << -3;
    QTest::newRow("above 0") << 1;
}

// Only the title tells; what was found all the same is listed.
void tst_FactoryWiFiTestDialog::failedScan()
{
    QFETCH(int, result);
    Dialog dialog;
    dialog.show();
    dialog.setInfos(result, {});
    dialog.updateWiFi();
    QCOMPARE(dialog.title()->text(), QString("Unable to search WiFi list"));
    QCOMPARE(dialog.texts(), QStringList());
    QVERIFY(dialog.list()->isVisible());
    QVERIFY(!dialog.progress()->isVisible());

    dialog.setInfos(result, networks);
    dialog.updateWiFi();
    QCOMPARE(dialog.title()->text(), QString("Unable to search WiFi list"));
    QCOMPARE(dialog.texts(), networkTexts);

    dialog.setInfos(0, networks);
    dialog.updateWiFi();
    QCOMPARE(dialog.title()->text(), QString("Test WiFi"));
}

void tst_FactoryWiFiTestDialog::geometry_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize size : {QSize(420, 440), QSize(421, 441), QSize(300, 200), QSize(803, 602),
             QSize(501, 333), QSize(640, 480)})
        QTest::newRow(qPrintable(QString("%1 x %2").arg(size.width()).arg(size.height()))) << size;
}

void tst_FactoryWiFiTestDialog::geometry()
{
    QFETCH(QSize, size);
    Dialog dialog;
    dialog.pass()->setText("Go");
    dialog.fail()->setText("A far longer caption");
    dialog.resize(size);
    dialog.setInfos(0, networks);
    dialog.updateWiFi();

    const int width = size.width();
    const int height = size.height();
    const int half = width / 2;
    QPushButton sized(&dialog);
    const auto buttonWidth = [&sized](const QPushButton *button) {
        sized.setText(button->text());
        sized.setDefault(button->isDefault());
        sized.adjustSize();
        return sized.width();
    };
    const int pass = buttonWidth(dialog.pass());
    const int fail = buttonWidth(dialog.fail());
    QVERIFY(pass < fail);
    QCOMPARE(dialog.size(), size);
    QCOMPARE(dialog.title()->geometry(), QRect(0, 10, width, 40));
    QCOMPARE(dialog.pass()->geometry(), QRect((half - pass - 20) / 2, height - 50, pass + 20, 30));
    QCOMPARE(dialog.fail()->geometry(),
        QRect(half + (half - fail - 20) / 2, height - 50, fail + 20, 30));
    const int band = height - 50 - 50 - 20;
    QCOMPARE(dialog.list()->geometry(), QRect(10, 60, width - 20, band));
    // Ends at the dialog's edge, although it begins 30 pixels from the other.
    QCOMPARE(dialog.progress()->geometry(), QRect(30, 60 + (band - 5) / 2, width - 30, 5));
}

void tst_FactoryWiFiTestDialog::updateLaysOutAnew()
{
    Dialog dialog;
    dialog.show();
    dialog.resize(500, 400);
    QTRY_COMPARE(dialog.title()->geometry(), QRect(0, 10, dialog.width(), 40));
    const QRect before = dialog.pass()->geometry();
    dialog.pass()->setText("A far longer caption");
    dialog.list()->setGeometry(0, 0, 1, 1);
    dialog.updateWiFi();
    QCOMPARE(dialog.list()->geometry().topLeft(), QPoint(10, 60));
    QVERIFY(dialog.pass()->width() > before.width());
    const QRect after = dialog.pass()->geometry();
    dialog.updateWiFi(); // does not widen it again
    QCOMPARE(dialog.pass()->geometry(), after);
}

void tst_FactoryWiFiTestDialog::progressIsFivePixelsHigh()
{
    Dialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.progress()->height(), 5);
    QVERIFY(dialog.list()->geometry().top() < dialog.progress()->geometry().top());
    QVERIFY(dialog.list()->geometry().bottom() > dialog.progress()->geometry().bottom());
}

void tst_FactoryWiFiTestDialog::updateCrossesThreads()
{
    Dialog dialog;
    dialog.setInfos(0, networks);
    std::future<void> call = std::async(std::launch::async, [&dialog] { dialog.updateWiFi(); });
    QVERIFY(call.wait_for(std::chrono::seconds(30)) == std::future_status::ready);
    QCOMPARE(dialog.texts(), QStringList());
    QTRY_COMPARE(dialog.texts(), networkTexts);
}

// What another thread sets is there at once, while the GUI thread stands still.
void tst_FactoryWiFiTestDialog::infosDoNotCross()
{
    Dialog dialog;
    std::async(std::launch::async, [&dialog] { dialog.setInfos(0, networks); }).wait();
    dialog.updateWiFi();
    QCOMPARE(dialog.texts(), networkTexts);
}

void tst_FactoryWiFiTestDialog::slotsByName()
{
    Dialog dialog;
    QVERIFY(QMetaObject::invokeMethod(&dialog, "setInfos", Qt::DirectConnection, Q_ARG(int, 0),
        Q_ARG(QVector<VorlynDeviceWiFiInfo>, networks)));
    QVERIFY(QMetaObject::invokeMethod(&dialog, "updateWiFi", Qt::QueuedConnection));
    QTRY_COMPARE(dialog.texts(), networkTexts);
}

// From another thread, in their order.
void tst_FactoryWiFiTestDialog::bothQueuedByName()
{
    Dialog dialog;
    std::async(std::launch::async, [&dialog] {
        for (const int result : {-1, 0}) {
            QMetaObject::invokeMethod(&dialog, "setInfos", Qt::QueuedConnection, Q_ARG(int, result),
                Q_ARG(QVector<VorlynDeviceWiFiInfo>, networks));
        }
        QMetaObject::invokeMethod(&dialog, "updateWiFi", Qt::QueuedConnection);
        QMetaObject::invokeMethod(&dialog, "setInfos", Qt::QueuedConnection, Q_ARG(int, -1),
            Q_ARG(QVector<VorlynDeviceWiFiInfo>, QVector<VorlynDeviceWiFiInfo>()));
    }).wait();
    QCOMPARE(dialog.texts(), QStringList());
    QTRY_COMPARE(dialog.texts(), networkTexts); // of the call before it
    QCOMPARE(dialog.title()->text(), QString("Test WiFi"));
    dialog.updateWiFi();
    QCOMPARE(dialog.texts(), QStringList());
    QCOMPARE(dialog.title()->text(), QString("Unable to search WiFi list"));
}

void tst_FactoryWiFiTestDialog::isTranslated()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    Dialog dialog;
    dialog.show();
    QStringList texts{
        dialog.windowTitle(), dialog.title()->text(), dialog.pass()->text(), dialog.fail()->text()};
    for (const int result : {0, -1}) {
        dialog.setInfos(result, {});
        dialog.updateWiFi();
        texts << dialog.title()->text();
    }
    QStringList expected;
    for (const char *key : {"Test WiFi", "Loading WiFi Info", "Pass", "Failure", "Test WiFi",
             "Unable to search WiFi list"})
        expected << ZRLocalize::translate(key);
    ZRLocalize::loadLanguage("none");
    QCOMPARE(texts, expected);
    QVERIFY(!texts.contains("Test WiFi"));
}

QTEST_MAIN(tst_FactoryWiFiTestDialog)
#include "tst_FactoryWiFiTestDialog.moc"
