#include "ZRLocalize.h"

#include <QtTest>

#include <functional>
#include <memory>
#include <new>
#include <type_traits>

namespace {

// Writes down its letter when told, and does what the test asks for.
class Told : public ZRLocalize
{
public:
    Told(char letter, QString &order, std::function<void()> then = {}) :
        letter(letter),
        order(order),
        then(std::move(then))
    { }

    void onLanguageChanged() override
    {
        order += letter;
        if (then)
            then();
    }

private:
    QChar letter;
    QString &order;
    std::function<void()> then;
};

// A place in which objects can be made at an address of choice.
struct Place {
    typename std::aligned_storage<sizeof(Told), alignof(Told)>::type bytes;

    template <typename... Arguments> Told *make(Arguments &&...arguments)
    {
        return new (&bytes) Told(std::forward<Arguments>(arguments)...);
    }
};

// The keys that the file under test is asked for, and what the right file would say.
const QStringList probes = {"Search", "Cancel", "Save", "Network"};

}

class tst_ZRLocalize : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void parses_data();
    void parses();
    void stops_data();
    void stops();
    void lookupIgnoresCase();
    void absentKeyKeepsItsCase();
    void emptyValueIsReturned();
    void findsTheFile_data();
    void findsTheFile();
    void failureEmptiesTheTable_data();
    void failureEmptiesTheTable();
    void loadReplacesTheTable();
    void remembersTheNameAsGiven();
    void loadTellsNobody();
    void switchTellsInOrderOfMaking();
    void switchTellsWhenTheFileIsMissing();
    void switchWithoutObjects();
    void tableIsNewWhenToldOfIt();
    void baseHookDoesNothing();
    void destroyedObjectsAreForgotten();
    void sameAddressRegistersOnceAndLast();
    void switchWalksACopy();
    void objectsMadeMeanwhileAreNotTold();
    void readsFromSeveralThreads();

private:
    void write(const QByteArray &bytes, const QString &name = "xx.txt");
    bool load(const QByteArray &bytes);

    QTemporaryDir folder;
};

void tst_ZRLocalize::init()
{
    QVERIFY(folder.isValid());
    QDir(folder.path()).removeRecursively();
    QVERIFY(QDir().mkpath(folder.path()));
    ZRLocalize::setLanguageFolder(folder.path());
    ZRLocalize::loadLanguage("none");
}

