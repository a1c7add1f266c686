#pragma once

#include <QtGlobal>

class QFile;
class QMutex;
class QTextStream;

// Writes all Qt log output of the process to a file of this run, "log/yyyyMMddHHmmss.clog" beside
// the program. Nobody calls it to log: code uses qDebug and its relatives, from any thread.
// initialize() and shutdown() belong to the main thread, while no other one logs.
class ZRLog
{
public:
    // After the application object exists. Deletes files of runs more than 30 days ago. A file
    // that can't be opened means that none is written; messages go on to the previous handler.
    static void initialize();
    // After it no message may be logged any more: the handler stays installed.
    static void shutdown();

    virtual ~ZRLog();

private:
    explicit ZRLog(const QString &path);
    Q_DISABLE_COPY(ZRLog)

    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &message);
    void write(const char *prefix, const QString &message);

    QFile *file; // null when it could not be opened, as is the stream then
    QTextStream *stream;
    QMutex *mutex;
    QtMessageHandler previousHandler;
};
