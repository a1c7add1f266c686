#include "VorlynDeviceMPToolWidget.h"
#include "WiFiInfoWidget.h"
#include "ZRLabel.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextBlock>
#include <QTextEdit>
#include <QtTest>

namespace {
class Panel : public VorlynDeviceMPToolWidget
{
public:
    Panel() : VorlynDeviceMPToolWidget(nullptr) { }
    using VorlynDeviceMPToolWidget::logEdit;
    using VorlynDeviceMPToolWidget::macEdit;

    // With a device, a finished run and a scan.
    void fill()
    {
        VorlynDevice device;
        device.setMac("02:56:4C:00:00:01");
        device.setName("Camera-0001");
        device.setIp("10.77.0.11");
        device.setIpMode("DHCP");
        device.setP2pid("VRLN-000417-HKJPT");
        device.setFunctionId("PAC,WIFI");
        device.setValue("appVersion", "1.4.2.17");
        setDevice(device);
        firmwareLabel->setText("1.4.3.bin");
        versionLabel->setText("1.4.3");
        wifiInfoWidget->setInfos({{"Workshop", 82}, {"Nursery-5G", 64}, {"Guest", 31}});

        const QString banner = "************************%1***********************";
        const QColor blue(32, 32, 224);
        add(blue, banner.arg(translate("Start Auto Test")));
        add(Qt::black, translate("Name") + " : Camera-0001");
        add(Qt::black, translate("Mac") + " : 02:56:4C:00:00:01");
        const auto result = [this](const char *key, bool pass, const char *value) {
            add(pass ? Qt::black : Qt::red,
                translate(key) + " : " + translate(pass ? "Pass" : "Failure") + value);
        };
        result("Auto Test App Version Result", false, " 1.4.2");
        result("Auto Test SDCard Result", true, " 3.5 / 29.6992(GB)");
        result("Test Speaker Result", true, "");
        result("Test IR-cut Night Result", true, "");
        result("Test IR-cut Day Result", true, "");
        result("Test White Light On Result", true, "");
        result("Test White Light Off Result", false, "");
        add(blue, banner.arg(translate("End Auto Test")));
    }

private:
    void add(const QColor &color, const QString &text)
    {
        QMetaObject::invokeMethod(this, "appendText", Q_ARG(QString, text), Q_ARG(QColor, color));
    }
};

void addSizes()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "cn"}) {
        for (const QSize &size : {QSize(1280, 400), QSize(1280, 460), QSize(1600, 520)})
            QTest::addRow("%s-%dx%d", language, size.width(), size.height())
                << size << QString(language);
    }
}

bool areDisjoint(const QWidgetList &widgets)
{
    for (int i = 0; i < widgets.size(); ++i) {
        for (int j = 0; j < i; ++j) {
            if (widgets[i]->geometry().intersects(widgets[j]->geometry()))
                return false;
        }
    }
    return true;
}

int area(const QWidget &widget)
{
    return widget.width() * widget.height();
}
}

class tst_VorlynDeviceMPToolLayout : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void fits_data() { addSizes(); }
    void fits();
    void logGetsTheRoom();
    void logIsReadFromTwoMetres();
    void tabOrder();

private:
    void show(Panel &panel, const QSize &size)
    {
        panel.setWindowFlag(Qt::X11BypassWindowManagerHint);
        panel.resize(size);
        panel.fill();
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
    }
};

void tst_VorlynDeviceMPToolLayout::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

