#include "WrittenSettings.h"
#include "ZRConfigure.h"

#include <QSettings>
#include <QtTest>

#include <memory>
#include <random>
#include <vector>

using WrittenSettings::lineEnd;
using WrittenSettings::section;

using Set = void (*)(ZRConfigure &);
Q_DECLARE_METATYPE(Set)

namespace {

struct LabelSettings {
    double width = -1;
    double height = -1;
    int column = -1;
    double paddingLeft = -1;
    double paddingTop = -1;
    double paddingRight = -1;
    double paddingBottom = -1;
    double padding = -1;
};

LabelSettings labelSettings(const ZRConfigure &configure)
{
    LabelSettings s;
    configure.labelSettings(s.width, s.height, s.column, s.paddingLeft, s.paddingTop,
        s.paddingRight, s.paddingBottom, s.padding);
    return s;
}

// As the file shows it: in the order of the values' table, with each key's own default.
QVariantMap allValues()
{
    const ZRConfigure configure;
    const LabelSettings label = labelSettings(configure);
    return {
        {"langage", configure.language()},
        {"hardware", configure.hardware()},
        {"search seconds", configure.searchSeconds()},
        {"network name", configure.networkName()},
        {"network ip", configure.networkIp()},
        {"printer name", configure.printerName()},
        {"label width", label.width},
        {"label height", label.height},
        {"label column", label.column},
        {"label padding", label.padding},
        {"label padding left", label.paddingLeft},
        {"label padding top", label.paddingTop},
        {"label padding right", label.paddingRight},
        {"label padding bottom", label.paddingBottom},
        {"bench view", configure.benchView()},
    };
}

const QVariantMap readDefaults = {
    {"langage", QString()},
    {"hardware", false},
    {"search seconds", 3},
    {"network name", QString()},
    {"network ip", QString()},
    {"printer name", QString()},
    {"label width", 0.0},
    {"label height", 0.0},
    {"label column", 0},
    {"label padding", 0.0},
    {"label padding left", 0.0},
    {"label padding top", 0.0},
    {"label padding right", 0.0},
    {"label padding bottom", 0.0},
    {"bench view", QString()},
};

int messages = 0;

void countMessage(QtMsgType, const QMessageLogContext &, const QString &)
{
    ++messages;
}

}

class tst_ZRConfigure : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void metaObjectIsBare();
    void settingsBelongToTheObject();
    void constructorMakesTheFolderOnly();
    void keepsAnExistingFolder();
    void firstRun();
    void defaultsKeepWhatIsThere_data();
    void defaultsKeepWhatIsThere();
    void defaultsLeaveAWholeFileAlone();
    void emptyFileGivesDefaults();
    void readsText_data();
    void readsText();
    void readsFilesOfEditors_data();
    void readsFilesOfEditors();
    void settersWrite_data();
    void settersWrite();
    void labelSettingsOrder();
    void labelSettingsKeepEveryDigit();
    void readsAfresh();
    void otherKeysStay();
    void folderInTheWay();
    void fileInTheWay();
    void junkFile_data();
    void junkFile();
    void randomBytes();
    void severalThreads();

private:
    void write(const QByteArray &text);
    QByteArray read();

    QString folder;
    QString path;
};

void tst_ZRConfigure::init()
{
    folder = QCoreApplication::applicationDirPath() + "/configure";
    path = folder + "/configure.ini";
    cleanup();
    QVERIFY(!QFileInfo::exists(folder));
}

void tst_ZRConfigure::cleanup()
{
    QFile::remove(folder);
    QDir(folder).removeRecursively();
}

void tst_ZRConfigure::write(const QByteArray &text)
{
    QDir().mkpath(folder);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), qint64(text.size()));
    file.flush();
    // QSettings tells a changed file by its size and time, and the tests are fast.
    static qint64 edits = 0;
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1000000000 + ++edits);
    QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
}

