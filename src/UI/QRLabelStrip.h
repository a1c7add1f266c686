#pragma once

#include "ZRLabelSettings.h"

#include <QMarginsF>
#include <QRectF>

// Where the labels of a strip lie on a page, in device pixels. Places of a strip whose paper has no
// width or no height aren't numbers.
struct QRLabelPlaces {
    // Of label `column`, from 0.
    QRectF label(int column) const;
    // False for a place that whole pixels can't express.
    bool canDraw(int column) const;

    QMarginsF margins;
    QSizeF labelSize;
    double gap = 0;
    int codeSize = 0; // side of the code in each label
    double scale = 0; // millimetres per pixel
};

// A strip of labels side by side, as the settings tell it: millimetres, of any sign.
// Values only: no printer is needed. Any thread.
struct QRLabelStrip : ZRLabelSettings {
    // What the settings hold now.
    static QRLabelStrip saved();

    // False when the width or the height is exactly 0.
    bool hasSize() const;
    // At least one.
    int columns() const;
    // Whole millimetres, truncated. The margins above and below don't count.
    QSize paperSize() const;
    // `page` is what can be printed on and `paper` the whole sheet, both as the printer gave them.
    QRLabelPlaces places(const QRectF &page, const QRectF &paper) const;
};

// The whole part of a number; 0 for one that isn't finite or is out of all proportion.
int wholePart(double number);
