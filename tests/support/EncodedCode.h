#pragma once

#include <QString>

#include <memory>

#include <qrencode.h>

using EncodedCode = std::unique_ptr<QRcode, decltype(&QRcode_free)>;

// The code of a label's text: its case kept, from the second version on, by the highest level of
// correction (3) and in bytes (2). Null when no code can hold it.
inline EncodedCode encodedCode(const QString &text)
{
    return EncodedCode(
        QRcode_encodeString(text.toUtf8().constData(), 2, QRecLevel(3), QRencodeMode(2), 1),
        QRcode_free);
}