QByteArray tst_ZRConfigure::read()
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_ZRConfigure::metaObjectIsBare()
{
    const QMetaObject &meta = ZRConfigure::staticMetaObject;
    QCOMPARE(meta.className(), "ZRConfigure");
    QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
    QCOMPARE(meta.methodCount(), meta.methodOffset());
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
}

void tst_ZRConfigure::settingsBelongToTheObject()
{
    auto configure = std::make_unique<ZRConfigure>();
    QVERIFY(!configure->parent());
    const QPointer<QSettings> settings =
        configure->findChild<QSettings *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(settings);
    QCOMPARE(settings->format(), QSettings::IniFormat);
    QCOMPARE(settings->fileName(), path);
    configure.reset();
    QVERIFY(!settings);
}

void tst_ZRConfigure::constructorMakesTheFolderOnly()
{
    {
        const ZRConfigure configure;
    }
    QVERIFY(QFileInfo(folder).isDir());
    QVERIFY(!QFileInfo::exists(path));
}

void tst_ZRConfigure::keepsAnExistingFolder()
{
    write("[General]\nlangage=en\n");
    QFile other(folder + "/other");
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.close();
    QCOMPARE(ZRConfigure().language(), QString("en"));
    QVERIFY(other.exists());
}

void tst_ZRConfigure::firstRun()
{
    ZRConfigure().initDefaults();
    QCOMPARE(read(), section("General", {"langage=cn", "hardware=1", "search%20seconds=3"}));
    const ZRConfigure configure;
    QCOMPARE(configure.language(), QString("cn"));
    QCOMPARE(configure.hardware(), true);
    QCOMPARE(configure.searchSeconds(), 3);
}

void tst_ZRConfigure::defaultsKeepWhatIsThere_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArrayList>("expected"); // in the order of writing
    const auto row = [](const char *tag, const char *text, const QByteArrayList &expected) {
        QTest::newRow(tag) << QByteArray(text) << expected;
    };
    row("language", "langage=en\n", {"langage=en", "hardware=1", "search%20seconds=3"});
    row("empty language", "langage=\n", {"langage=", "hardware=1", "search%20seconds=3"});
    row("null language", "langage=@Invalid()\n",
        {"langage=cn", "hardware=1", "search%20seconds=3"});
    row("hardware", "hardware=0\n", {"hardware=0", "langage=cn", "search%20seconds=3"});
    row("empty hardware", "hardware=\n", {"hardware=", "langage=cn", "search%20seconds=3"});
    row("seconds", "search%20seconds=x\n", {"search%20seconds=x", "langage=cn", "hardware=1"});
}

void tst_ZRConfigure::defaultsKeepWhatIsThere()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArrayList, expected);
    write("[General]\n" + text);
    ZRConfigure().initDefaults();
    QCOMPARE(read(), section("General", expected));
}

// With nothing to add the file isn't written anew.
void tst_ZRConfigure::defaultsLeaveAWholeFileAlone()
{
    const QByteArray whole = "[General]\nsearch%20seconds=0\r\nhardware=0\nlangage=x\n";
    write(whole);
    ZRConfigure().initDefaults();
    QCOMPARE(read(), whole);
}

void tst_ZRConfigure::emptyFileGivesDefaults()
{
    QCOMPARE(allValues(), readDefaults);
    write("");
    QCOMPARE(allValues(), readDefaults);
}

