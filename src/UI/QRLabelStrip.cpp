#include "QRLabelStrip.h"

#include "ZRConfigure.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double codeShare = 0.7; // of the label's height
constexpr double farthest = 1e8; // sums of such numbers still fit an int

bool isWithinReach(double number)
{
    return std::abs(number) <= farthest; // not so for what isn't a number
}

}

int wholePart(double number)
{
    return isWithinReach(number) ? int(number) : 0;
}

QRectF QRLabelPlaces::label(int column) const
{
    const double x = column * (labelSize.width() + gap) + margins.left();
    return QRectF(QPointF(x, margins.top()), labelSize);
}

bool QRLabelPlaces::canDraw(int column) const
{
    const QRectF place = label(column);
    const double numbers[] = {place.x(), place.y(), place.width(), place.height(), scale};
    return std::all_of(std::begin(numbers), std::end(numbers), isWithinReach);
}

QRLabelStrip QRLabelStrip::saved()
{
    return {ZRLabelSettings::read(ZRConfigure())};
}

bool QRLabelStrip::hasSize() const
{
    return width != 0.0 && height != 0.0;
}

int QRLabelStrip::columns() const
{
    return qMax(column, 1);
}

QSize QRLabelStrip::paperSize() const
{
    const double paperWidth = (columns() - 1) * padding + (right + left) + columns() * width;
    return QSize(wholePart(paperWidth), wholePart(height));
}

QRLabelPlaces QRLabelStrip::places(const QRectF &page, const QRectF &paper) const
{
    const QSize millimetres = paperSize();
    const auto across = [&](double length) { return page.width() * length / millimetres.width(); };
    const auto down = [&](double length) { return page.height() * length / millimetres.height(); };

    QRLabelPlaces places;
    places.margins = QMarginsF(across(left), down(top), across(right), down(bottom));
    places.labelSize = QSizeF(across(width), down(height));
    places.gap = across(padding);
    places.codeSize = wholePart(places.labelSize.height() * codeShare);
    places.scale = millimetres.width() / paper.width();
    return places;
}
