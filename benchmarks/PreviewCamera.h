#pragma once

#include "ChildProcess.h"

#include <QSize>
#include <QTemporaryDir>

// The simulated camera that is looked at, and the cable to it. A second camera, which has no
// stream, stands beside it.
class PreviewCamera
{
public:
    // `namespaceProcess` is a process in the cameras' network namespace.
    PreviewCamera(const QString &program, const QString &namespaceProcess);

    // A stream that is always running is joined in the middle of what is between two key frames.
    void start(QSize video, bool alwaysRunning);
    void stop() { process.end(); }

    QString url() const;
    // Whether a player has a connection to the stream just now.
    bool hasViewer() const;

    // The camera's end of the cable. In between its own TCP knows that there is no way out, and
    // tries again every half second; pulled at the far end, the pauses would double each time.
    void setLinkUp(bool up);
    // What has come in on the workstation's end of the cable.
    qint64 receivedBytes() const;

private:
    QStringList atCameras(const QStringList &command) const;

    QString program;
    QString namespaceProcess;
    QTemporaryDir folder;
    ChildProcess process;
};