void tst_ZRConfigure::readsText_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QVariant>("expected");
    const auto row = [](const char *key, const char *text, const QVariant &expected) {
        QTest::addRow("%s=%s", key, text) << key << QByteArray(text) << expected;
    };
    row("search seconds", "text", 3);
    row("search seconds", "0", 0);
    row("search seconds", "-1", -1);
    row("search seconds", "10", 10);
    row("search seconds", "2.5", 3);
    row("search seconds", "", 3);
    row("search seconds", "4, 5", 3);
    row("search seconds", "@Invalid()", 3);
    row("search seconds", "99999999999999999999", 3);
    row("hardware", "0", false);
    row("hardware", "1", true);
    row("hardware", "2", true);
    row("hardware", "-1", true);
    row("hardware", "true", false);
    row("hardware", "", false);
    row("hardware", "@Invalid()", false);
    row("langage", "en", "en");
    row("langage", "", "");
    row("langage", "@Invalid()", "");
    row("network name", "\"Local, 2\"", "Local, 2");
    row("network name", "\\x672c\\x5730", QString::fromUtf8("\xe6\x9c\xac\xe5\x9c\xb0"));
    row("network ip", "10.0.0.7", "10.0.0.7");
    row("printer name", "POSTEK G3000", "POSTEK G3000");
    row("label width", "62.5", 62.5);
    row("label width", "62", 62.0);
    row("label width", "62.5mm", 0.0);
    row("label width", "1e999", 0.0);
    row("label height", "text", 0.0);
    row("label height", "@Invalid()", 0.0);
    row("label column", "2", 2);
    row("label column", "2.5", 0);
    row("label padding", "1.5", 1.5);
    row("label padding left", "-1.25", -1.25);
    row("label padding top", "2.25", 2.25);
    row("label padding right", "3.25", 3.25);
    row("label padding bottom", "4.25", 4.25);
    row("bench view", "opengl", "opengl");
}

// The named key has the value, every other one its default.
void tst_ZRConfigure::readsText()
{
    QFETCH(QString, key);
    QFETCH(QByteArray, text);
    QFETCH(QVariant, expected);
    write("[General]\n" + key.toUtf8().replace(' ', "%20") + "=" + text + "\n");
    QVariantMap values = readDefaults;
    values[key] = expected;
    QCOMPARE(allValues(), values);
}

void tst_ZRConfigure::readsFilesOfEditors_data()
{
    QTest::addColumn<QByteArray>("mark");
    QTest::addColumn<QByteArray>("lineEnd");
    QTest::newRow("line feeds") << QByteArray() << QByteArray("\n");
    QTest::newRow("as of Windows") << QByteArray() << QByteArray("\r\n");
    QTest::newRow("as of Windows, marked as UTF-8")
        << QByteArray("\xef\xbb\xbf") << QByteArray("\r\n");
}

// Every kind of value, whoever saved the file, and it is still readable when it was written anew.
void tst_ZRConfigure::readsFilesOfEditors()
{
    QFETCH(QByteArray, mark);
    QFETCH(QByteArray, lineEnd);
    write(mark
        + QByteArrayList(
            {"; by hand", "[General]", "langage=en", "hardware=1", "", "search%20seconds=7",
                "network%20name=\\x672c\\x5730", "printer%20name=\"a, b\"", "label%20width=62.5",
                "label%20column=2", "", "[group]", "langage=cn", ""})
              .join(lineEnd));
    QVariantMap values = readDefaults;
    values["langage"] = "en";
    values["hardware"] = true;
    values["search seconds"] = 7;
    values["network name"] = QString::fromUtf8("\xe6\x9c\xac\xe5\x9c\xb0");
    values["printer name"] = "a, b";
    values["label width"] = 62.5;
    values["label column"] = 2;
    QCOMPARE(allValues(), values);

    ZRConfigure().setNetworkIp("10.0.0.7");
    values["network ip"] = "10.0.0.7";
    QCOMPARE(allValues(), values);
}

