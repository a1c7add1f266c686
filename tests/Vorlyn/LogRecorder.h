#pragma once

#include <QStringList>

// Keeps every log line from its making to its end, from any thread. One at a time.
class LogRecorder {
public:
    LogRecorder();
    ~LogRecorder();

    QStringList lines() const;
    int count(const QString &line) const;
    // Lines that begin so.
    QStringList beginning(const QString &text) const;
    void clear();
};
