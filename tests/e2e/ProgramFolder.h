#pragma once

#include <QPoint>
#include <QProcess>
#include <QSize>
#include <QStringList>
#include <QTemporaryDir>

// A program itself, in a folder as an installation has it: program file and "language", nothing
// else. Waits take a minute at the most; false means that it never came.
class ProgramFolder
{
public:
    static constexpr int patience = 60000; // milliseconds
    // For the program's settings: so long is the first search's dialog surely seen.
    static constexpr int searchSeconds = 4;

    // `name` is the folder's, in one of its own.
    explicit ProgramFolder(const QString &program = QStringLiteral("VorlynIPTool"),
        const QString &name = QStringLiteral("program"));
    ~ProgramFolder(); // ends the program

    bool isValid() const { return valid; }
    QString path() const { return folder.filePath(name); }
    QString filePath(const QString &file) const { return path() + '/' + file; }
    QString programFile() const;

    // Returns when the first search has ended and the main window alone is left.
    bool start();
    // By the window manager's key, and without a leak where leaks are looked for.
    bool quit();
    // X ids of those that show, the main window first.
    QStringList windows() const;
    bool awaitWindows(int count) const;
    QString mainWindow() const { return windows().value(0); }
    // Not empty lines of the one log file; none when there are more files.
    QStringList log() const;

    QProcess process;

private:
    QString program; // as its file is called, and its windows' class begins
    QString name;
    QTemporaryDir folder;
    bool valid;
};

// Mouse and keyboard of the screen that a test has.
namespace Hands {

bool xdotool(const QStringList &arguments);
// In the window's own pixels.
bool clickAt(const QString &window, QPoint point);
QSize sizeOf(const QString &window);

}
