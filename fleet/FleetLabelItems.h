#pragma once

#include <QImage>
#include <QString>

class QPainter;

// What stands on a label. Lengths and positions are the printer's dots.

struct FleetLabelText {
    int x;
    int y;
    int height; // of the font's cell, from the top of its ascent to the bottom of its descent
    int width; // of an average letter; 0: as the font has it
    QString font; // or the nearest that is installed
    int orientation; // 1 to 4: turned clockwise by 0 to 3 quarters about (x, y), the beginning of
                     // its upper edge. 5 to 8: likewise, (x, y) being the middle of that edge
    int weight; // 100 thin, 400 normal, 700 bold, 900 black; 0: normal
    bool italic;
    bool underline;
    bool strikeOut;
    QString text;

    // Fonts need a QGuiApplication: draw() is for where it is possible.
    static bool isPossible();
    void draw(QPainter &painter) const;
};

struct FleetLabelCode {
    int x; // left
    int y; // and top of the code, however it is turned
    int magnification; // dots of a module
    QImage modules; // a pixel each, dark ones black

    // The bytes of the text in the smallest version from `version` on that holds them (0: any),
    // with error correction `level`, 0 to 3 for L, M, Q and H, turned clockwise by so many
    // quarters. Null when no version holds them.
    static QImage encode(const char *text, int version, int level, int quarters);
    void draw(QPainter &painter) const;
};
