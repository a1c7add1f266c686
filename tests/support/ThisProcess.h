#pragma once

#include <QByteArrayList>

// What the system knows about the test's own process. Any thread.
namespace ThisProcess {

// The threads' names, sorted, of each the first 15 letters: Linux keeps no more.
QByteArrayList threadNames(const QByteArray &beginning = {});

// Files, sockets and, on Windows, all else that has a handle.
int openFiles();

// Of resident memory, in bytes: now, and the most so far.
qint64 memory();
qint64 peakMemory();

// Seconds of the processor that all threads, or the calling one, have used.
double processorSeconds();
double threadProcessorSeconds();

}
