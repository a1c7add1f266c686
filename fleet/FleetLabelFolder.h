#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

// Where the simulated label printer leaves what it does: labels as label-000001.png and so on,
// calls as lines of calls.jsonl. Makes the folder when it is missing. Several printers may share
// one.
class FleetLabelFolder
{
public:
    explicit FleetLabelFolder(const QString &path);

    // Adds the time; the line is in the file when this returns.
    void record(QJsonObject line) const;
    // Writes the picture so many times; numbers go on after the highest in the folder. A file
    // appears whole. Returns the names, fewer than `copies` with one line of text on failure.
    QStringList store(const QByteArray &png, int copies, QString *error) const;

private:
    bool storeAs(const QString &name, const QByteArray &png, QString *error) const;
    int lastNumber() const;
    QString filePath(const QString &name) const;

    const QString path;
};
