#pragma once

#include <QSizeF>
#include <QString>

// What is known of the test's printers as the program reaches them on this system.
namespace PrintersHere {

extern const QString plainQueue; // prints each strip as the program has drawn it
extern const double accuracy; // of where a thing is printed, in pixels of the screen
extern const bool sizesAreFree; // also of a printer that tells none

// Of a strip, as the printer gives it back.
QSizeF paperOf(const QSizeF &millimetres);

}
