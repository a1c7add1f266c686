#include "ZRLog.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QMutex>
#include <QTextStream>

#include <cstdio>

namespace {

constexpr int prefixSize = 4096;
constexpr qint64 keptDays = 30;

ZRLog *instance = nullptr;

QString nameFormat()
{
    return QStringLiteral("yyyyMMddHHmmss");
}

// A file whose name is no time is not one of ours and stays.
void removeOldFiles(const QString &folder)
{
    const QDate today = QDate::currentDate();
    for (const QString &name : QDir(folder).entryList({QStringLiteral("*.clog")})) {
        const QDateTime start =
            QDateTime::fromString(name.left(name.lastIndexOf(QLatin1Char('.'))), nameFormat());
        if (start.isValid() && start.date().daysTo(today) > keptDays)
            QFile::remove(QStringLiteral("%1/%2").arg(folder, name));
    }
}

// What follows the last separator before the final character. Messages from inside Qt can come
// without a file.
const char *bareName(const char *path)
{
    if (!path)
        return "";
    const char *name = path;
    for (const char *c = path; c[0] && c[1]; ++c) {
        if (*c == '/' || *c == '\\')
            name = c + 1;
    }
    return name;
}

// The length as snprintf gives it. The month is written one above its number: January is 02.
int formatPrefix(char (&prefix)[prefixSize], const QMessageLogContext &context)
{
    const QDateTime now = QDateTime::currentDateTime();
    const QDate date = now.date();
    const QTime time = now.time();
    return std::snprintf(prefix, sizeof prefix, "[%d-%02d-%02d %02d:%02d:%02d.%03d]  %s:%d  ",
        date.year(), date.month() + 1, date.day(), time.hour(), time.minute(), time.second(),
        time.msec(), bareName(context.file), context.line);
}

}

void ZRLog::initialize()
{
    const QString folder = QStringLiteral("%1/log").arg(QCoreApplication::applicationDirPath());
    if (!QDir().exists(folder))
        QDir().mkdir(folder);
    removeOldFiles(folder);
    const QString name = QDateTime::currentDateTime().toString(nameFormat());
    instance = new ZRLog(QStringLiteral("%1/%2.clog").arg(folder, name));
    instance->previousHandler = qInstallMessageHandler(handler);
}

void ZRLog::shutdown()
{
    delete instance;
    instance = nullptr;
}

ZRLog::ZRLog(const QString &path) :
    file(new QFile(path)),
    stream(nullptr),
    mutex(new QMutex(QMutex::NonRecursive)),
    previousHandler(nullptr)
{
    if (file->open(QIODevice::WriteOnly)) {
        stream = new QTextStream(file);
    } else {
        delete file;
        file = nullptr;
    }
}

ZRLog::~ZRLog()
{
    delete stream; // flushes
    delete file; // closes
    delete mutex;
}

void ZRLog::handler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // Without a test: nothing may be logged after shutdown().
    if (instance->previousHandler)
        instance->previousHandler(type, context, message);
    char prefix[prefixSize] = {};
    if (formatPrefix(prefix, context) < 1)
        return;
    instance->write(prefix, message);
}

void ZRLog::write(const char *prefix, const QString &message)
{
    QMutexLocker locker(mutex);
    if (!stream)
        return;
    *stream << prefix << message << '\n';
    stream->flush();
}
