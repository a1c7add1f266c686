#include "ProgramFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtTest>

namespace {

QString output(const QString &command, const QStringList &arguments)
{
    QProcess process;
    process.start(command, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

QStringList linesOf(const QString &text)
{
    QStringList lines = text.split('\n');
    lines.removeAll(QString());
    return lines;
}

}

ProgramFolder::ProgramFolder(const QString &program) : program(program)
{
    const QFileInfo built(QDir(QStringLiteral(VORLYN_PROGRAMS)), program);
    valid = QFile::copy(built.filePath(), filePath(program)) && QDir(path()).mkdir("language");
    for (const char *name : {"/language/en.txt", "/language/cn.txt"})
        valid = valid && QFile::copy(built.path() + name, path() + name);
}

ProgramFolder::~ProgramFolder()
{
    process.kill();
    process.waitForFinished();
    if (QTest::currentTestFailed())
        qInfo("%s", process.readAllStandardError().constData());
}

bool ProgramFolder::start()
{
    process.start(filePath(program), QStringList());
    return process.waitForStarted() && awaitWindows(2) && awaitWindows(1);
}

bool ProgramFolder::quit()
{
    return Hands::xdotool({"windowactivate", "--sync", mainWindow(), "key", "alt+F4"})
        && process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

QStringList ProgramFolder::windows() const
{
    return linesOf(output("xdotool", {"search", "--onlyvisible", "--class", program}));
}

bool ProgramFolder::awaitWindows(int count) const
{
    const auto come = [&] { return windows().size() == count; };
    const auto over = [&] { return process.state() == QProcess::NotRunning || come(); };
    return QTest::qWaitFor(over, patience) && come();
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
    return QProcess::execute("xdotool", arguments) == 0;
}

bool Hands::clickAt(const QString &window, QPoint point)
{
    return xdotool({"mousemove", "--window", window, QString::number(point.x()),
        QString::number(point.y()), "click", "1"});
}

QSize Hands::sizeOf(const QString &window)
{
    const QRegularExpression geometry("WIDTH=(\\d+)\\s+HEIGHT=(\\d+)");
    const auto match = geometry.match(output("xdotool", {"getwindowgeometry", "--shell", window}));
    return QSize(match.captured(1).toInt(), match.captured(2).toInt());
}
