#include "PostekLibrary.h"

#include <QDebug>

// Every entry point of the library, in the order of binding.
// clang-format off
#define POSTEK_ENTRY_POINTS(X) \
    X(OpenPort) X(SetPCComPort) X(ClosePort) X(PTK_GetErrState) X(PTK_PrintLabel) \
    X(PTK_GetInfo) X(PTK_ClearBuffer) X(PTK_SetDarkness) X(PTK_SetPrintSpeed) \
    X(PTK_SetLabelHeight) X(PTK_SetLabelWidth) X(PTK_SetDirection) X(PTK_DrawText) \
    X(PTK_DrawTextEx) X(PTK_DrawTextTrueTypeW) X(PTK_DrawBarcode) X(PTK_DrawBarcodeEx) \
    X(PTK_DrawBar2D_DATAMATRIX) X(PTK_DrawBar2D_QR) X(PTK_DrawBar2D_QREx) \
    X(PTK_DrawBar2D_MaxiCode) X(PTK_DrawBar2D_Pdf417) X(PTK_DrawBar2D_HANXIN) \
    X(PTK_PcxGraphicsList) X(PTK_PcxGraphicsDel) X(PTK_PcxGraphicsDownload) \
    X(PTK_DrawPcxGraphics) X(PTK_PrintPCX) X(PTK_BinGraphicsList) X(PTK_BinGraphicsDel) \
    X(PTK_BinGraphicsDownload) X(PTK_RecallBinGraphics) X(PTK_DrawBinGraphics) \
    X(PTK_BmpGraphicsDownload) X(PTK_DrawRectangle) X(PTK_DrawLineXor) X(PTK_DrawLineOr) \
    X(PTK_DrawDiagonal) X(PTK_DrawWhiteLine) X(PTK_RWRFIDLabel) \
    X(PTK_SetRFLabelPWAndLockRFLabel) X(PTK_SetRFIDLabelRetryCount) X(PTK_SetRFID) \
    X(PTK_FeedBack) X(PTK_ErrorReportUSB) X(PTK_ErrorReport) X(PTK_GetUSBID) X(PTK_SendFile) \
    X(PTK_SoftFontList) X(PTK_SoftFontDel) X(PTK_FormList) X(PTK_FormDel) X(PTK_FormDownload) \
    X(PTK_DefineCounter) X(PTK_DefineVariable) X(PTK_FormEnd) X(PTK_ExecForm) X(PTK_Download) \
    X(PTK_DownloadInitVar) X(PTK_PrintLabelAuto) X(PTK_PrintConfiguration) \
    X(PTK_DisableBackFeed) X(PTK_EnableBackFeed) X(PTK_EnableFLASH) X(PTK_DisableFLASH) \
    X(PTK_Reset) X(PTK_FeedMedia) X(PTK_MediaDetect) X(PTK_CutPage) X(PTK_CutPageEx) \
    X(PTK_SetPrinterState) X(PTK_SetCoordinateOrigin) X(PTK_SetFontGap) \
    X(PTK_SetBarCodeFontName) X(PTK_SetCharSets)
// clang-format on

namespace {
#define POSTEK_NUMBER(name) name,
enum class Entry { POSTEK_ENTRY_POINTS(POSTEK_NUMBER) };
#undef POSTEK_NUMBER

#define POSTEK_NAME(name) #name,
constexpr const char *entryNames[] = {POSTEK_ENTRY_POINTS(POSTEK_NAME)};
#undef POSTEK_NAME

SharedLibrary::Handle handle = nullptr;
std::array<SharedLibrary::Symbol, std::size(entryNames)> entryPoints; // of the library at `handle`

bool loadPostekLibrary(SharedLibrary &libraries)
{
    const SharedLibrary::Handle loaded = libraries.load("WINPSK");
    if (!loaded) {
        return false;
    }
    handle = loaded;
    for (std::size_t i = 0; i < entryPoints.size(); ++i) {
        entryPoints[i] = libraries.symbol(handle, entryNames[i]);
    }
    return true;
}

// Texts go as const char *, all else as int. POSTEK_CALL is the library's calling convention.
template <class... Arguments> int call(Entry entry, Arguments... arguments)
{
    using Function = int(POSTEK_CALL *)(Arguments...);
    const auto function = reinterpret_cast<Function>(entryPoints[std::size_t(entry)]);
    if (!function) {
        qWarning("The printer's library lacks %s", entryNames[std::size_t(entry)]);
        return -1;
    }
    return function(arguments...);
}
}

WinpskLibrary::WinpskLibrary(SharedLibrary &libraries) : libraries(libraries) { }

bool WinpskLibrary::load()
{
    return loadPostekLibrary(libraries);
}

void WinpskLibrary::unload()
{
    if (handle) {
        libraries.free(handle);
    }
    handle = nullptr;
}

int WinpskLibrary::openPort(const char *printerName)
{
    return call(Entry::OpenPort, printerName);
}

int WinpskLibrary::closePort()
{
    return call(Entry::ClosePort);
}

int WinpskLibrary::clearBuffer()
{
    return call(Entry::PTK_ClearBuffer);
}

int WinpskLibrary::setLabelHeight(int height, int gap, int first, int second)
{
    return call(Entry::PTK_SetLabelHeight, height, gap, first, second);
}

int WinpskLibrary::setLabelWidth(int width)
{
    return call(Entry::PTK_SetLabelWidth, width);
}

int WinpskLibrary::setDarkness(int darkness)
{
    return call(Entry::PTK_SetDarkness, darkness);
}

int WinpskLibrary::setPrintSpeed(int speed)
{
    return call(Entry::PTK_SetPrintSpeed, speed);
}

int WinpskLibrary::setDirection(char direction)
{
    return call(Entry::PTK_SetDirection, int(direction));
}

int WinpskLibrary::drawText(const PostekText &text)
{
    return call(Entry::PTK_DrawTextTrueTypeW, text.x, text.y, text.height, text.width, text.font,
        text.orientation, text.weight, text.italic, text.underline, text.strikeOut, text.name,
        text.text);
}

int WinpskLibrary::drawQRCode(const PostekQRCode &code)
{
    const auto &[a, b, c, d, e, f, g] = code.form;
    return call(Entry::PTK_DrawBar2D_QR, code.x, code.y, a, b, c, d, e, f, g, code.text);
}

int WinpskLibrary::printLabel(int sets, int copies)
{
    return call(Entry::PTK_PrintLabel, sets, copies);
}
