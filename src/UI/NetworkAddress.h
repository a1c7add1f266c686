#pragma once

#include <QString>

// The checks of what the operator types as an address. Loose on purpose: only the first four
// numbers count, and nothing is compared with a network.

// Whether the text begins with four numbers of 0 to 255 between dots; any text may follow them.
bool isValidAddress(const QString &text);
// The address one higher in its last number, which wraps from 255 to 0 without a carry. Text that
// isValidAddress() refuses gives "0.0.0.0".
QString nextAddress(const QString &address);
