#pragma once

#include <QByteArrayList>

// What the system knows about the test's own process. Any thread.
namespace ThisProcess {

// The threads' names, sorted, as the system keeps them.
QByteArrayList threadNames(const QByteArray &beginning = {});
// What it keeps of a name: Linux the first 15 letters, Windows all.
QByteArray keptName(const QByteArray &name);

// Files, sockets and, on Windows, all else that has a handle.
int openFiles();
// At the most so many of them are of the program's locks: on Windows a lock for which a thread has
// once waited keeps a handle.
extern const int filesOfLocks;

// Of resident memory, in bytes: now, and the most so far.
qint64 memory();
qint64 peakMemory();

// Seconds of the processor that all threads, or the calling one, have used.
double processorSeconds();
double threadProcessorSeconds();

// Whether Wine is what it takes for Windows.
bool inWine();

}
