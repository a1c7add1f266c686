#pragma once

#include <array>

#include "SharedLibrary.h"

// A text on a label, with what the library takes, in its order. Positions and sizes are dots.
struct PostekText {
    int x;
    int y;
    int height;
    int width;
    const char *font;
    int orientation;
    int weight;
    int italic;
    int underline;
    int strikeOut;
    const char *name;
    const char *text; // UTF-8
};

// A QR code on a label, likewise.
struct PostekQRCode {
    int x;
    int y;
    std::array<int, 7> form;
    const char *text; // UTF-8
};

// The commands of a POSTEK label printer that this program gives, between load() and unload().
// Thread: the GUI thread, which they block. Commands give 0 on success. Lengths are printer dots.
class PostekLibrary
{
public:
    virtual ~PostekLibrary() = default;
    virtual bool load() = 0;
    virtual void unload() = 0; // also when nothing is loaded

    virtual int openPort(const char *printerName) = 0; // UTF-8
    virtual int closePort() = 0;
    virtual int clearBuffer() = 0;
    virtual int setLabelHeight(int height, int gap, int first, int second) = 0;
    virtual int setLabelWidth(int width) = 0;
    virtual int setDarkness(int darkness) = 0;
    virtual int setPrintSpeed(int speed) = 0;
    virtual int setDirection(char direction) = 0;
    virtual int drawText(const PostekText &text) = 0;
    virtual int drawQRCode(const PostekQRCode &code) = 0;
    virtual int printLabel(int sets, int copies) = 0;
};

// The printer's own library, WINPSK. What is loaded is the module's, whichever object loaded it: a
// library that was left loaded is loaded once more and bound anew.
// Binding doesn't look at what it finds; a command that the library lacks fails when it is given,
// with -1 and a line in the log.
class WinpskLibrary : public PostekLibrary
{
public:
    explicit WinpskLibrary(SharedLibrary &libraries = SharedLibrary::system());

    bool load() override;
    void unload() override;

    int openPort(const char *printerName) override;
    int closePort() override;
    int clearBuffer() override;
    int setLabelHeight(int height, int gap, int first, int second) override;
    int setLabelWidth(int width) override;
    int setDarkness(int darkness) override;
    int setPrintSpeed(int speed) override;
    int setDirection(char direction) override;
    int drawText(const PostekText &text) override;
    int drawQRCode(const PostekQRCode &code) override;
    int printLabel(int sets, int copies) override;

private:
    SharedLibrary &libraries;
};
