#include "PrintersHere.h"

#include <QPageSize>

// Wine's driver prints on sizes that a printer names, and in whole dots of the printer, 300 to the
// inch: an edge may be two away.
const QString PrintersHere::plainQueue = "LABEL-300";
const double PrintersHere::accuracy = 2 * 96.0 / 300;
const bool PrintersHere::sizesAreFree = false;

// Whole points.
QSizeF PrintersHere::paperOf(const QSizeF &millimetres)
{
    const QPageSize size(millimetres, QPageSize::Millimeter);
    return QPageSize(size.sizePoints()).size(QPageSize::Millimeter);
}