void tst_ZRLocalize::write(const QByteArray &bytes, const QString &name)
{
    QFile file(folder.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

bool tst_ZRLocalize::load(const QByteArray &bytes)
{
    write(bytes);
    return ZRLocalize::loadLanguage("xx");
}

void tst_ZRLocalize::parses_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *tag, const QByteArray &file, const char *key,
                         const char *expected) {
        QTest::newRow(tag) << file << QString::fromUtf8(key) << QString::fromUtf8(expected);
    };
    row("bare pair", "Save=Keep\n", "Save", "Keep");
    row("no newline at the end", "Save=Keep", "Save", "Keep");
    row("CRLF", "Save=Keep\r\nCancel=Back\r\n", "Save", "Keep");
    row("CRLF, second line", "Save=Keep\r\nCancel=Back\r\n", "Cancel", "Back");
    row("UTF-8", "Save=\xe4\xbf\x9d\xe5\xad\x98\n", "Save", "\xe4\xbf\x9d\xe5\xad\x98");
    row("UTF-8 with BOM", "\xef\xbb\xbfSave=Keep\n", "Save", "Keep");
    row("key beyond ASCII", "\xc3\x84=Keep\n", "\xc3\xa4", "Keep");
    row("spaces around =", "Save = Keep\n", "Save", "Keep");
    row("spaces all around", "   Save   =   Keep   \n", "Save", "Keep");
    row("spaces inside stay", "Scan  code=a  b\n", "Scan  code", "a  b");
    row("quotes and semicolon", " \"Save\" = \"Keep\" ; \n", "Save", "Keep");
    row("quotes without semicolon", "\"Save\"=\"Keep\"\n", "Save", "Keep");
    row("quotes on one side", "\"Save\"=Keep\n", "Save", "Keep");
    row("spaces in quotes stay", "Save=\" Keep \"\n", "Save", " Keep ");
    row("spaces in a key's quotes stay", "\" Save \"=Keep\n", " Save ", "Keep");
    row("semicolons in quotes stay", "Save=\"Keep;\";\n", "Save", "Keep;");
    row("semicolons and spaces mixed", "Save=Keep; ;; ;\n", "Save", "Keep");
    row("semicolon inside stays", "Save=a;b;\n", "Save", "a;b");
    row("leading semicolon stays", "Save=;Keep\n", "Save", ";Keep");
    row("semicolon behind a key", "Save ; =Keep\n", "Save", "Keep");
    row("one quote of two at the front", "Save=\"\"Keep\n", "Save", "\"Keep");
    row("one quote of two at the end", "Save=Keep\"\"\n", "Save", "Keep\"");
    row("opening quote only", "Save=\"Keep\n", "Save", "Keep");
    row("closing quote only", "Save=Keep\"\n", "Save", "Keep");
    row("quote inside stays", "Save=a\"b\n", "Save", "a\"b");
    row("a lone quote is nothing", "Save=\"\n", "Save", "");
    row("two quotes are nothing", "Save=\"\"\n", "Save", "");
    row("three quotes are one", "Save=\"\"\"\n", "Save", "\"");
    row("space after the opening quote's", "Save=\" ;\n", "Save", "");
    row("tab before stays", "Save=\tKeep\n", "Save", "\tKeep");
    row("tab behind stays", "Save=Keep\t\n", "Save", "Keep\t");
    row("tab shields spaces", "Save= \t Keep\n", "Save", "\t Keep");
    row("tab before a quote shields it", "Save=\t\"Keep\"\n", "Save", "\t\"Keep");
    row("tab makes another key", "\tSave=Keep\n", "Save", "Save");
    row("tab is part of the key", "\tSave=Keep\n", "\tSave", "Keep");
    row("later line replaces", "Save=one\nSave=two\n", "Save", "two");
    row("later line replaces in other case", "Save=one\nSAVE=two\n", "save", "two");
    row("later empty value replaces", "Save=one\nSave=\n", "Save", "");
    row("empty value", "Save=\n", "Save", "");
    row("empty key", "=Keep\n", "", "Keep");
    row("only =", "=\n", "", "");
    row("no = is skipped", "Save Keep\nCancel=Back\n", "Save Keep", "Save Keep");
    row("after a line without =", "Save Keep\nCancel=Back\n", "Cancel", "Back");
    row("two = are skipped", "Save=a=b\nCancel=Back\n", "Save", "Save");
    row("after a line with two =", "Save=a=b\nCancel=Back\n", "Cancel", "Back");
    row("= in quotes counts too", "Save=\"a=b\"\n", "Save", "Save");
    row("= at the end counts too", "Save=Keep=\n", "Save", "Save");
    row("skipped line leaves the earlier one", "Save=one\nSave=two=2\n", "Save", "one");
    row("a comment is an entry like others", "# Save=Keep\n", "# Save", "Keep");
}

void tst_ZRLocalize::parses()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, key);
    QFETCH(QString, expected);
    QVERIFY(load(file));
    QCOMPARE(ZRLocalize::translate(key), expected);
}

void tst_ZRLocalize::stops_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("expected"); // of the probes, by the first letter of each
    QTest::newRow("empty file") << QByteArray() << "----";
    QTest::newRow("blank at the top") << QByteArray("\nSearch=x\nCancel=x\n") << "----";
    QTest::newRow("blank CRLF at the top") << QByteArray("\r\nSearch=x\r\n") << "----";
    QTest::newRow("blank in the middle") << QByteArray("Search=x\n\nCancel=x\nSave=x\n") << "x---";
    QTest::newRow("blank CRLF in the middle")
        << QByteArray("Search=x\r\n\r\nCancel=x\r\n") << "x---";
    QTest::newRow("blank at the end") << QByteArray("Search=x\nCancel=x\n\n") << "xx--";
    QTest::newRow("only spaces") << QByteArray("Search=x\n   \nCancel=x\nSave=x\n") << "xxx-";
    QTest::newRow("only a tab") << QByteArray("Search=x\n\t\nCancel=x\n") << "xx--";
    QTest::newRow("only a semicolon") << QByteArray("Search=x\n;\nCancel=x\n") << "xx--";
    QTest::newRow("all") << QByteArray("Search=x\nCancel=x\nSave=x\nNetwork=x") << "xxxx";
}

void tst_ZRLocalize::stops()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, expected);
    QVERIFY(load(file));
    QString found;
    for (const QString &key : probes) {
        const QString text = ZRLocalize::translate(key);
        found += text == key ? "-" : text;
    }
    QCOMPARE(found, expected);
}

