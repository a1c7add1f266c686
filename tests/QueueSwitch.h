#pragma once

#include <QString>

// Takes a queue of the test's print server out of use, or brings it back, as its user would: by
// stopping it, or by "Use Printer Offline" on Windows. False when the system refuses.
bool switchQueue(const QString &name, bool on);
