#pragma once

#include <QFile>
#include <QJsonObject>
#include <QObject>

// What happened to the fleet: one JSON line an entry, flushed, to a file or standard output, and a
// signal for tests in the same process. On the fleet's thread.
class FleetJournal : public QObject
{
    Q_OBJECT

public:
    explicit FleetJournal(QObject *parent = nullptr);

    // An empty path: no file. "-": standard output. False with one line of text.
    bool open(const QString &path, QString *error);
    void close();
    // Whether anybody reads it; costly entries need not be made otherwise.
    bool isRead() const;
    // Adds the time and the name of the event to the entry.
    void write(const char *event, QJsonObject entry = QJsonObject());

signals:
    void written(const QJsonObject &entry);

private:
    QFile file;
};