void tst_ZRConfigure::settersWrite_data()
{
    QTest::addColumn<Set>("set");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("expected");
    QTest::addColumn<QByteArray>("text");
    const struct {
        const char *tag;
        Set set;
        const char *key;
        QVariant expected;
        const char *text;
    } rows[] = {
        {"on", [](ZRConfigure &c) { c.setHardware(true); }, "hardware", true, "hardware=1"},
        {"off", [](ZRConfigure &c) { c.setHardware(false); }, "hardware", false, "hardware=0"},
        {"language", [](ZRConfigure &c) { c.setLanguage("en"); }, "langage", "en", "langage=en"},
        {"no language", [](ZRConfigure &c) { c.setLanguage(""); }, "langage", "", "langage="},
        {"ip", [](ZRConfigure &c) { c.setNetworkIp("10.0.0.7"); }, "network ip", "10.0.0.7",
            "network%20ip=10.0.0.7"},
        {"network", [](ZRConfigure &c) { c.setNetworkName("Local 2"); }, "network name", "Local 2",
            "network%20name=Local 2"},
        {"printer", [](ZRConfigure &c) { c.setPrinterName("a,\"b\"=c;d"); }, "printer name",
            "a,\"b\"=c;d", "printer%20name=\"a,\\\"b\\\"=c;d\""},
        {"bench view", [](ZRConfigure &c) { c.setBenchView("opengl"); }, "bench view", "opengl",
            "bench%20view=opengl"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.tag) << row.set << row.key << row.expected << QByteArray(row.text);
}

void tst_ZRConfigure::settersWrite()
{
    QFETCH(Set, set);
    QFETCH(QString, key);
    QFETCH(QVariant, expected);
    QFETCH(QByteArray, text);
    {
        ZRConfigure configure;
        set(configure);
    }
    QCOMPARE(read(), section("General", {text}));
    QVariantMap values = readDefaults;
    values[key] = expected;
    QCOMPARE(allValues(), values);
}

void tst_ZRConfigure::labelSettingsOrder()
{
    ZRConfigure().saveLabelSettings(1.5, 2.5, 3, 4.5, 5.5, 6.5, 7.5, 8.5);
    QCOMPARE(read(),
        section("General",
            {"label%20width=1.5", "label%20height=2.5", "label%20column=3", "label%20padding=8.5",
                "label%20padding%20left=4.5", "label%20padding%20top=5.5",
                "label%20padding%20right=6.5", "label%20padding%20bottom=7.5"}));
    const ZRConfigure configure;
    const LabelSettings label = labelSettings(configure);
    QCOMPARE(label.width, 1.5);
    QCOMPARE(label.height, 2.5);
    QCOMPARE(label.column, 3);
    QCOMPARE(label.paddingLeft, 4.5);
    QCOMPARE(label.paddingTop, 5.5);
    QCOMPARE(label.paddingRight, 6.5);
    QCOMPARE(label.paddingBottom, 7.5);
    QCOMPARE(label.padding, 8.5);
}

void tst_ZRConfigure::labelSettingsKeepEveryDigit()
{
    const double third = 1.0 / 3;
    ZRConfigure().saveLabelSettings(third, 0.1 + 0.2, 1, 0, 0, 0, 0, 1e-300);
    const ZRConfigure configure;
    const LabelSettings label = labelSettings(configure);
    QVERIFY(label.width == third);
    QVERIFY(label.height == 0.1 + 0.2);
    QVERIFY(label.padding == 1e-300);
}

void tst_ZRConfigure::readsAfresh()
{
    write("[General]\nsearch%20seconds=5\n");
    QCOMPARE(ZRConfigure().searchSeconds(), 5);
    write("[General]\nsearch%20seconds=60\n");
    QCOMPARE(ZRConfigure().searchSeconds(), 60);
    QVERIFY(QFile::remove(path));
    QCOMPARE(ZRConfigure().searchSeconds(), 3);

    ZRConfigure one;
    const ZRConfigure other;
    one.setNetworkIp("10.0.0.8");
    QCOMPARE(other.networkIp(), QString("10.0.0.8"));
}

void tst_ZRConfigure::otherKeysStay()
{
    write("[General]\nown=1\n\n[group]\nlangage=en\n");
    QCOMPARE(ZRConfigure().language(), QString());
    ZRConfigure().setLanguage("cn");
    QCOMPARE(read(),
        section("General", {"own=1", "langage=cn"}) + lineEnd + section("group", {"langage=en"}));
}

// The folder can't be made: settings are lost without a word.
void tst_ZRConfigure::folderInTheWay()
{
    QFile obstacle(folder);
    QVERIFY(obstacle.open(QIODevice::WriteOnly));
    obstacle.close();
    messages = 0;
    const QtMessageHandler previous = qInstallMessageHandler(countMessage);
    {
        ZRConfigure configure;
        configure.initDefaults();
        configure.setLanguage("en");
    }
    const QVariantMap values = allValues();
    qInstallMessageHandler(previous);
    QCOMPARE(values, readDefaults);
    QCOMPARE(messages, 0);
    QVERIFY(QFileInfo(folder).isFile());
    QCOMPARE(QFileInfo(folder).size(), 0);
}

void tst_ZRConfigure::fileInTheWay()
{
    QVERIFY(QDir().mkpath(path));
    messages = 0;
    const QtMessageHandler previous = qInstallMessageHandler(countMessage);
    const QVariantMap values = allValues();
    qInstallMessageHandler(previous);
    QCOMPARE(values, readDefaults);
    QCOMPARE(messages, 0);
}

void tst_ZRConfigure::junkFile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("open section") << QByteArray("[General\nlangage");
    QTest::newRow("no values") << QByteArray("[General]\nlangage\nhardware\n;search%20seconds=9\n");
    QTest::newRow("zeros") << QByteArray(5000, '\0');
    QTest::newRow("high bytes") << QByteArray(5000, '\xff');
    QTest::newRow("one long line") << QByteArray(1000000, 'x');
    QTest::newRow("many sections") << QByteArray("[]\n[General]\n[]\n").repeated(1000);
    QTest::newRow("bad escapes") << QByteArray("[General]\n%zz%=\\x\\\n\"\nx=\"\\x110000\n");
    QTest::newRow("bad variant") << QByteArray("[General]\nx=@Variant(\\0\\0\n"
                                               "y=@ByteArray(\nz=@Rect(1 2)\n");
}

