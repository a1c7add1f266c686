#pragma once

#include <QString>

class PostekLibrary;
class PrintSpooler;

// The product label of the MR2X models on a POSTEK label printer, through the printer's library
// (PostekLibrary.h). GUI thread: it may open the printer settings, and blocks for as long as the
// printer takes.
class PostekPrinter
{
public:
    // One label of 45 by 45 millimetres. True when it went to the printer; a failed draw or print
    // command is not noticed. `sn` is not changed. Overwrites the saved label width, height,
    // columns and gap. Nothing is shown on false.
    static bool printMR2XQRCode(const QString &code, const QString &model, QString &sn);
    // The same steps through another library and another spooler.
    static bool printMR2XQRCodeBy(PostekLibrary &library, PrintSpooler &spooler,
        const QString &code, const QString &model, const QString &sn);
};
