#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

class QTextDocument;

// The lines of a test log as a file for people and their programs: UTF-8 with its mark, lines end
// with CR and LF. As text it has the lines as they stand. As CSV it has a row for each, with its
// number, what its colour means and its text, under a row of headings in the program's language;
// no cell can be taken for a formula. GUI thread.
class TestLogFile
{
public:
    enum class Format { Text, Csv };

    // Copies the lines.
    explicit TestLogFile(const QTextDocument &log);

    // By the suffix of a file's name: CSV for "csv" in any case, otherwise text.
    static Format formatOf(const QString &path);
    QByteArray contents(Format format) const;
    // In the format of the path, whole or not at all: a file that is there stays as it is until
    // the new one is complete. Returns the system's reason for a failure, empty on success.
    QString write(const QString &path) const;

private:
    struct Line {
        QString kind; // translated
        QString text;
    };

    QVector<Line> lines;
};
