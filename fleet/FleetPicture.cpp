#include "FleetPicture.h"

#include "FleetTimeCode.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint8_t black = 16;
constexpr uint8_t grey = 64;
constexpr uint8_t white = 235;
constexpr int blockPeriodMs = 4000;

// Heights of the picture's parts, in twelfths; the time code has the first.
constexpr int barsEnd = 5;
constexpr int blockEnd = 8;
constexpr int whole = 12;

struct Colour {
    uint8_t y, u, v;
};

constexpr Colour bars[] = {{180, 128, 128}, {162, 44, 142}, {131, 156, 44}, {112, 72, 58},
    {84, 184, 198}, {65, 100, 212}, {35, 212, 114}, {black, 128, 128}};
constexpr int barCount = int(sizeof bars / sizeof *bars);

constexpr int letterWidth = 5;
constexpr int letterHeight = 7;
constexpr int longestText = 20; // letters that fit at the least
constexpr int textLineHeight = 11; // in dots

struct Letter {
    char letter;
    uint8_t rows[letterHeight]; // the upper row first, five dots each
};

constexpr Letter unknownLetter = {'\0', {31, 17, 17, 17, 17, 17, 31}};
constexpr Letter letters[] = {
    {' ', {0, 0, 0, 0, 0, 0, 0}},
    {'-', {0, 0, 0, 14, 0, 0, 0}},
    {'.', {0, 0, 0, 0, 0, 12, 12}},
    {'/', {1, 1, 2, 4, 8, 16, 16}},
    {':', {0, 12, 12, 0, 12, 12, 0}},
    {'_', {0, 0, 0, 0, 0, 0, 31}},
    {'0', {14, 17, 19, 21, 25, 17, 14}},
    {'1', {4, 12, 4, 4, 4, 4, 14}},
    {'2', {14, 17, 1, 6, 8, 16, 31}},
    {'3', {14, 17, 1, 6, 1, 17, 14}},
    {'4', {2, 6, 10, 18, 31, 2, 2}},
    {'5', {31, 16, 30, 1, 1, 17, 14}},
    {'6', {6, 8, 16, 30, 17, 17, 14}},
    {'7', {31, 1, 2, 4, 8, 8, 8}},
    {'8', {14, 17, 17, 14, 17, 17, 14}},
    {'9', {14, 17, 17, 15, 1, 2, 12}},
    {'A', {14, 17, 17, 31, 17, 17, 17}},
    {'B', {30, 17, 17, 30, 17, 17, 30}},
    {'C', {14, 17, 16, 16, 16, 17, 14}},
    {'D', {30, 17, 17, 17, 17, 17, 30}},
    {'E', {31, 16, 16, 30, 16, 16, 31}},
    {'F', {31, 16, 16, 30, 16, 16, 16}},
    {'G', {14, 17, 16, 23, 17, 17, 14}},
    {'H', {17, 17, 17, 31, 17, 17, 17}},
    {'I', {14, 4, 4, 4, 4, 4, 14}},
    {'J', {7, 2, 2, 2, 2, 18, 12}},
    {'K', {17, 18, 20, 24, 20, 18, 17}},
    {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'M', {17, 27, 21, 21, 17, 17, 17}},
    {'N', {17, 25, 21, 19, 17, 17, 17}},
    {'O', {14, 17, 17, 17, 17, 17, 14}},
    {'P', {30, 17, 17, 30, 16, 16, 16}},
    {'Q', {14, 17, 17, 17, 21, 18, 13}},
    {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},
    {'T', {31, 4, 4, 4, 4, 4, 4}},
    {'U', {17, 17, 17, 17, 17, 17, 14}},
    {'V', {17, 17, 17, 17, 17, 10, 4}},
    {'W', {17, 17, 17, 21, 21, 27, 17}},
    {'X', {17, 17, 10, 4, 10, 17, 17}},
    {'Y', {17, 17, 10, 4, 4, 4, 4}},
    {'Z', {31, 1, 2, 4, 8, 16, 31}},
};

