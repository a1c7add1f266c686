#pragma once

#include <QString>

// Small readings of text. Any thread.

// The part of a path behind its last "/" or backslash; the whole path when there is neither, or
// when the separator ends it.
QString fileNameOf(const QString &path);
// The same up to its last "."; a name without one, or that ends in one, stays as it is.
QString fileBaseNameOf(const QString &path);
// The id in the text of a P2P id file: lines of "key=value", of which the first with the key "did"
// in any case counts. A line with a second "=" is passed over. Empty when there is none.
QString parseDid(const QString &text);
