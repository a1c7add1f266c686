#pragma once

#include <QtGlobal>

struct AVFrame;

// What the values of a YUV picture mean: the weights of red and blue in Y, and their range.
struct ZRVideoColours {
    float kr = 0.299f;
    float kb = 0.114f;
    bool fullRange = false; // 0 to 255; else Y is 16 to 235 and chroma 16 to 240

    // By the frame's format and what its stream says of itself; BT.601 when that is nothing.
    static ZRVideoColours of(const AVFrame &frame);

    // Value of Y that is black.
    int black() const { return fullRange ? 0 : 16; }
    // Factors of a picture with Y from 0 (black) and chroma around 0, for RGB on the same scale:
    // r = y * Y + rv * V, g = y * Y + gu * U + gv * V, b = y * Y + bu * U.
    struct Factors {
        float y, rv, gu, gv, bu;
    };
    Factors factors() const;
};

inline bool operator==(const ZRVideoColours &a, const ZRVideoColours &b)
{
    return a.kr == b.kr && a.kb == b.kb && a.fullRange == b.fullRange;
}

// A picture of three planes, 8 bits a value, chroma at half the width and height, rounded up.
// The planes are lent.
struct ZRYuvPicture {
    const quint8 *planes[3] = {}; // Y, U, V
    int strides[3] = {}; // bytes from row to row, negative when the rows stand bottom up
    int width = 0;
    int height = 0;
    ZRVideoColours colours;

    // Whether the frame is such a picture, with every row inside of its plane's buffer.
    static bool isIn(const AVFrame &frame);
    static ZRYuvPicture of(const AVFrame &frame);
    // How many of the rows of a plane lie inside of its buffer, at that stride and row length.
    static int rowsInside(const AVFrame &frame, int plane, int stride, int length, int rows);

    int rowLength(int plane) const { return plane == 0 ? width : (width + 1) / 2; }
    int rows(int plane) const { return plane == 0 ? height : (height + 1) / 2; }
    const quint8 *row(int plane, int number) const
    {
        return planes[plane] + qptrdiff(number) * strides[plane];
    }
};