void tst_ZRLocalize::lookupIgnoresCase()
{
    for (const char *written : {"search", "SEARCH", "Search", "sEaRcH"}) {
        QVERIFY(load(QByteArray(written) + "=Find\n"));
        for (const char *asked : {"Search", "search", "SEARCH"})
            QCOMPARE(ZRLocalize::translate(asked), QString("Find"));
    }
}

void tst_ZRLocalize::absentKeyKeepsItsCase()
{
    QVERIFY(load("Save=Keep\n"));
    QCOMPARE(
        ZRLocalize::translate("Please Select P2PID File"), QString("Please Select P2PID File"));
    QCOMPARE(ZRLocalize::translate(""), QString(""));
}

void tst_ZRLocalize::emptyValueIsReturned()
{
    QVERIFY(load("Save=\n"));
    QVERIFY(ZRLocalize::translate("Save").isEmpty());
}

void tst_ZRLocalize::findsTheFile_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("folderEnd");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("bare name") << "en.txt"
                               << ""
                               << "en" << true;
    QTest::newRow("name with suffix") << "en.txt"
                                      << ""
                                      << "en.txt" << true;
    QTest::newRow("folder with slash") << "en.txt"
                                       << "/"
                                       << "en" << true;
    QTest::newRow("both") << "en.txt"
                          << "/"
                          << "en.txt" << true;
    QTest::newRow("suffix in other case") << "en.TXT"
                                          << ""
                                          << "en.TXT" << false;
    QTest::newRow("suffix in other case, doubled") << "en.TXT.txt"
                                                   << ""
                                                   << "en.TXT" << true;
    QTest::newRow("suffix is not doubled") << "en.txt.txt"
                                           << ""
                                           << "en.txt" << false;
    QTest::newRow("no suffix of its own") << "en"
                                          << ""
                                          << "en" << false;
    QTest::newRow("other suffix") << "en.lang.txt"
                                  << ""
                                  << "en.lang" << true;
    QTest::newRow("other folder") << "en.txt"
                                  << "/nowhere"
                                  << "en" << false;
    QTest::newRow("no name") << "en.txt"
                             << ""
                             << "" << false;
    QTest::newRow("name is all suffix") << ".txt"
                                        << ""
                                        << "" << true;
}

void tst_ZRLocalize::findsTheFile()
{
    QFETCH(QString, file);
    QFETCH(QString, folderEnd);
    QFETCH(QString, name);
    QFETCH(bool, found);
    write("Save=Keep\n", file);
    ZRLocalize::setLanguageFolder(folder.path() + folderEnd);
    QCOMPARE(ZRLocalize::loadLanguage(name), found);
    QCOMPARE(ZRLocalize::translate("Save"), QString(found ? "Keep" : "Save"));
}

void tst_ZRLocalize::failureEmptiesTheTable_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << "none";
    QTest::newRow("a folder") << "dir";
}

void tst_ZRLocalize::failureEmptiesTheTable()
{
    QFETCH(QString, name);
    QVERIFY(QDir(folder.path()).mkdir("dir.txt"));
    QVERIFY(load("Save=Keep\n"));
    QCOMPARE(ZRLocalize::translate("Save"), QString("Keep"));
    QVERIFY(!ZRLocalize::loadLanguage(name));
    QCOMPARE(ZRLocalize::translate("Save"), QString("Save"));
}

void tst_ZRLocalize::loadReplacesTheTable()
{
    write("Save=Keep\nCancel=Back\n", "one.txt");
    write("Save=Store\n", "two.txt");
    QVERIFY(ZRLocalize::loadLanguage("one"));
    QVERIFY(ZRLocalize::loadLanguage("two"));
    QCOMPARE(ZRLocalize::translate("Save"), QString("Store"));
    QCOMPARE(ZRLocalize::translate("Cancel"), QString("Cancel"));
}

void tst_ZRLocalize::remembersTheNameAsGiven()
{
    write("Save=Keep\n");
    for (const char *name : {"xx", "xx.txt", "none"}) {
        ZRLocalize::loadLanguage(name);
        QCOMPARE(ZRLocalize::languageFileName(), QString(name));
    }
    ZRLocalize::switchLanguage("other");
    QCOMPARE(ZRLocalize::languageFileName(), QString("other"));
}

void tst_ZRLocalize::loadTellsNobody()
{
    QString order;
    const Told object('a', order);
    QVERIFY(load("Save=Keep\n"));
    QCOMPARE(order, QString());
}

