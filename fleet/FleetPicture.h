#pragma once

#include <QString>

#include <cstdint>
#include <vector>

// The moving test picture of a camera as planes of Y, U and V (4:2:0): time code on top, colour
// bars, a block that wanders to and fro in four seconds, name and clock. Little of it changes from
// one picture to the next, so that encoding costs little. No thread of its own; one user at a time.
class FleetPicture
{
public:
    // Both even numbers.
    FleetPicture(int width, int height);

    // `ms` since the epoch is the moment of the picture.
    void draw(const QString &name, const QString &clock, int64_t ms);

    int width() const { return columns; }
    int height() const { return lines; }
    int stride() const { return lumaStride; }
    // Y with rows of stride() bytes, then U and V with rows of half of it, rounded up to 4.
    const std::vector<uint8_t> &bytes() const { return planes; }

private:
    struct Area {
        int left, top, right, bottom;
    };

    void fill(const Area &area, uint8_t grey);
    void drawBars();
    void drawBlock(int64_t ms);
    void drawText(int line, const QString &text);
    void drawLetter(int left, int top, QChar letter);

    int columns;
    int lines;
    int lumaStride;
    int chromaStride;
    int letterScale; // pixels of a dot
    std::vector<uint8_t> planes;
    Area block{0, 0, 0, 0};
    QString texts[2]; // as drawn
};
