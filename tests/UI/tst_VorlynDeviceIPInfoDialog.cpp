#include "MetaMethods.h"
#include "NetworkFormTest.h"
#include "VorlynDeviceIPInfoDialog.h"
#include "VorlynDevicesWidget.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

class tst_VorlynDeviceIPInfoDialog : public NetworkFormTest
{
    Q_OBJECT

public:
    tst_VorlynDeviceIPInfoDialog() :
        NetworkFormTest({"cancelButton", "Cancel", {"setButton"}, true})
    { }

private slots:
    void metaObject();
    void closesWhateverTheDeviceSays_data();
    void closesWhateverTheDeviceSays();
    void cancel();

private:
    std::unique_ptr<QWidget> makeHost() const override
    {
        return std::make_unique<VorlynDeviceIPInfoDialog>(nullptr);
    }
    void setDevice(const VorlynDevice &device) override { dialog().setDevice(device, table.get()); }
    VorlynDeviceIPInfoDialog &dialog() const
    {
        return static_cast<VorlynDeviceIPInfoDialog &>(*host);
    }
};

void tst_VorlynDeviceIPInfoDialog::metaObject()
{
    QCOMPARE(ownMethods(VorlynDeviceIPInfoDialog::staticMetaObject),
        QStringList({"private slot onComboBoxIndexChanged(int)",
            "private slot onClickSetButton(bool)", "private slot onClickCancelButton(bool)"}));
}

void tst_VorlynDeviceIPInfoDialog::closesWhateverTheDeviceSays_data()
{
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("ip"); // of the table afterwards
    QTest::newRow("success") << "success"
                             << "10.0.0.9";
    QTest::newRow("failure") << "failure"
                             << "10.77.0.11";
}

void tst_VorlynDeviceIPInfoDialog::closesWhateverTheDeviceSays()
{
    QFETCH(QString, result);
    QSignalSpy finished(&dialog(), &QDialog::finished);
    setDevice(table->device(1));
    edit("ipEdit")->setText("10.0.0.9");
    edit("netmaskEdit")->setText("255.0.0.0");
    click("setButton", {result});
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), int(QDialog::Accepted));
    QTEST(table->device(1).ip(), "ip");
}

void tst_VorlynDeviceIPInfoDialog::cancel()
{
    QSignalSpy rejected(&dialog(), &QDialog::rejected);
    button("cancelButton")->click();
    QCOMPARE(rejected.count(), 1);
    QVERIFY(bench->isQuiet());
}

QTEST_MAIN(tst_VorlynDeviceIPInfoDialog)
#include "tst_VorlynDeviceIPInfoDialog.moc"
