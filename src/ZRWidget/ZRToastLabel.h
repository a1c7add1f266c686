#pragma once

#include <Qt>

#include <functional>

class QString;
class QWidget;
class ZRLabel;

// The short message that floats over a ZRToast or a ZRDialog. GUI thread only.
namespace ZRToastLabel {
// Shows the message over the host, which owns the label. Margins are pixels from the edge that
// the alignment names; left goes before centre and centre before right, top to bottom likewise,
// and with none of them the margin is the coordinate.
// `hide` is called 2 s from now and 10 ms after a click, as long as the host lives. Nothing calls
// it off, so the time of an earlier toast can cut a later one short.
ZRLabel *show(QWidget *host, const QString &message, Qt::Alignment alignment, int marginX,
    int marginY, const std::function<void()> &hide);
// Deletes the label at once and clears the pointer; does nothing with a null one.
void remove(ZRLabel *&toast);
}
