// A printer's library with some of the entry points, under the real library's file name. It keeps
// what it is told until it is unloaded.

#include <cstdarg>
#include <cstdio>

namespace {
char journal[4096];
int length = 0;

int note(int result, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    length += std::vsnprintf(journal + length, sizeof journal - length, format, arguments);
    va_end(arguments);
    return result;
}
}

// Each command has a result of its own.
extern "C" {
const char *printerJournal()
{
    return journal;
}

int OpenPort(const char *name)
{
    return note(11, "OpenPort(%s)\n", name);
}

int ClosePort()
{
    return note(12, "ClosePort()\n");
}

int PTK_ClearBuffer()
{
    return note(13, "PTK_ClearBuffer()\n");
}

int PTK_SetLabelHeight(int height, int gap, int first, int second)
{
    return note(14, "PTK_SetLabelHeight(%d, %d, %d, %d)\n", height, gap, first, second);
}

int PTK_SetLabelWidth(int width)
{
    return note(15, "PTK_SetLabelWidth(%d)\n", width);
}

int PTK_SetPrintSpeed(int speed)
{
    return note(16, "PTK_SetPrintSpeed(%d)\n", speed);
}

int PTK_SetDirection(int direction)
{
    return note(17, "PTK_SetDirection(%d)\n", direction);
}

int PTK_DrawTextTrueTypeW(int x, int y, int height, int width, const char *font, int orientation,
    int weight, int italic, int underline, int strikeOut, const char *name, const char *text)
{
    return note(18, "PTK_DrawTextTrueTypeW(%d, %d, %d, %d, %s, %d, %d, %d, %d, %d, %s, %s)\n", x, y,
        height, width, font, orientation, weight, italic, underline, strikeOut, name, text);
}

int PTK_DrawBar2D_QR(
    int x, int y, int a, int b, int c, int d, int e, int f, int g, const char *text)
{
    return note(19, "PTK_DrawBar2D_QR(%d, %d, %d, %d, %d, %d, %d, %d, %d, %s)\n", x, y, a, b, c, d,
        e, f, g, text);
}

int PTK_PrintLabel(int sets, int copies)
{
    return note(20, "PTK_PrintLabel(%d, %d)\n", sets, copies);
}
}