const Letter &shapeOf(QChar letter)
{
    const auto found = std::find_if(std::begin(letters), std::end(letters),
        [=](const Letter &shape) { return letter.toUpper() == QLatin1Char(shape.letter); });
    return found == std::end(letters) ? unknownLetter : *found;
}

int roundedUpTo4(int number)
{
    return (number + 3) & ~3;
}

}

FleetPicture::FleetPicture(int width, int height) :
    columns(width),
    lines(height),
    lumaStride(roundedUpTo4(width)),
    chromaStride(roundedUpTo4(width / 2)),
    letterScale(std::max(
        1, std::min(width / (longestText * (letterWidth + 1)), height / 3 / (2 * textLineHeight)))),
    planes(size_t(lumaStride) * size_t(height) + size_t(chromaStride) * size_t(height), 128)
{
    drawBars();
    fill({0, height * barsEnd / whole, width, height * blockEnd / whole}, grey);
    fill({0, height * blockEnd / whole, width, height}, black);
}

void FleetPicture::fill(const Area &area, uint8_t value)
{
    for (int y = area.top; y < area.bottom; ++y)
        std::memset(&planes[size_t(y) * size_t(lumaStride) + size_t(area.left)], value,
            size_t(area.right - area.left));
}

void FleetPicture::drawBars()
{
    const int bottom = lines * barsEnd / whole;
    uint8_t *const u = planes.data() + size_t(lumaStride) * size_t(lines);
    uint8_t *const v = u + size_t(chromaStride) * size_t(lines / 2);
    for (int i = 0; i < barCount; ++i) {
        const int left = columns * i / barCount;
        const int right = columns * (i + 1) / barCount;
        fill({left, 0, right, bottom}, bars[i].y);
        // The time code has no colour.
        for (int y = FleetTimeCode::strip(columns, lines).height / 2 + 1; y < bottom / 2; ++y) {
            std::memset(u + y * chromaStride + left / 2, bars[i].u, size_t(right / 2 - left / 2));
            std::memset(v + y * chromaStride + left / 2, bars[i].v, size_t(right / 2 - left / 2));
        }
    }
}

void FleetPicture::draw(const QString &name, const QString &clock, int64_t ms)
{
    FleetTimeCode::write(planes.data(), lumaStride, columns, lines, ms);
    drawBlock(ms);
    drawText(0, name);
    drawText(1, clock);
}

void FleetPicture::drawBlock(int64_t ms)
{
    const int side = lines / 8;
    const int turn = int(ms % blockPeriodMs);
    const int way = std::min(turn, blockPeriodMs - turn) * 2;
    const int left = int(int64_t(columns - side) * way / blockPeriodMs);
    const int top = lines * (barsEnd + blockEnd) / 2 / whole - side / 2;
    fill(block, grey);
    block = {left, top, left + side, top + side};
    fill(block, white);
}

void FleetPicture::drawText(int line, const QString &text)
{
    if (text == texts[line])
        return;
    texts[line] = text;
    const int lineHeight = textLineHeight * letterScale;
    const int top = lines * blockEnd / whole + lineHeight * line;
    fill({0, top, columns, top + lineHeight}, black);
    const int step = (letterWidth + 1) * letterScale;
    int left = step / 2;
    for (int i = 0; i < text.size() && left + step <= columns; ++i, left += step)
        drawLetter(left, top + 2 * letterScale, text.at(i));
}

void FleetPicture::drawLetter(int left, int top, QChar letter)
{
    const Letter &shape = shapeOf(letter);
    for (int row = 0; row < letterHeight; ++row) {
        for (int dot = 0; dot < letterWidth; ++dot) {
            if (!(shape.rows[row] >> (letterWidth - 1 - dot) & 1))
                continue;
            const int x = left + dot * letterScale;
            const int y = top + row * letterScale;
            fill({x, y, x + letterScale, y + letterScale}, white);
        }
    }
}
