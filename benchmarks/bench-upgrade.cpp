// bench-upgrade: the supervised upgrade of six cameras as an operator has it, over real time: two
// of them take no firmware, one comes back elsewhere and one never. Prints how long it took and
// each line of the dialog. Needs a display, and a private network with VORLYN_TEST_CAMERA_PID in
// the cameras' namespace.
#include "UpgradeBench.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTableWidget>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    ZRLocalize::loadLanguage(QStringLiteral("en"));
    UpgradeBench bench;
    if (!bench.open(int(UpgradeBench::sixResults.size()), UpgradeBench::sixCameras())
        || !bench.listAll()) {
        std::fprintf(stderr, "bench-upgrade: the cameras don't answer\n");
        return 1;
    }

    QElapsedTimer clock;
    clock.start();
    bench.dialog().startUpgrade();
    const UpgradeTable &table = bench.table();
    std::printf(
        "upgrade of %d cameras: %.1f s\n", table.widget()->rowCount(), clock.elapsed() / 1000.0);
    for (int row = 0; row < table.widget()->rowCount(); ++row) {
        std::printf("  %s  %s  %s\n", qPrintable(table.text(row, 2)),
            qPrintable(table.version(row)), qPrintable(table.text(row, 4)));
    }
    return 0;
}
