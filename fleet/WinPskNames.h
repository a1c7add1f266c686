#pragma once

// The entry points of the printer's library: those that the simulated printer obeys, and those that
// it only writes down.
// clang-format off
#define WINPSK_OBEYED(X) \
    X(OpenPort) X(ClosePort) X(PTK_ClearBuffer) X(PTK_SetLabelHeight) X(PTK_SetLabelWidth) \
    X(PTK_SetDarkness) X(PTK_SetPrintSpeed) X(PTK_SetDirection) X(PTK_DrawTextTrueTypeW) \
    X(PTK_DrawBar2D_QR) X(PTK_PrintLabel)

#define WINPSK_RECORDED(X) \
    X(SetPCComPort) X(PTK_GetErrState) X(PTK_GetInfo) X(PTK_DrawText) X(PTK_DrawTextEx) \
    X(PTK_DrawBarcode) X(PTK_DrawBarcodeEx) X(PTK_DrawBar2D_DATAMATRIX) X(PTK_DrawBar2D_QREx) \
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

#define WINPSK_TEXT(name) #name,
constexpr const char *winPskNames[] = {WINPSK_OBEYED(WINPSK_TEXT) WINPSK_RECORDED(WINPSK_TEXT)};
#undef WINPSK_TEXT
