#pragma once

#include <QByteArrayList>

// How Qt writes a settings file on this system.
namespace WrittenSettings {

extern const QByteArray lineEnd;

// The section with these lines, which were set in this order.
QByteArray section(const QByteArray &name, const QByteArrayList &lines);

}
