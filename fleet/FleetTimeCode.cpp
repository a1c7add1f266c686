#include "FleetTimeCode.h"

#include <cstring>

namespace {

constexpr int rows = 2;
constexpr int bitsOfRow = 32;
constexpr int columns = bitsOfRow + 2; // with a white and a black cell to compare with at the ends
constexpr int rowsOfPicture = 24; // a row of cells is this part of the picture's height
constexpr int timeBits = 44;
constexpr uint8_t black = 16;
constexpr uint8_t white = 235;
constexpr int leastContrast = 50;

static_assert(FleetTimeCode::end == int64_t(1) << timeBits, "the time fits");

struct Cell {
    int left, top, right, bottom;
};

Cell cellAt(int row, int column, int width, int height)
{
    return {column * width / columns, row * height / rowsOfPicture, (column + 1) * width / columns,
        (row + 1) * height / rowsOfPicture};
}

// Columns of a row's cells to compare with; both sides of the strip have one of each.
int whiteColumn(int row)
{
    return row == 0 ? 0 : columns - 1;
}
int blackColumn(int row)
{
    return columns - 1 - whiteColumn(row);
}

// A mixing function whose upper bits depend on every bit of the time.
uint64_t check(uint64_t ms)
{
    uint64_t mixed = ms + 0x9e3779b97f4a7c15u;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
    return mixed >> timeBits;
}

uint64_t codeOf(uint64_t ms)
{
    return check(ms) << timeBits | ms;
}

// Mean of the cell's middle, which neither scaling nor a shift by a pixel touches.
int brightness(const uint8_t *luma, int stride, const Cell &cell)
{
    const int marginX = (cell.right - cell.left) / 4;
    const int marginY = (cell.bottom - cell.top) / 4;
    int sum = 0;
    int count = 0;
    for (int y = cell.top + marginY; y < cell.bottom - marginY; ++y) {
        for (int x = cell.left + marginX; x < cell.right - marginX; ++x, ++count)
            sum += luma[y * stride + x];
    }
    return count ? sum / count : 0;
}

}

FleetTimeCode::Strip FleetTimeCode::strip(int width, int height)
{
    return {0, 0, width, rows * height / rowsOfPicture};
}

void FleetTimeCode::write(uint8_t *luma, int stride, int width, int height, int64_t ms)
{
    const auto fill = [=](int row, int column, uint8_t grey) {
        const Cell cell = cellAt(row, column, width, height);
        for (int y = cell.top; y < cell.bottom; ++y)
            std::memset(luma + y * stride + cell.left, grey, size_t(cell.right - cell.left));
    };
    uint64_t code = codeOf(uint64_t(ms));
    for (int row = 0; row < rows; ++row) {
        fill(row, whiteColumn(row), white);
        fill(row, blackColumn(row), black);
        for (int bit = 0; bit < bitsOfRow; ++bit, code >>= 1)
            fill(row, 1 + bit, code & 1 ? white : black);
    }
}

int64_t FleetTimeCode::read(const uint8_t *luma, int stride, int width, int height)
{
    const auto cell = [=](int row, int column) {
        return brightness(luma, stride, cellAt(row, column, width, height));
    };
    int whites = 0;
    int blacks = 0;
    for (int row = 0; row < rows; ++row) {
        whites += cell(row, whiteColumn(row));
        blacks += cell(row, blackColumn(row));
    }
    if (whites - blacks < rows * leastContrast)
        return -1;
    uint64_t code = 0;
    for (int i = 0; i < rows * bitsOfRow; ++i) {
        if (rows * cell(i / bitsOfRow, 1 + i % bitsOfRow) * 2 > whites + blacks)
            code |= uint64_t(1) << i;
    }
    const uint64_t ms = code % uint64_t(end);
    return codeOf(ms) == code ? int64_t(ms) : -1;
}
