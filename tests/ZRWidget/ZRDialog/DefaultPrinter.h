#pragma once

class QString;

// Makes this the system's default printer for the test's own process, whether there is such a
// printer or not; an empty name means that there is no default one. False when it didn't work.
bool setDefaultPrinter(const QString &name);
