#include "PostekLibrary.h"

#include "LoadedLibrary.h"
#include "LogCatcher.h"

#include <QDir>
#include <QtTest>

// SmallPrinterLibrary lies beside the test program, under the name of the printer's library.
class tst_PostekLibrary : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void bindsEveryEntryPointInOrder();
    void failedLoad();
    void failedLoadKeepsWhatIsHeld();
    void loadsAgainWhatIsLoaded();
    void commands();
    void missingEntryPoint();
    void unloads();
    void leftLoaded();
    void missingLibrary();
};

namespace {
// A system with at most one library, which has no entry points.
class RecordingSystem : public SharedLibrary
{
public:
    Handle load(const char *name) override
    {
        calls.append(QString("load ") + name);
        return present ? this : nullptr;
    }

    Symbol symbol(Handle library, const char *name) override
    {
        symbols.append(library == this ? name : "a name of another library");
        return nullptr;
    }

    void free(Handle library) override { calls.append(library == this ? "free" : "free another"); }

    bool present = true;
    QStringList calls;
    QStringList symbols;
};

const QStringList entryPoints = {"OpenPort", "SetPCComPort", "ClosePort", "PTK_GetErrState",
    "PTK_PrintLabel", "PTK_GetInfo", "PTK_ClearBuffer", "PTK_SetDarkness", "PTK_SetPrintSpeed",
    "PTK_SetLabelHeight", "PTK_SetLabelWidth", "PTK_SetDirection", "PTK_DrawText", "PTK_DrawTextEx",
    "PTK_DrawTextTrueTypeW", "PTK_DrawBarcode", "PTK_DrawBarcodeEx", "PTK_DrawBar2D_DATAMATRIX",
    "PTK_DrawBar2D_QR", "PTK_DrawBar2D_QREx", "PTK_DrawBar2D_MaxiCode", "PTK_DrawBar2D_Pdf417",
    "PTK_DrawBar2D_HANXIN", "PTK_PcxGraphicsList", "PTK_PcxGraphicsDel", "PTK_PcxGraphicsDownload",
    "PTK_DrawPcxGraphics", "PTK_PrintPCX", "PTK_BinGraphicsList", "PTK_BinGraphicsDel",
    "PTK_BinGraphicsDownload", "PTK_RecallBinGraphics", "PTK_DrawBinGraphics",
    "PTK_BmpGraphicsDownload", "PTK_DrawRectangle", "PTK_DrawLineXor", "PTK_DrawLineOr",
    "PTK_DrawDiagonal", "PTK_DrawWhiteLine", "PTK_RWRFIDLabel", "PTK_SetRFLabelPWAndLockRFLabel",
    "PTK_SetRFIDLabelRetryCount", "PTK_SetRFID", "PTK_FeedBack", "PTK_ErrorReportUSB",
    "PTK_ErrorReport", "PTK_GetUSBID", "PTK_SendFile", "PTK_SoftFontList", "PTK_SoftFontDel",
    "PTK_FormList", "PTK_FormDel", "PTK_FormDownload", "PTK_DefineCounter", "PTK_DefineVariable",
    "PTK_FormEnd", "PTK_ExecForm", "PTK_Download", "PTK_DownloadInitVar", "PTK_PrintLabelAuto",
    "PTK_PrintConfiguration", "PTK_DisableBackFeed", "PTK_EnableBackFeed", "PTK_EnableFLASH",
    "PTK_DisableFLASH", "PTK_Reset", "PTK_FeedMedia", "PTK_MediaDetect", "PTK_CutPage",
    "PTK_CutPageEx", "PTK_SetPrinterState", "PTK_SetCoordinateOrigin", "PTK_SetFontGap",
    "PTK_SetBarCodeFontName", "PTK_SetCharSets"};

QString libraryFile()
{
    return QCoreApplication::applicationDirPath() + "/" WINPSK_FILE;
}

bool isLoaded()
{
    return loadedLibrary(libraryFile());
}

QByteArray journal()
{
    const auto read = reinterpret_cast<const char *(*)()>(
        SharedLibrary::system().symbol(loadedLibrary(libraryFile()), "printerJournal"));
    return read();
}
}

void tst_PostekLibrary::cleanup()
{
    WinpskLibrary().unload();
    QVERIFY(!isLoaded());
}

void tst_PostekLibrary::bindsEveryEntryPointInOrder()
{
    QCOMPARE(entryPoints.size(), 75);
    RecordingSystem system;
    WinpskLibrary library(system);
    QVERIFY(library.load());
    QCOMPARE(system.calls, QStringList({"load WINPSK"}));
    QCOMPARE(system.symbols, entryPoints);

    library.unload();
    QCOMPARE(system.calls, QStringList({"load WINPSK", "free"}));
    library.unload(); // nothing is held any more
    QCOMPARE(system.calls.size(), 2);
}

