#pragma once

#include "ChildProcess.h"

#include <QRect>
#include <QScopedPointer>
#include <QStringList>
#include <QTemporaryDir>

class PreviewScreen;

// A program that shows a camera's picture in a window. One at a time has windows on the screen.
class PreviewPlayer
{
public:
    explicit PreviewPlayer(const QString &name) : name(name) { }
    virtual ~PreviewPlayer() = default;

    virtual void play() = 0;
    virtual void stop() = 0;
    // Lets the screen watch the picture, once its window is there. Nothing when it does already.
    void locate(PreviewScreen &screen);
    // Whether the program is there without a stream too.
    virtual bool hasIdleWindow() const { return false; }

    qint64 pid() const { return process.processId(); }

    const QString name;

protected:
    virtual void watch(PreviewScreen &screen) = 0;

    ChildProcess process;
};

// A player from the command line: a process for each stream.
class PeerPlayer : public PreviewPlayer
{
public:
    // `environment` is NAME=VALUE or empty. The command line is `command` and `more`, with %url,
    // and %w and %h for the picture's size.
    struct Row {
        const char *name;
        const char *environment;
        const char *command;
        const char *more;
    };
    static QStringList names();
    // Null for a name that none has.
    static PeerPlayer *create(const QString &name, const QString &url, QSize picture);

    void play() override;
    void stop() override { process.end(); }

protected:
    void watch(PreviewScreen &screen) override;

private:
    PeerPlayer(const Row &row, const QString &url, QSize picture);

    QStringList command;
    QSize picture;
};

// VorlynIPTool in a folder of its own, driven by the mouse: it plays the camera in the table's
// first row, and stops when the second, which has no stream, is chosen.
class IPToolPlayer : public PreviewPlayer
{
public:
    IPToolPlayer(const QString &program, PreviewScreen &screen);

    // Starts the program and waits until its first search has ended. It plays the first row then.
    void prepare();
    // Ends the program.
    void end() { process.end(); }
    void play() override { clickRow(0); }
    void stop() override { clickRow(1); }
    bool hasIdleWindow() const override { return true; }

    void setVideoSize(QSize size) { video = size; }
    // The size that its pictures have on the screen. After prepare().
    QSize pictureSize() const { return picture().size(); }

protected:
    void watch(PreviewScreen &screen) override;

private:
    QRect picture() const;
    void clickRow(int row);

    QScopedPointer<QTemporaryDir> folder;
    QString program;
    PreviewScreen &screen;
    ChildProcess click;
    QSize video;
    unsigned long window = 0;
    QSize size; // of the window
};