// With VORLYN_PICTURES in the environment the panels are saved in that folder.
void tst_VorlynDeviceMPToolLayout::fits()
{
    QFETCH(QSize, size);
    QFETCH(QString, language);
    ZRLocalize::loadLanguage(language);
    Panel panel;
    show(panel, size);

    QMap<QWidget *, QWidgetList> children;
    for (QWidget *widget : panel.findChildren<QWidget *>()) {
        if (!widget->isVisible())
            continue;
        const QString what =
            QString("%1 %2").arg(widget->objectName(), widget->property("text").toString());
        QVERIFY2(widget->parentWidget()->rect().contains(widget->geometry()), qPrintable(what));
        children[widget->parentWidget()].append(widget);
        if (qobject_cast<QPushButton *>(widget) || qobject_cast<QLabel *>(widget))
            QVERIFY2(widget->width() >= widget->sizeHint().width(), qPrintable(what));
    }
    for (auto parent = children.cbegin(); parent != children.cend(); ++parent) {
        if (parent.key() == &panel || parent.key()->parentWidget() == &panel)
            QVERIFY2(areDisjoint(parent.value()), qPrintable(parent.key()->objectName()));
    }

    const int textWidth = panel.macEdit->fontMetrics().horizontalAdvance(panel.macEdit->text());
    QVERIFY(panel.macEdit->width() >= textWidth + 8);
    const auto *start = panel.findChild<QPushButton *>("startTestButton");
    for (const QPushButton *button : panel.findChildren<QPushButton *>())
        QVERIFY(button == start || area(*button) < area(*start) / 2);

    const QString folder = qEnvironmentVariable("VORLYN_PICTURES");
    const QString picture =
        QStringLiteral("%1/bench-panel-%2.png").arg(folder, QTest::currentDataTag());
    QVERIFY(folder.isEmpty() || panel.grab().save(picture));
}

void tst_VorlynDeviceMPToolLayout::logGetsTheRoom()
{
    const QSize small(1280, 400);
    const QSize large(1600, 520);
    ZRLocalize::loadLanguage("en");
    Panel panel;
    show(panel, small);
    const QSize before = panel.logEdit->size();
    QVERIFY(before.width() > small.width() * 3 / 10);
    panel.resize(large);
    QTRY_COMPARE(panel.logEdit->height() - before.height(), large.height() - small.height());
    QVERIFY(panel.logEdit->width() - before.width() > (large.width() - small.width()) * 2 / 3);
}

// Capitals need a four-hundredth of the distance, on a screen of 96 dots an inch.
void tst_VorlynDeviceMPToolLayout::logIsReadFromTwoMetres()
{
    for (const char *language : {"en", "cn"}) {
        ZRLocalize::loadLanguage(language);
        Panel panel;
        show(panel, QSize(1280, 400));
        const QTextCursor line(panel.logEdit->document()->lastBlock());
        for (const QFont &font : {panel.logEdit->font(), line.charFormat().font()}) {
            QVERIFY(QFontInfo(font).bold());
            const double millimetres = QFontMetrics(font).capHeight() * 25.4 / 96;
            QVERIFY2(millimetres >= 2000.0 / 400, qPrintable(QString::number(millimetres)));
        }
    }
}

// From what is written at the left to the log at the right.
void tst_VorlynDeviceMPToolLayout::tabOrder()
{
    Panel panel;
    show(panel, QSize(1280, 400));
    QStringList names;
    QWidget *widget = panel.macEdit;
    do {
        if (widget->focusPolicy() & Qt::TabFocus && widget->isVisible())
            names << widget->objectName();
        widget = widget->nextInFocusChain();
    } while (widget != panel.macEdit);
    QCOMPARE(names,
        QStringList({"macEdit", "macSettingButton", "nameEdit", "nameSettingButton",
            "ipSettingButton", "p2pIdSettingButton", "functionIdSettingButton", "testVersionButton",
            "selectButton", "upgradeButton", "upgradeAllButton", "restoreButton", "startTestButton",
            "manualTestStartButton", "manualTestStopButton", "speakerButton", "microphoneButton",
            "whiteLightOnButton", "whiteLightOffButton", "irCutDayButton", "irCutNightButton",
            "irCutAutoButton", "streamButton", "qrCodeButton", "loadWiFiButton", "upButton",
            "leftButton", "rightButton", "downButton", "stopButton", "logEdit"}));
}

QTEST_MAIN(tst_VorlynDeviceMPToolLayout)
#include "tst_VorlynDeviceMPToolLayout.moc"