void tst_ZRLocalize::switchTellsInOrderOfMaking()
{
    write("Save=Keep\n");
    QString order;
    const Told a('a', order);
    auto b = std::make_unique<Told>('b', order);
    const Told c('c', order);
    b.reset();
    b = std::make_unique<Told>('b', order);
    QVERIFY(ZRLocalize::switchLanguage("xx"));
    QCOMPARE(order, QString("acb"));
    QVERIFY(ZRLocalize::switchLanguage("xx")); // the same language again is a switch too
    QCOMPARE(order, QString("acbacb"));
}

void tst_ZRLocalize::switchTellsWhenTheFileIsMissing()
{
    QString order;
    const Told object('a', order);
    QVERIFY(!ZRLocalize::switchLanguage("none"));
    QCOMPARE(order, QString("a"));
}

void tst_ZRLocalize::switchWithoutObjects()
{
    write("Save=Keep\n");
    QVERIFY(ZRLocalize::switchLanguage("xx"));
    QCOMPARE(ZRLocalize::translate("Save"), QString("Keep"));
}

void tst_ZRLocalize::tableIsNewWhenToldOfIt()
{
    write("Save=Keep\n", "one.txt");
    write("Save=Store\n", "two.txt");
    QStringList texts;
    QString order;
    const Told object('a', order, [&] { texts += ZRLocalize::translate("Save"); });
    ZRLocalize::switchLanguage("one");
    ZRLocalize::switchLanguage("two");
    ZRLocalize::switchLanguage("none");
    QCOMPARE(texts, QStringList({"Keep", "Store", "Save"}));
}

void tst_ZRLocalize::baseHookDoesNothing()
{
    write("Save=Keep\n");
    ZRLocalize object;
    QVERIFY(ZRLocalize::switchLanguage("xx"));
    object.onLanguageChanged();
    QCOMPARE(ZRLocalize::translate("Save"), QString("Keep"));
    QCOMPARE(ZRLocalize::languageFileName(), QString("xx"));
    QVERIFY((!std::is_base_of<QObject, ZRLocalize>::value));
    QVERIFY(std::has_virtual_destructor<ZRLocalize>::value);
    QCOMPARE(sizeof(ZRLocalize), sizeof(void *)); // no fields
}

void tst_ZRLocalize::destroyedObjectsAreForgotten()
{
    QString order;
    {
        const Told object('a', order);
    }
    ZRLocalize::switchLanguage("none");
    QCOMPARE(order, QString());
}

// A constructor that finds its own address in the list moves it to the end.
void tst_ZRLocalize::sameAddressRegistersOnceAndLast()
{
    QString order;
    Place place;
    new (&place.bytes) ZRLocalize; // abandoned: its storage is used again as it is
    const Told b('b', order);
    Told *a = place.make('a', order);
    ZRLocalize::switchLanguage("none");
    a->~Told();
    QCOMPARE(order, QString("ba"));
}

// The second object is destroyed meanwhile and another made in its place, which stands at the end
// of the list. What is walked still has the address in the middle.
void tst_ZRLocalize::switchWalksACopy()
{
    QString order;
    Place place;
    Told *b = nullptr;
    const Told a('a', order, [&] {
        b->~Told();
        b = place.make('B', order);
    });
    b = place.make('b', order);
    const Told c('c', order);
    ZRLocalize::switchLanguage("none");
    b->~Told();
    QCOMPARE(order, QString("aBc"));
}

void tst_ZRLocalize::objectsMadeMeanwhileAreNotTold()
{
    QString order;
    std::unique_ptr<Told> late;
    const Told a('a', order, [&] { late = std::make_unique<Told>('l', order); });
    const Told b('b', order);
    ZRLocalize::switchLanguage("none");
    QCOMPARE(order, QString("ab"));
}

void tst_ZRLocalize::readsFromSeveralThreads()
{
    QVERIFY(load("Save=Keep\n"));
    QAtomicInt right = 0;
    const auto body = [&right] {
        for (int i = 0; i < 1000; ++i)
            right.fetchAndAddRelaxed(ZRLocalize::translate("SAVE") == "Keep");
    };
    const std::unique_ptr<QThread> first(QThread::create(body));
    const std::unique_ptr<QThread> second(QThread::create(body));
    first->start();
    second->start();
    QVERIFY(first->wait(100000));
    QVERIFY(second->wait(100000));
    QCOMPARE(right.loadAcquire(), 2000);
}

QTEST_GUILESS_MAIN(tst_ZRLocalize)

#include "tst_ZRLocalize.moc"
