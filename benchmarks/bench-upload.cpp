// bench-upload ADDRESS PORT FILE RUNS: uploads by VorlynSDK and by curl, by turns, to the same
// sink, and prints both rates and how much memory the upload took.
#include "Figures.h"
#include "VorlynSDK.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

namespace {

// Peak resident memory of this process in KiB.
qint64 peakMemory()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/status");
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).simplified().split(' ').first().toLongLong();
    }
    return 0;
}

template <typename Step> double megabytesPerSecond(qint64 size, Step step)
{
    QElapsedTimer timer;
    timer.start();
    step();
    return size / 1048576.0 / (timer.nsecsElapsed() / 1e9);
}

void uploadByCurl(const QString &url, const QString &path)
{
    QProcess curl;
    curl.start(QStringLiteral("curl"),
        {QStringLiteral("-sS"), QStringLiteral("-F"), QStringLiteral("file=@") + path, url});
    if (!curl.waitForFinished(-1) || curl.exitCode() != 0)
        qFatal("curl: %s", curl.readAllStandardError().constData());
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() != 5) {
        std::fprintf(stderr, "usage: bench-upload ADDRESS PORT FILE RUNS\n");
        return 2;
    }
    VorlynDevice device;
    device.setIp(arguments[1]);
    device.setValue(QStringLiteral("httpport"), arguments[2]);
    const QString path = arguments[3];
    const qint64 size = QFileInfo(path).size();
    const QString url = QStringLiteral("http://%1:%2/update.cgi").arg(arguments[1], arguments[2]);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    VorlynSDK::createInstance();

    const qint64 memoryBefore = peakMemory();
    QVector<double> ours, curls;
    for (int i = 0; i < arguments[4].toInt(); ++i) {
        curls << megabytesPerSecond(size, [&] { uploadByCurl(url, path); });
        ours << megabytesPerSecond(size, [&] {
            const int result = VorlynSDK::instance()->setDeviceFirmware(device, path);
            if (result != 0)
                qFatal("upload: %d", result);
        });
    }
    printFigures(QStringLiteral("upload of %1 MiB, curl").arg(size >> 20), curls, "MiB/s");
    printFigures(QStringLiteral("upload of %1 MiB, VorlynIPTool").arg(size >> 20), ours, "MiB/s");
    std::printf("upload, memory growth %.1f MiB\n", (peakMemory() - memoryBefore) / 1024.0);
    VorlynSDK::destroyInstance();
    return 0;
}
