#include "ZRScanCodePrinterDialog.h"

#include <QLineEdit>
#include <QtTest>

// How the scan station counts serials.
class tst_ScanCodeSerial : public QObject
{
    Q_OBJECT

private slots:
    void serial_data();
    void serial();
};

namespace {

// In place of the label printer.
QStringList printed;

bool recordSerial(const QString &, const QString &, QString &sn)
{
    printed.append(sn);
    return true;
}

}

void tst_ScanCodeSerial::serial_data()
{
    QTest::addColumn<QString>("sn");
    QTest::addColumn<QString>("next");
    const char *rows[][3] = {
        {"counts", "AB-00041", "AB-00042"},
        {"more than five digits come", "AB-99999", "AB-100000"},
        {"and are cut at the next", "AB-100000", "AB-10001"},
        {"seven digits", "AB-1234567", "AB-12346"},
        {"six digits", "AB-123456", "AB-12346"},
        {"no dash", "00099", "00100"},
        {"no dash, seven digits", "1234567", "12346"},
        {"no digits", "ABC", "00001"},
        {"letters before digits without a dash", "ABC123", "00001"},
        {"short", "AB-7", "AB-00008"},
        {"zeros fill up", "7", "00008"},
        {"dash alone", "-", "-00001"},
        {"dash at the end", "AB-", "AB-00001"},
        {"dash at the start", "-00041", "-00042"},
        {"digits before letters", "AB-12CD", "AB-00013"},
        {"letters behind the dash", "AB-CD12", "AB-00001"},
        {"two dashes", "AB-12-34", "AB-00013"},
        {"letters between two dashes", "AB-C-00041", "AB-00001"},
        {"negative", "AB--5", "AB--0004"},
        {"minus one", "AB--1", "AB-00000"},
        {"sign counts as one of five", "AB--99999", "AB--9998"},
        {"plus", "AB-+7", "AB-00008"},
        {"spaces are skipped", "AB-   41", "AB-00042"},
        {"and count as none of the five", "AB-  123456", "AB-12346"},
        {"tab is skipped", "AB-\t41", "AB-00042"},
        {"space behind a sign", "AB-- 5", "AB-00001"},
        {"space without dash goes", " 41", "00042"},
        {"hexadecimal", "AB-0x10", "AB-00001"},
        {"fraction", "AB-1.5", "AB-00002"},
        {"text before the dash stays", "\u578b\u53f7 x-00041", "\u578b\u53f7 x-00042"},
        {"full-width digits are none", "AB-\uff14\uff11", "AB-00001"},
        {"Arabic digits are none", "AB-\u0664\u0661", "AB-00001"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2]);
}

void tst_ScanCodeSerial::serial()
{
    QFETCH(QString, sn);
    printed.clear();
    const ZRScanCodePrinterDialog dialog(nullptr, recordSerial);
    dialog.findChild<QLineEdit *>("modelEdit")->setText("MR2G-1");
    auto *snEdit = dialog.findChild<QLineEdit *>("snEdit");
    auto *scanEdit = dialog.findChild<QLineEdit *>("scanEdit");
    snEdit->setText(sn);
    scanEdit->setText("KVMR2G0001");
    QTest::keyClick(scanEdit, Qt::Key_Return);
    QCOMPARE(printed, QStringList(sn));
    QTEST(snEdit->text(), "next");
}

QTEST_MAIN(tst_ScanCodeSerial)
#include "tst_ScanCodeSerial.moc"
