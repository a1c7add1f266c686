#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

// What the network settings form is, wherever it is shown. Widgets are found by their names.
namespace NetworkFormChecks {

struct Row {
    const char *caption;
    const char *label;
    const char *edit;
    const char *key; // of the device's record
    int y;
};
constexpr Row rows[] = {
    {"IP Address", "ipLabel", "ipEdit", "ip", 40},
    {"Netmask", "netmaskLabel", "netmaskEdit", "netmask", 70},
    {"Gateway", "gatewayLabel", "gatewayEdit", "gateway", 100},
    {"Dns1", "dns1Label", "dns1Edit", "dns1", 130},
    {"Dns2", "dns2Label", "dns2Edit", "dns2", 160},
};

inline QComboBox *mode(QWidget &host)
{
    return host.findChild<QComboBox *>("modeComboBox");
}

inline QLineEdit *edit(QWidget &host, const char *name)
{
    return host.findChild<QLineEdit *>(name);
}

inline QPushButton *button(QWidget &host, const char *name)
{
    return host.findChild<QPushButton *>(name);
}

inline void texts(QWidget &host)
{
    QCOMPARE(host.findChild<QLabel *>("modeLabel")->text(), QString("IP Mode"));
    QCOMPARE(mode(host)->count(), 2);
    QCOMPARE(mode(host)->itemText(0), QString("DHCP"));
    QCOMPARE(mode(host)->itemText(1), QString("Static"));
    QCOMPARE(button(host, "setButton")->text(), QString("Set"));
    for (const Row &row : rows)
        QCOMPARE(host.findChild<QLabel *>(row.label)->text(), QString(row.caption));
    for (const char *name : {"spareLabel1", "spareLabel2"})
        QCOMPARE(host.findChild<QLabel *>(name)->text(), QString());
}

// Places don't depend on the size of the host.
inline void geometry(QWidget &host, const char *secondButton)
{
    QCOMPARE(host.findChild<QLabel *>("modeLabel")->geometry(), QRect(10, 10, 110, 20));
    const int modeWidth = qMax(110, mode(host)->sizeHint().width());
    QCOMPARE(mode(host)->geometry(), QRect(140, 10, modeWidth, 20));
    QCOMPARE(mode(host)->minimumWidth(), 110);
    for (const Row &row : rows) {
        QCOMPARE(host.findChild<QLabel *>(row.label)->geometry(), QRect(10, row.y, 110, 20));
        QCOMPARE(edit(host, row.edit)->geometry(), QRect(140, row.y, 110, 20));
    }
    QCOMPARE(button(host, "setButton")->geometry(), QRect(10, 190, 110, 25));
    QCOMPARE(button(host, secondButton)->geometry(), QRect(140, 190, 110, 25));
}

inline void rowsEnabled(QWidget &host, bool enabled)
{
    for (const Row &row : rows) {
        QCOMPARE(host.findChild<QLabel *>(row.label)->isEnabled(), enabled);
        QCOMPARE(edit(host, row.edit)->isEnabled(), enabled);
    }
    QVERIFY(mode(host)->isEnabled());
    QVERIFY(button(host, "setButton")->isEnabled());
}

// Inputs, and the toast that each gives; without a toast they go out as typed.
inline void inputs_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("netmask");
    QTest::addColumn<QString>("gateway");
    QTest::addColumn<QString>("toast");
    const QString mask = "255.255.255.0";
    const QString noIp = "Please input valid ip address";
    const QString noMask = "Please input valid netmask";
    QTest::newRow("all good") << "10.0.0.5" << mask << "10.0.0.1"
                              << "";
    QTest::newRow("empty address") << "" << mask << "10.0.0.1" << noIp;
    QTest::newRow("number too high") << "300.1.1.1" << mask << "10.0.0.1" << noIp;
    QTest::newRow("three numbers") << "1.2.3" << mask << "10.0.0.1" << noIp;
    QTest::newRow("address before netmask") << "x"
                                            << "y"
                                            << "z" << noIp;
    QTest::newRow("empty netmask") << "10.0.0.5"
                                   << ""
                                   << "10.0.0.1" << noMask;
    QTest::newRow("bad netmask") << "10.0.0.5"
                                 << "255.255"
                                 << "" << noMask;
    QTest::newRow("text behind the address") << "1.1.1.1x" << mask << "10.0.0.1"
                                             << "";
    QTest::newRow("holes in the netmask") << "10.0.0.5"
                                          << "255.0.255.0"
                                          << "10.0.0.1"
                                          << "";
    // The gateway is never looked at.
    QTest::newRow("empty gateway") << "10.0.0.5" << mask << ""
                                   << "";
    QTest::newRow("gateway is no address") << "10.0.0.5" << mask << "none"
                                           << "";
}

// At the bottom, in the middle, 5 pixels from the edge; null when none shows.
inline QWidget *toast(QWidget &host)
{
    return host.findChild<QWidget *>("toast", Qt::FindDirectChildrenOnly);
}

inline void toastPlace(QWidget &host)
{
    const QWidget *shown = toast(host);
    QVERIFY(shown);
    QCOMPARE(shown->pos(),
        QPoint((host.width() - shown->width()) / 2, host.height() - 5 - shown->height()));
}

}
