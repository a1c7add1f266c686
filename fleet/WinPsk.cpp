#include "FleetLabelPrinter.h"
#include "ModuleFile.h"
#include "WinPskEntry.h"
#include "WinPskNames.h"

#include <QFileInfo>

// The label printer's library as programs load it: one printer for as long as it is loaded.

namespace {

FleetLabelPrinter &printer()
{
    static const char here = 0;
    static FleetLabelPrinter printer(
        QFileInfo(QString::fromStdString(moduleFile(&here))).absolutePath());
    return printer;
}

}

WINPSK_ENTRY OpenPort(const char *name)
{
    return printer().openPort(name);
}

WINPSK_ENTRY ClosePort()
{
    return printer().closePort();
}

WINPSK_ENTRY PTK_ClearBuffer()
{
    return printer().clearBuffer();
}

WINPSK_ENTRY PTK_SetLabelHeight(int height, int gap, int offset, int flag)
{
    return printer().setLabelHeight(height, gap, offset, flag);
}

WINPSK_ENTRY PTK_SetLabelWidth(int width)
{
    return printer().setLabelWidth(width);
}

WINPSK_ENTRY PTK_SetDarkness(int darkness)
{
    return printer().setDarkness(darkness);
}

WINPSK_ENTRY PTK_SetPrintSpeed(int speed)
{
    return printer().setPrintSpeed(speed);
}

WINPSK_ENTRY PTK_SetDirection(int direction)
{
    return printer().setDirection(direction);
}

WINPSK_ENTRY PTK_DrawTextTrueTypeW(int x, int y, int height, int width, const char *font,
    int orientation, int weight, int italic, int underline, int strikeOut, const char *name,
    const char *text)
{
    return printer().drawText(
        x, y, height, width, font, orientation, weight, italic, underline, strikeOut, name, text);
}

WINPSK_ENTRY PTK_DrawBar2D_QR(int x, int y, int width, int height, int orientation,
    int magnification, int mode, int level, int mask, const char *text)
{
    return printer().drawQRCode(
        x, y, width, height, orientation, magnification, mode, level, mask, text);
}

WINPSK_ENTRY PTK_PrintLabel(int sets, int copies)
{
    return printer().printLabel(sets, copies);
}

#define WINPSK_RECORD(name)                                                                        \
    WINPSK_ENTRY name()                                                                            \
    {                                                                                              \
        return printer().record(#name);                                                            \
    }
WINPSK_RECORDED(WINPSK_RECORD)
#undef WINPSK_RECORD
