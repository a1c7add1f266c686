#include "HostProcess.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QMap>

#include <cstdio>

namespace {

int refuse(const QByteArray &reason)
{
    std::printf("%s\n", reason.constData());
    return 1;
}

}

// Windows' netsh as far as HostAddresses gives it orders, for Wine, whose own does nothing and
// tells that it went well. It lies beside the test programs, where they find it first.
//   netsh interface ipv4 add address name=NAME address=IP mask=MASK store=active skipassource=true
//   netsh interface ipv4 delete address name=NAME address=IP store=active
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList words = application.arguments().mid(1, 4);
    QMap<QString, QString> values;
    for (const QString &argument : application.arguments().mid(5))
        values[argument.section('=', 0, 0)] = argument.section('=', 1);
    const bool adding = words.value(2) == "add";
    QMap<QString, QString> order{
        {"name", values["name"]}, {"address", values["address"]}, {"store", "active"}};
    if (adding) {
        order["mask"] = values["mask"];
        order["skipassource"] = "true";
    }
    if (words != QStringList({"interface", "ipv4", adding ? "add" : "delete", "address"})
        || values != order)
        return refuse("not an order for this netsh");

    QString address = values["address"];
    if (adding) {
        const int length = QHostAddress::parseSubnet(address + '/' + values["mask"]).second;
        if (length < 0)
            return refuse("the mask is wrong");
        address += '/' + QString::number(length);
    }
    HostProcess ip;
    const bool done =
        ip.start("ip", {"addr", adding ? "add" : "del", address, "dev", values["name"]})
        && ip.waitForSuccess();
    return done ? 0 : refuse(ip.errors());
}
