#pragma once

class ZRConfigure;

// The saved measures of a strip of labels, in millimetres. Any thread.
struct ZRLabelSettings {
    // What the file lacks is 0.
    static ZRLabelSettings read(const ZRConfigure &configure);
    void write(ZRConfigure &configure) const;

    double width = 0.0; // of one label, as the height
    double height = 0.0;
    int column = 0; // labels side by side
    double left = 0.0; // margins of the strip
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;
    double padding = 0.0; // between two labels
};
