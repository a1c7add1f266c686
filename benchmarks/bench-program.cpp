// bench-program PROGRAM BARE-PROGRAM
// Start: from exec to the first window that the window manager lists, the two programs by turns.
// Idle: CPU time of each thread over ten seconds, after the first search has ended.
// Needs a display with a window manager.
#include "Figures.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QThread>

#include <unistd.h>

namespace {

const int startRuns = 15;
const int settleMilliseconds = 6000; // the first search takes three seconds
const int idleMilliseconds = 10000;

// The list of windows that the window manager keeps, as it changes.
class WindowList
{
public:
    WindowList()
    {
        spy.start(QStringLiteral("xprop"),
            {QStringLiteral("-root"), QStringLiteral("-spy"), QStringLiteral("_NET_CLIENT_LIST")});
        waitForLine([](const QByteArray &) { return true; });
    }

    ~WindowList()
    {
        spy.terminate();
        spy.waitForFinished();
    }

    void waitForWindow() { waitForLine(hasWindow); }
    void waitForNone()
    {
        waitForLine([](const QByteArray &line) { return !hasWindow(line); });
    }

private:
    static bool hasWindow(const QByteArray &line) { return line.contains("0x"); }

    template <typename Test> void waitForLine(Test test)
    {
        forever {
            while (spy.canReadLine()) {
                if (test(spy.readLine()))
                    return;
            }
            if (!spy.waitForReadyRead(20000))
                qFatal("The window manager lists no change.");
        }
    }

    QProcess spy;
};

void end(QProcess &process)
{
    process.terminate();
    process.waitForFinished();
}

double startMilliseconds(const QString &program, WindowList &windows)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    process.start(program, QStringList());
    windows.waitForWindow();
    const double elapsed = timer.nsecsElapsed() / 1e6;
    end(process);
    windows.waitForNone();
    return elapsed;
}

void measureStart(const QString &program, const QString &bare)
{
    WindowList windows;
    QVector<double> ours, theirs;
    for (int i = 0; i < startRuns; ++i) {
        theirs << startMilliseconds(bare, windows);
        ours << startMilliseconds(program, windows);
    }
    printFigures(QStringLiteral("start to window, bare Qt Widgets"), theirs, "ms");
    printFigures(QStringLiteral("start to window, VorlynIPTool"), ours, "ms");
}

// CPU ticks by "name (thread id)".
QMap<QString, qint64> threadTicks(qint64 pid)
{
    QMap<QString, qint64> ticks;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile stat(tasks.filePath(task) + QStringLiteral("/stat"));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QString line = QString::fromUtf8(stat.readAll());
        const int open = line.indexOf('('), close = line.lastIndexOf(')');
        const QStringList fields = line.mid(close + 2).split(' ');
        const QString name = line.mid(open + 1, close - open - 1);
        ticks[QStringLiteral("%1 (%2)").arg(name, task)] =
            fields[11].toLongLong() + fields[12].toLongLong();
    }
    return ticks;
}

void measureIdle(const QString &program)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, QStringList());
    process.waitForStarted();
    QThread::msleep(settleMilliseconds);
    const QMap<QString, qint64> before = threadTicks(process.processId());
    QThread::msleep(idleMilliseconds);
    const QMap<QString, qint64> after = threadTicks(process.processId());
    end(process);

    const double perTick = 100.0 * 1000.0 / sysconf(_SC_CLK_TCK) / idleMilliseconds;
    double sum = 0;
    for (auto it = after.begin(); it != after.end(); ++it) {
        const double percent = (it.value() - before.value(it.key())) * perTick;
        sum += percent;
        std::printf(
            "idle after a search, %-32s %5.2f %% of a core\n", qPrintable(it.key()), percent);
    }
    std::printf("idle after a search, %-32s %5.2f %% of a core\n", "all threads", sum);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: bench-program PROGRAM BARE-PROGRAM\n");
        return 2;
    }
    measureStart(arguments[1], arguments[2]);
    measureIdle(arguments[1]);
    return 0;
}
