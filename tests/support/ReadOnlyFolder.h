#pragma once

#include "HostProcess.h"

// Makes a folder read-only, as one under "C:\Program Files" is, for as long as it lives. In a test
// with the NETWORK option, whose mounts are its own.
class ReadOnlyFolder
{
public:
    explicit ReadOnlyFolder(const QString &folder) :
        path(HostProcess::path(folder)),
        mounted(HostProcess::run("mount", {"-o", "bind,ro", path, path}))
    { }

    // A program that has ended for Wine may still hold its file for a moment.
    ~ReadOnlyFolder()
    {
        if (mounted)
            HostProcess::run("umount", {"--lazy", path});
    }

    bool isMounted() const { return mounted; }

private:
    Q_DISABLE_COPY(ReadOnlyFolder)

    QString path;
    bool mounted;
};
