#pragma once

#include "FleetLabelSettings.h"

#include <QJsonArray>
#include <QJsonObject>

#include <functional>
#include <initializer_list>
#include <vector>

class QImage;
class QPainter;

// A label printer for people who have none: it obeys the calls of the printer's library and leaves
// each label as a picture, each call as a line of a journal (docs/fleet.md). All lengths are dots.
// Calls give 0, a negative number when they were refused, or what the settings tell them to fail
// with; a call that fails does nothing. Any argument will do. One thread at a time.
class FleetLabelPrinter
{
public:
    enum Result { Done = 0, PortClosed = -1, Refused = -2, NotWritten = -3 };

    // The settings file lies in `home`, and so do the labels unless it tells otherwise.
    explicit FleetLabelPrinter(const QString &home);

    int openPort(const char *name);
    int closePort();
    int clearBuffer(); // the drawn items; what was set stays
    int setLabelHeight(int height, int gap, int offset, int flag);
    int setLabelWidth(int width);
    int setDarkness(int darkness); // 0 to 20
    int setPrintSpeed(int speed);
    int setDirection(int direction); // 'B': as read, 'T': upside down
    int drawText(int x, int y, int height, int width, const char *font, int orientation, int weight,
        int italic, int underline, int strikeOut, const char *name, const char *text);
    int drawQRCode(int x, int y, int width, int height, int orientation, int magnification,
        int mode, int level, int mask, const char *text);
    int printLabel(int sets, int copies);
    // Any other call: it is written down.
    int record(const char *call);

private:
    struct Limit {
        const char *what;
        int value;
        int first;
        int last;
    };
    using Limits = std::initializer_list<Limit>;
    // Does the call's work and returns its result; may add to its line.
    using Act = std::function<int(QJsonObject &line)>;

    int obey(const char *call, QJsonObject line, const Act &act);
    int command(
        const char *call, const QJsonArray &arguments, const Limits &limits, const Act &act);
    int print(int count, QJsonObject &line);
    QImage picture() const;

    FleetLabelSettings settings;
    bool open = false;
    int width = 0;
    int height = 0;
    int darkness = 10;
    bool upsideDown = false;
    std::vector<std::function<void(QPainter &)>> items;
};