void tst_ZRConfigure::junkFile()
{
    QFETCH(QByteArray, text);
    write(text);
    QCOMPARE(allValues(), readDefaults);
}

void tst_ZRConfigure::randomBytes()
{
    for (quint32 seed = 1; seed <= 200; ++seed) {
        std::mt19937 random(seed);
        QByteArray text(int(random() % 4096), '\0');
        for (char &byte : text)
            byte = char(random());
        write(seed % 2 ? text : "[General]\n" + text);
        QVERIFY2(allValues() == readDefaults, qPrintable(QString("seed %1").arg(seed)));
    }
    ZRConfigure().setLanguage("en");
    QCOMPARE(ZRConfigure().language(), QString("en"));
}

void tst_ZRConfigure::severalThreads()
{
    constexpr int rounds = 50;
    using Round = std::function<bool(int)>;
    const Round bodies[] = {
        [](int round) {
            const QString ip = QString("10.0.0.%1").arg(round);
            ZRConfigure().setNetworkIp(ip);
            return ZRConfigure().networkIp() == ip;
        },
        [](int round) {
            const QString name = QString("printer %1").arg(round);
            ZRConfigure().setPrinterName(name);
            return ZRConfigure().printerName() == name;
        },
        [](int round) {
            ZRConfigure().saveLabelSettings(round, round, round, 0, 0, 0, 0, 0);
            const ZRConfigure configure;
            return labelSettings(configure).column == round;
        },
    };
    QAtomicInt right = 0;
    std::vector<std::unique_ptr<QThread>> threads;
    for (const Round &body : bodies) {
        threads.emplace_back(QThread::create([&right, &body] {
            for (int round = 0; round < rounds; ++round)
                right.fetchAndAddRelaxed(body(round));
        }));
        threads.back()->start();
    }
    for (const auto &thread : threads)
        QVERIFY(thread->wait(100000));
    QCOMPARE(right.loadAcquire(), int(threads.size()) * rounds);
    QCOMPARE(ZRConfigure().printerName(), QString("printer %1").arg(rounds - 1));
}

QTEST_GUILESS_MAIN(tst_ZRConfigure)

#include "tst_ZRConfigure.moc"
