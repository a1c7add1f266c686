#include "Devices.h"
#include "VorlynDeviceContentWidget.h"
#include "VorlynDevicesWidget.h"

#include <QtTest>

class Panel : public VorlynDeviceContentWidget
{
public:
    Panel() : VorlynDeviceContentWidget(nullptr) { }
    using VorlynDeviceContentWidget::devicesWidget;
};

class tst_VorlynDeviceContentWidget : public QObject
{
    Q_OBJECT

private slots:
    void emptyAtFirst();
    void keepsACopy();
    void keepsTheTable();
    void metaObject();
};

void tst_VorlynDeviceContentWidget::emptyAtFirst()
{
    const Panel panel;
    QVERIFY(!panel.device().isValid());
    QVERIFY(!panel.devicesWidget);
}

void tst_VorlynDeviceContentWidget::keepsACopy()
{
    Panel panel;
    VorlynDevice device = makeDevices({"a"})[0];
    device.index = 4;
    panel.setDevice(device);
    device.setMac("b");
    QCOMPARE(panel.device().mac(), QString("a"));
    QCOMPARE(panel.device().index, 4);
}

void tst_VorlynDeviceContentWidget::keepsTheTable()
{
    Panel panel;
    VorlynDevicesWidget table(nullptr);
    panel.setDevicesWidget(&table);
    QCOMPARE(panel.devicesWidget, &table);
}

void tst_VorlynDeviceContentWidget::metaObject()
{
    QCOMPARE(&VorlynDeviceContentWidget::staticMetaObject, &ZRToast::staticMetaObject);
}

QTEST_MAIN(tst_VorlynDeviceContentWidget)
#include "tst_VorlynDeviceContentWidget.moc"
