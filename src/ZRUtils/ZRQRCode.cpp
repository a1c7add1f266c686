#include "ZRQRCode.h"

#include <QPainter>

#include <memory>

#include <qrencode.h>

namespace {

constexpr int leastVersion = 2; // grows with the text
constexpr int caseSensitive = 1;
constexpr int lowLabel = 80; // device pixels; a code sits on the bottom edge of a lower label

using Code = std::unique_ptr<QRcode, decltype(&QRcode_free)>;

Code encode(const QString &text)
{
    return Code(QRcode_encodeString(text.toUtf8().constData(), leastVersion, QR_ECLEVEL_H,
                    QR_MODE_8, caseSensitive),
        QRcode_free);
}

bool isDark(const Code &code, int column, int row)
{
    return code->data[row * code->width + column] & 1;
}

int topOf(int y, int height, int size)
{
    return height < lowLabel ? y + height - size : y + (height - size) / 2;
}

}

bool drawQRCode(QPainter *painter, const QString &text, int x, int y, int width, int height,
    int size, double scale)
{
    const Code code = encode(text);
    if (!code)
        return false;
    const double cell = double(size) / qMax(code->width, 1);
    const int left = (width - size) / 2 + x;
    const int top = topOf(y, height, size);
    painter->setBrush(QBrush(Qt::black, Qt::SolidPattern));
    for (int row = 0; row < code->width; ++row) {
        for (int column = 0; column < code->width; ++column) {
            if (!isDark(code, column, row))
                continue;
            const QRectF module(column * cell + left, row * cell + top, cell * scale, cell * scale);
            painter->drawRects(&module, 1);
        }
    }
    return true;
}
