#include "FleetLabelItems.h"

#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <qrencode.h>

#include <memory>

namespace {

QFont::Weight fontWeight(int weight)
{
    constexpr QFont::Weight weights[] = {QFont::Normal, QFont::Thin, QFont::ExtraLight,
        QFont::Light, QFont::Normal, QFont::Medium, QFont::DemiBold, QFont::Bold, QFont::ExtraBold,
        QFont::Black, QFont::Black};
    return weights[qBound(0, (weight + 50) / 100, 10)];
}

// A printer prints a dot or doesn't, and no dot is there to hint for.
QFont fontOf(const FleetLabelText &text)
{
    QFont font(text.font);
    font.setWeight(fontWeight(text.weight));
    font.setItalic(text.italic);
    font.setUnderline(text.underline);
    font.setStrikeOut(text.strikeOut);
    font.setStyleStrategy(QFont::NoAntialias);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setPixelSize(text.height);
    const qreal cell = QFontMetricsF(font).height();
    font.setPixelSize(qMax(1, qRound(text.height * text.height / cell)));
    return font;
}

}

bool FleetLabelText::isPossible()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance());
}

void FleetLabelText::draw(QPainter &painter) const
{
    const QFont font = fontOf(*this);
    const QFontMetricsF metrics(font);
    painter.save();
    painter.translate(x, y);
    painter.rotate(90 * ((orientation - 1) % 4));
    if (width > 0)
        painter.scale(width / metrics.averageCharWidth(), 1);
    if (orientation > 4)
        painter.translate(-metrics.horizontalAdvance(text) / 2, 0);
    painter.setFont(font);
    painter.drawText(QPointF(0, metrics.ascent()), text);
    painter.restore();
}

QImage FleetLabelCode::encode(const char *text, int version, int level, int quarters)
{
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeString8bit(text, version, QRecLevel(level)), &QRcode_free);
    if (!code)
        return QImage();
    const int side = code->width;
    QImage modules(side, side, QImage::Format_RGB32);
    for (int i = 0; i < side * side; ++i)
        modules.setPixel(
            i % side, i / side, code->data[i] & 1 ? qRgb(0, 0, 0) : qRgb(255, 255, 255));
    return modules.transformed(QTransform().rotate(90 * quarters));
}

void FleetLabelCode::draw(QPainter &painter) const
{
    const int side = modules.width();
    for (int i = 0; i < side * side; ++i) {
        const QPoint module(i % side, i / side);
        if (modules.pixel(module) == qRgb(0, 0, 0))
            painter.fillRect(
                QRect(QPoint(x, y) + module * magnification, QSize(magnification, magnification)),
                Qt::black);
    }
}
