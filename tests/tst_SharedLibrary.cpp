#include "SharedLibrary.h"

#include "ReplaceImport.h"

#include <QtTest>

#include <windows.h>

// Loading by the system's own functions, with a library that every Windows has.
class tst_SharedLibrary : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void name_data();
    void name();
    void missingLibrary();
    void missingSymbol();
    void eachLoadIsFreed();
};

namespace {

QStringList asked; // the names that were loaded

HMODULE WINAPI load(LPCWSTR name)
{
    asked.append(QString::fromWCharArray(name));
    return LoadLibraryExW(name, nullptr, 0);
}

SharedLibrary &libraries()
{
    return SharedLibrary::system();
}

bool isLoaded()
{
    return GetModuleHandleW(L"lz32.dll");
}

}

REPLACE_IMPORT(LoadLibraryW, load);

void tst_SharedLibrary::init()
{
    asked.clear();
    QVERIFY(!isLoaded());
}

void tst_SharedLibrary::name_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("file");

    QTest::newRow("the printer's") << QByteArray("WINPSK") << "WINPSK.dll";
    QTest::newRow("one letter") << QByteArray("a") << "a.dll";
}

void tst_SharedLibrary::name()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, file);
    QVERIFY(!libraries().load(name.constData()));
    QCOMPARE(asked, QStringList(file));
}

void tst_SharedLibrary::missingLibrary()
{
    QVERIFY(!libraries().load("no-such-library"));
    QCOMPARE(GetLastError(), DWORD(ERROR_MOD_NOT_FOUND));
}

void tst_SharedLibrary::missingSymbol()
{
    const SharedLibrary::Handle library = libraries().load("lz32");
    QVERIFY(library);
    QVERIFY(libraries().symbol(library, "LZClose"));
    QVERIFY(!libraries().symbol(library, "NoSuchFunction"));
    libraries().free(library);
}

// A second load gives the same library and takes a second free().
void tst_SharedLibrary::eachLoadIsFreed()
{
    const SharedLibrary::Handle first = libraries().load("lz32");
    const SharedLibrary::Handle second = libraries().load("LZ32");
    QVERIFY(first);
    QCOMPARE(second, first);
    libraries().free(first);
    QVERIFY(isLoaded());
    libraries().free(second);
    QVERIFY(!isLoaded());
}

QTEST_GUILESS_MAIN(tst_SharedLibrary)
#include "tst_SharedLibrary.moc"
