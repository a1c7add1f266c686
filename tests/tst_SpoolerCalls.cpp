#include "PrintSpooler.h"

#include "ReplaceImport.h"

#include <QtTest>

#include <windows.h>

#include <winspool.h>

#include <cstdlib>
#include <cstring>

// What getPrinterStatus() calls of the Windows spooler and what it reads from its block.
class tst_SpoolerCalls : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void knownQueue();
    void unknownQueue();
    void unreadableQueue();
    void name_data();
    void name();
    void status_data();
    void status();
    void dotSize_data();
    void dotSize();
};

namespace {

constexpr double before = 12.5; // of the caller, to see what stays
constexpr DWORD blockSize = 600; // as a spooler has it: the structure with its texts behind it
constexpr char rubbish = '\x5a';

// A spooler that notes each call. Its one queue is the address of `queue`.
struct {
    QStringList calls;
    QString name;
    bool found;
    bool readable;
    PRINTER_INFO_2W printer;
    DEVMODEW deviceMode;
    char queue;
    QVector<void *> blocks; // allocated and not freed yet
} spooler;

QString textOf(const void *pointer)
{
    if (!pointer)
        return "null";
    if (pointer == &spooler.queue)
        return "queue";
    return spooler.blocks.contains(const_cast<void *>(pointer)) ? "block" : "unknown";
}

HGLOBAL WINAPI allocate(UINT flags, SIZE_T size)
{
    void *block = std::malloc(size + 1); // an empty one has an address too
    std::memset(block, flags & GMEM_ZEROINIT ? 0 : rubbish, size);
    spooler.blocks.append(block);
    spooler.calls.append(QStringLiteral("GlobalAlloc(0x%1, %2)").arg(flags, 0, 16).arg(size));
    return block;
}

HGLOBAL WINAPI release(HGLOBAL block)
{
    spooler.calls.append("GlobalFree(" + textOf(block) + ')');
    if (spooler.blocks.removeOne(block))
        std::free(block);
    return nullptr;
}

double statusOf(const QString &name, int *status)
{
    double dotSize = before;
    *status = getPrinterStatus(name, &dotSize);
    return dotSize;
}

QString wide(std::initializer_list<ushort> units)
{
    return QString::fromUtf16(units.begin(), int(units.size()));
}

}

REPLACE_IMPORT(GlobalAlloc, allocate);
REPLACE_IMPORT(GlobalFree, release);

// These have no pointer to replace: the linker takes the functions themselves from here.
WINBOOL WINAPI OpenPrinterW(LPWSTR name, LPHANDLE printer, LPPRINTER_DEFAULTSW defaults)
{
    spooler.calls.append(defaults ? "OpenPrinterW with defaults" : "OpenPrinterW");
    spooler.name = QString::fromWCharArray(name);
    *printer = spooler.found ? static_cast<void *>(&spooler.queue) : INVALID_HANDLE_VALUE;
    return spooler.found;
}

WINBOOL WINAPI GetPrinterW(HANDLE queue, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed)
{
    spooler.calls.append(QStringLiteral("GetPrinterW(%1, %2, %3, %4)")
                             .arg(textOf(queue))
                             .arg(level)
                             .arg(textOf(buffer))
                             .arg(size));
    if (queue != &spooler.queue)
        return FALSE;
    *needed = blockSize;
    if (!spooler.readable || size < blockSize)
        return FALSE;
    std::memcpy(buffer, &spooler.printer, sizeof spooler.printer);
    return TRUE;
}

WINBOOL WINAPI ClosePrinter(HANDLE queue)
{
    spooler.calls.append("ClosePrinter(" + textOf(queue) + ')');
    return queue == &spooler.queue;
}

void tst_SpoolerCalls::init()
{
    spooler = {};
    spooler.found = true;
    spooler.readable = true;
}

void tst_SpoolerCalls::cleanup()
{
    QVERIFY(spooler.blocks.isEmpty());
}

