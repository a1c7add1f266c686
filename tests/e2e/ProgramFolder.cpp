#include "ProgramFolder.h"

#include "HostProcess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtTest>

namespace {

QStringList linesOf(const QString &text)
{
    QStringList lines = text.split('\n');
    lines.removeAll(QString());
    return lines;
}

}

ProgramFolder::ProgramFolder(const QString &program, const QString &name) :
    program(program),
    name(name)
{
    const QFileInfo built(QDir(QStringLiteral(VORLYN_PROGRAMS)), program + VORLYN_PROGRAM_SUFFIX);
    valid = QDir().mkpath(filePath("language")) && QFile::copy(built.filePath(), programFile());
    for (const char *text : {"/language/en.txt", "/language/cn.txt"})
        valid = valid && QFile::copy(built.path() + text, path() + text);
}

ProgramFolder::~ProgramFolder()
{
    const bool hasEnded = process.state() == QProcess::NotRunning;
    process.kill();
    process.waitForFinished();
    if (QTest::currentTestFailed()) {
        qInfo("%s", process.readAllStandardError().constData());
        if (hasEnded)
            qInfo("ended with 0x%x", uint(process.exitCode()));
    }
}

QString ProgramFolder::programFile() const
{
    return filePath(program + VORLYN_PROGRAM_SUFFIX);
}

bool ProgramFolder::start()
{
    process.start(programFile(), QStringList());
    return process.waitForStarted() && awaitWindows(2) && awaitWindows(1);
}

bool ProgramFolder::quit()
{
    return Hands::xdotool({"windowactivate", "--sync", mainWindow(), "key", "alt+F4"})
        && process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

// A window of any program that goes during the search breaks it off with an error: it begins anew.
QStringList ProgramFolder::windows() const
{
    const QDeadlineTimer deadline(patience);
    do {
        HostProcess search;
        if (!search.start("xdotool", {"search", "--onlyvisible", "--class", program}))
            return QStringList();
        const bool found = search.waitForSuccess();
        if (found || search.errors().isEmpty()) // there are some, or none
            return linesOf(QString::fromUtf8(search.readAll()));
    } while (!deadline.hasExpired());
    return QStringList();
}

bool ProgramFolder::awaitWindows(int count) const
{
    bool come = false; // kept, as a window that was seen may be gone by now
    const auto over = [&] {
        come = windows().size() == count;
        return come || process.state() == QProcess::NotRunning;
    };
    return QTest::qWaitFor(over, patience) && come;
}

QStringList ProgramFolder::log() const
{
    const QDir logs(filePath("log"));
    const QStringList names = logs.entryList({"*.clog"}, QDir::Files);
    if (names.size() != 1)
        return QStringList();
    QFile file(logs.filePath(names.first()));
    if (!file.open(QIODevice::ReadOnly))
        return QStringList();
    return linesOf(QString::fromUtf8(file.readAll()));
}

bool Hands::xdotool(const QStringList &arguments)
{
    return HostProcess::run("xdotool", arguments);
}

bool Hands::clickAt(const QString &window, QPoint point)
{
    return xdotool({"mousemove", "--window", window, QString::number(point.x()),
        QString::number(point.y()), "click", "1"});
}

QSize Hands::sizeOf(const QString &window)
{
    const QRegularExpression geometry("WIDTH=(\\d+)\\s+HEIGHT=(\\d+)");
    const auto match =
        geometry.match(HostProcess::output("xdotool", {"getwindowgeometry", "--shell", window}));
    return QSize(match.captured(1).toInt(), match.captured(2).toInt());
}
