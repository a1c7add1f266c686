#pragma once

#include <QTemporaryDir>

// A folder on a disk that fills up when a test wants it. Operations give false, and pass on what
// the system says, when it doesn't obey.
class SmallDisk
{
public:
    SmallDisk();
    ~SmallDisk(); // with its room back

    QString path() const { return folder.path(); }
    QString filePath(const QString &name) const { return folder.filePath(name); }

    // From now on a file of twice so many bytes doesn't fit.
    bool limit(int bytes);
    bool unlimit();

private:
    const QTemporaryDir folder;
};