void tst_SpoolerCalls::knownQueue()
{
    int status = -1;
    QCOMPARE(statusOf("POSTEK", &status), 0.85);
    QCOMPARE(status, 0);
    QCOMPARE(spooler.calls,
        QStringList({"OpenPrinterW", "GetPrinterW(queue, 2, null, 0)", "GlobalAlloc(0x40, 600)",
            "GetPrinterW(queue, 2, block, 600)", "GlobalFree(block)", "ClosePrinter(queue)"}));
}

// What the system leaves in the handle's place doesn't count.
void tst_SpoolerCalls::unknownQueue()
{
    spooler.found = false;
    int status = -1;
    QCOMPARE(statusOf("POSTEK", &status), before);
    QCOMPARE(status, 0);
    QCOMPARE(spooler.calls,
        QStringList({"OpenPrinterW", "GetPrinterW(null, 2, null, 0)", "GlobalAlloc(0x40, 0)",
            "GetPrinterW(null, 2, block, 0)", "GlobalFree(block)", "ClosePrinter(null)"}));
}

void tst_SpoolerCalls::unreadableQueue()
{
    spooler.readable = false;
    spooler.printer.Attributes = PRINTER_ATTRIBUTE_WORK_OFFLINE;
    int status = -1;
    QCOMPARE(statusOf("POSTEK", &status), before);
    QCOMPARE(status, 0);
    QCOMPARE(spooler.calls.mid(3),
        QStringList(
            {"GetPrinterW(queue, 2, block, 600)", "GlobalFree(block)", "ClosePrinter(queue)"}));
}

// The bytes of the name in UTF-8, two of them a character.
void tst_SpoolerCalls::name_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("asked");

    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("POSTEK") << "POSTEK" << wide({0x4f50, 0x5453, 0x4b45});
    QTest::newRow("odd length") << "ABC" << wide({0x4241, 0x0043});
    QTest::newRow("wide letters") << QString::fromUtf8("\xe4\xba\xac") << wide({0xbae4, 0x00ac});
}

void tst_SpoolerCalls::name()
{
    QFETCH(QString, name);
    int status = -1;
    statusOf(name, &status);
    QTEST(spooler.name, "asked");
}

void tst_SpoolerCalls::status_data()
{
    QTest::addColumn<uint>("attributes");
    QTest::addColumn<int>("status");

    constexpr uint offline = 0x400;
    constexpr uint network = 0x10;
    QTest::newRow("none") << 0u << 0;
    QTest::newRow("all others") << ~(offline | network) << 0;
    QTest::newRow("network") << network << 2;
    QTest::newRow("offline") << offline << 1;
    QTest::newRow("offline comes first") << (offline | network) << 1;
}

void tst_SpoolerCalls::status()
{
    QFETCH(uint, attributes);
    spooler.printer.Attributes = attributes;
    int status = -1;
    QCOMPARE(statusOf("POSTEK", &status), 0.85);
    QTEST(status, "status");
}

void tst_SpoolerCalls::dotSize_data()
{
    QTest::addColumn<short>("resolution");
    QTest::addColumn<double>("dotSize");

    QTest::newRow("203 dpi") << short(203) << 254.0 / 203;
    QTest::newRow("300 dpi") << short(300) << 254.0 / 300;
    QTest::newRow("high quality") << short(-4) << -63.5;
    QTest::newRow("zero") << short(0) << qInf();
}

// Of the device mode, the one field.
void tst_SpoolerCalls::dotSize()
{
    QFETCH(short, resolution);
    spooler.deviceMode.dmYResolution = resolution;
    spooler.deviceMode.dmPrintQuality = 150;
    spooler.printer.pDevMode = &spooler.deviceMode;
    int status = -1;
    QTEST(statusOf("POSTEK", &status), "dotSize");
    QCOMPARE(status, 0);
}

QTEST_GUILESS_MAIN(tst_SpoolerCalls)
#include "tst_SpoolerCalls.moc"
