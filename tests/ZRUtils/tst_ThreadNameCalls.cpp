#include "ThreadName.h"

#include "ReplaceImport.h"

#include <QtTest>

#include <windows.h>

// Which library of Windows a thread's name is given to: they have the call since different times.
class tst_ThreadNameCalls : public QObject
{
    Q_OBJECT

private slots:
    void library_data();
    void library();
};

namespace {

QStringList having; // the libraries that have the call
QStringList asked;
QStringList named;

HRESULT WINAPI noteName(HANDLE thread, PCWSTR name)
{
    if (thread == GetCurrentThread())
        named.append(QString::fromWCharArray(name));
    return S_OK;
}

FARPROC WINAPI lookUp(HMODULE module, LPCSTR function)
{
    if (qstrcmp(function, "SetThreadDescription") != 0)
        return nullptr;
    for (const char *library : {"kernel32", "kernelbase"}) {
        if (module != GetModuleHandleA(library))
            continue;
        asked.append(library);
        if (having.contains(library))
            return reinterpret_cast<FARPROC>(reinterpret_cast<void *>(noteName));
    }
    return nullptr;
}

}

REPLACE_IMPORT(GetProcAddress, lookUp);

void tst_ThreadNameCalls::library_data()
{
    QTest::addColumn<QStringList>("having");
    QTest::addColumn<QStringList>("asked");
    QTest::addColumn<QStringList>("named");

    const QStringList both = {"kernel32", "kernelbase"};
    const QStringList name = {"VorlynSDKSendThread"};
    QTest::newRow("both") << both << QStringList("kernel32") << name;
    QTest::newRow("the first Windows with the call") << QStringList("kernelbase") << both << name;
    QTest::newRow("older") << QStringList() << both << QStringList();
}

void tst_ThreadNameCalls::library()
{
    QFETCH(QStringList, having);
    ::having = having;
    asked.clear();
    named.clear();
    ThreadName::set("VorlynSDKSendThread");
    QTEST(asked, "asked");
    QTEST(named, "named");
}

QTEST_GUILESS_MAIN(tst_ThreadNameCalls)
#include "tst_ThreadNameCalls.moc"
