#include "NetworkAddress.h"

#include <QtTest>

class tst_NetworkAddress : public QObject
{
    Q_OBJECT

private slots:
    void valid_data();
    void valid();
    void next_data();
    void next();
};

void tst_NetworkAddress::valid_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    const struct {
        const char *text;
        bool valid;
    } rows[] = {
        {"192.168.1.5", true},
        {"0.0.0.0", true},
        {"255.255.255.255", true},
        {"192.168.1.5abc", true}, // what follows the fourth number is not looked at
        {"1.2.3.4.5", true},
        {"1.2.3.4 ", true},
        {"1.1.1.1x", true},
        {" 1. 2. 3. 4", true}, // white space before a number
        {"+1.+2.+3.+4", true},
        {"010.001.000.009", true},
        {"255.0.255.0", true}, // a mask need not be contiguous
        {"", false},
        {"1.2.3", false},
        {"1.2.3.", false},
        {"a.b.c.d", false},
        {"x1.2.3.4", false},
        {"1 .2.3.4", false}, // white space behind a number
        {"1,2,3,4", false},
        {"256.1.1.1", false},
        {"300.1.1.1", false},
        {"1.1.1.256", false},
        {"-1.2.3.4", false},
        {"1.2.3.-4", false},
        {"\xE4\xB8\x80.2.3.4", false},
    };
    for (const auto &row : rows)
        QTest::newRow(*row.text ? row.text : "empty") << QString::fromUtf8(row.text) << row.valid;
}

void tst_NetworkAddress::valid()
{
    QFETCH(QString, text);
    QFETCH(bool, valid);
    QCOMPARE(isValidAddress(text), valid);
}

void tst_NetworkAddress::next_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("next");
    const struct {
        const char *address;
        const char *next;
    } rows[] = {
        {"10.0.0.5", "10.0.0.6"},
        {"10.0.0.254", "10.0.0.255"}, // 0 and 255 are not skipped
        {"192.168.1.255", "192.168.1.0"}, // no carry
        {"192.168.1.0", "192.168.1.1"},
        {"255.255.255.255", "255.255.255.0"},
        {"10.0.0.5junk", "10.0.0.6"},
        {"010.001.000.009", "10.1.0.10"},
        {"", "0.0.0.0"},
        {"1.2.3", "0.0.0.0"},
        {"1.2.3.256", "0.0.0.0"},
        {"-1.2.3.4", "0.0.0.0"},
    };
    for (const auto &row : rows)
        QTest::newRow(*row.address ? row.address : "empty")
            << QString(row.address) << QString(row.next);
}

void tst_NetworkAddress::next()
{
    QFETCH(QString, address);
    QTEST(nextAddress(address), "next");
}

QTEST_APPLESS_MAIN(tst_NetworkAddress)
#include "tst_NetworkAddress.moc"