void tst_PostekLibrary::failedLoad()
{
    RecordingSystem system;
    system.present = false;
    WinpskLibrary library(system);
    QVERIFY(!library.load());
    library.unload();
    QCOMPARE(system.calls, QStringList({"load WINPSK"}));
    QCOMPARE(system.symbols, QStringList());
}

// What an earlier print left loaded is freed by the unload that follows a failed load.
void tst_PostekLibrary::failedLoadKeepsWhatIsHeld()
{
    RecordingSystem system;
    QVERIFY(WinpskLibrary(system).load());
    system.present = false;
    WinpskLibrary library(system);
    QVERIFY(!library.load());
    library.unload();
    library.unload();
    QCOMPARE(system.calls, QStringList({"load WINPSK", "load WINPSK", "free"}));
}

void tst_PostekLibrary::loadsAgainWhatIsLoaded()
{
    RecordingSystem system;
    QVERIFY(WinpskLibrary(system).load());
    WinpskLibrary library(system);
    QVERIFY(library.load());
    QCOMPARE(system.symbols, entryPoints + entryPoints);
    library.unload(); // once, for two loads
    QCOMPARE(system.calls, QStringList({"load WINPSK", "load WINPSK", "free"}));
}

// What goes in and what comes out.
void tst_PostekLibrary::commands()
{
    WinpskLibrary library;
    QVERIFY(library.load());
    QCOMPARE(library.openPort("POSTEK \xe4\xba\xac"), 11);
    QCOMPARE(library.clearBuffer(), 13);
    QCOMPARE(library.setLabelHeight(1, 2, 3, 4), 14);
    QCOMPARE(library.setLabelWidth(5), 15);
    QCOMPARE(library.setPrintSpeed(6), 16);
    QCOMPARE(library.setDirection('B'), 17);
    QCOMPARE(library.drawText({1, 2, 3, 4, "Font", 5, 6, 7, 8, 9, "Name", "T\xc3\xa9xt"}), 18);
    QCOMPARE(library.drawQRCode({1, 2, {3, 4, 5, 6, 7, 8, 9}, "Code"}), 19);
    QCOMPARE(library.printLabel(7, 8), 20);
    QCOMPARE(library.closePort(), 12);
    QCOMPARE(journal(),
        QByteArray("OpenPort(POSTEK \xe4\xba\xac)\n"
                   "PTK_ClearBuffer()\n"
                   "PTK_SetLabelHeight(1, 2, 3, 4)\n"
                   "PTK_SetLabelWidth(5)\n"
                   "PTK_SetPrintSpeed(6)\n"
                   "PTK_SetDirection(66)\n"
                   "PTK_DrawTextTrueTypeW(1, 2, 3, 4, Font, 5, 6, 7, 8, 9, Name, T\xc3\xa9xt)\n"
                   "PTK_DrawBar2D_QR(1, 2, 3, 4, 5, 6, 7, 8, 9, Code)\n"
                   "PTK_PrintLabel(7, 8)\n"
                   "ClosePort()\n"));
}

void tst_PostekLibrary::missingEntryPoint()
{
    const LogCatcher log;
    WinpskLibrary library;
    QVERIFY(library.load());
    QCOMPARE(log.lines(), QStringList()); // binding doesn't look
    QTest::ignoreMessage(QtWarningMsg, "The printer's library lacks PTK_SetDarkness");
    QVERIFY(library.setDarkness(14) < 0);
    QCOMPARE(log.lines(), QStringList({"The printer's library lacks PTK_SetDarkness"}));
    QCOMPARE(library.setPrintSpeed(5), 16); // the others go on
}

void tst_PostekLibrary::unloads()
{
    WinpskLibrary library;
    QVERIFY(!isLoaded());
    QVERIFY(library.load());
    QVERIFY(isLoaded());
    library.clearBuffer();
    QCOMPARE(journal(), QByteArray("PTK_ClearBuffer()\n"));
    library.unload();
    QVERIFY(!isLoaded());

    QVERIFY(library.load());
    QCOMPARE(journal(), QByteArray()); // a fresh one
}

// One unload for two loads leaves the system a reference.
void tst_PostekLibrary::leftLoaded()
{
    QVERIFY(WinpskLibrary().load());
    QVERIFY(isLoaded());
    WinpskLibrary library;
    QVERIFY(library.load());
    QCOMPARE(library.clearBuffer(), 13);
    library.unload();
    QVERIFY(isLoaded());

    SharedLibrary::system().free(loadedLibrary(libraryFile())); // it, for the other tests
}

void tst_PostekLibrary::missingLibrary()
{
    const QString away = libraryFile() + ".away";
    QVERIFY(QFile::rename(libraryFile(), away));
    WinpskLibrary library;
    const bool loaded = library.load();
    QVERIFY(QFile::rename(away, libraryFile()));
    QVERIFY(!loaded);
    QVERIFY(library.load());
}

QTEST_GUILESS_MAIN(tst_PostekLibrary)
#include "tst_PostekLibrary.moc"
