// bench-search INTERFACE SECONDS RUNS WHAT: searches on one interface and prints how many cameras
// answered in each run.
#include "VorlynSDK.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() != 5) {
        std::fprintf(stderr, "usage: bench-search INTERFACE SECONDS RUNS WHAT\n");
        return 2;
    }
    // The program writes each reply to its log; here the log is not what is measured.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});

    VorlynSDK::createInstance();
    VorlynSDK *sdk = VorlynSDK::instance();
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK::selectInterface(
        VorlynSDK::availableInterfaces(), arguments[1], QString(), interface, address);
    sdk->startNetwork(interface, address);

    std::printf("search, %-40s found", qPrintable(arguments[4]));
    for (int run = 0; run < arguments[3].toInt(); ++run) {
        QVector<VorlynDevice> devices;
        sdk->searchDevices(devices, arguments[2].toDouble());
        std::printf(" %d", devices.size());
        std::fflush(stdout);
    }
    std::printf("\n");
    sdk->stopNetwork();
    VorlynSDK::destroyInstance();
    return 0;
}
