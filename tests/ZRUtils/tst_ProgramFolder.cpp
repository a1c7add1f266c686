#include "ReadOnlyFolder.h"
#include "ZRConfigure.h"
#include "ZRLocalize.h"
#include "ZRLog.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

#include <cstdio>
#include <memory>

// Settings, log and language beside a program in folders of all kinds: the test runs itself there.
class tst_ProgramFolder : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void namedAnyhow_data();
    void namedAnyhow();
    void writeProtected_data();
    void writeProtected();

private:
    // Puts the program and an English language file into a new folder of this name.
    void install(const QString &name);
    // What the program saw; empty when it did not come to its end.
    QJsonObject run();
    QString program() const;
    // Bytes of the one file of a folder that has this name.
    QByteArray content(const QString &subfolder, const QString &nameFilter) const;

    std::unique_ptr<QTemporaryDir> parent;
    QString folder;
};

namespace {

const char asProgram[] = "--as-program";
const QString printer = QString::fromUtf8("标签打印机");

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

// A start of the program in small.
int runAsProgram(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    ZRLog::initialize();
    ZRConfigure().initDefaults();
    ZRLocalize::setLanguageFolder(QCoreApplication::applicationDirPath() + "/language");
    const bool loaded = ZRLocalize::loadLanguage("en");
    qDebug("a line of the log");
    const ZRConfigure configure;
    const QJsonObject seen = {{"folder", QCoreApplication::applicationDirPath()},
        {"language", configure.language()}, {"seconds", configure.searchSeconds()},
        {"printer", configure.printerName()}, {"loaded", loaded},
        {"text", ZRLocalize::translate("Save")}};
    ZRConfigure().setPrinterName(printer);
    ZRLog::shutdown();
    std::fputs(QJsonDocument(seen).toJson(QJsonDocument::Compact).constData(), stdout);
    return 0;
}

}

void tst_ProgramFolder::init()
{
    parent = std::make_unique<QTemporaryDir>();
    QVERIFY(parent->isValid());
}

QString tst_ProgramFolder::program() const
{
    return folder + '/' + QFileInfo(QCoreApplication::applicationFilePath()).fileName();
}

void tst_ProgramFolder::install(const QString &name)
{
    folder = parent->filePath(name);
    QVERIFY(QDir().mkpath(folder + "/language"));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program()));
    write(folder + "/language/en.txt", "Save=Keep\r\nCancel=Back\r\n");
}

QJsonObject tst_ProgramFolder::run()
{
    QProcess process;
    process.start(program(), {asProgram});
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        qWarning("%s: %s", qPrintable(process.errorString()),
            process.readAllStandardError().constData());
        return {};
    }
    return QJsonDocument::fromJson(process.readAllStandardOutput()).object();
}

QByteArray tst_ProgramFolder::content(const QString &subfolder, const QString &nameFilter) const
{
    const QDir place(folder + '/' + subfolder);
    const QStringList names = place.entryList({nameFilter}, QDir::Files);
    QFile file(place.filePath(names.value(0)));
    return names.size() == 1 && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_ProgramFolder::namedAnyhow_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "Vorlyn";
    QTest::newRow("spaces and brackets") << "Program Files (x86)/Vorlyn IPTool";
    QTest::newRow("Chinese") << QString::fromUtf8("用户/网络摄像机 工具");
    QTest::newRow("accents") << QString::fromUtf8("José Müller");
    QTest::newRow("beyond 16 bits") << QString::fromUtf8("🎥");
    QTest::newRow("percent") << "100%1 %2 %20";
    QTest::newRow("signs") << "a;b,c=d&e'f[g]#h";
}

void tst_ProgramFolder::namedAnyhow()
{
    QFETCH(QString, name);
    install(name);
    QJsonObject expected = {{"folder", folder}, {"language", "cn"}, {"seconds", 3}, {"printer", ""},
        {"loaded", true}, {"text", "Keep"}};
    QCOMPARE(run(), expected);
    expected["printer"] = printer; // saved by the first run
    QCOMPARE(run(), expected);

    const QByteArray settings = content("configure", "configure.ini");
    QVERIFY2(settings.contains("printer%20name=\\x6807\\x7b7e\\x6253\\x5370\\x673a"), settings);
    QVERIFY(!QDir(folder + "/log").entryList({"*.clog"}).isEmpty());
    const QString newest =
        QDir(folder + "/log").entryList({"*.clog"}, QDir::Files, QDir::Name).last();
    const QByteArray log = content("log", newest);
    QCOMPARE(log.count('\n'), 1);
    QVERIFY2(log.endsWith("  a line of the log\n"), log);
}

void tst_ProgramFolder::writeProtected_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QString>("language");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("printer");
    QTest::newRow("nothing there") << QByteArray() << "" << 3 << "";
    QTest::newRow("settings of before")
        << QByteArray("[General]\r\nlangage=en\r\nsearch%20seconds=9\r\nprinter%20name=A\r\n")
        << "en" << 9 << "A";
}

// As under "C:\Program Files". What is there is read, what would be written is lost, and the
// program goes on.
void tst_ProgramFolder::writeProtected()
{
    QFETCH(QByteArray, settings);
    QFETCH(QString, language);
    QFETCH(int, seconds);
    QFETCH(QString, printer);
    install("Vorlyn");
    if (!settings.isEmpty()) {
        QVERIFY(QDir(folder).mkdir("configure"));
        write(folder + "/configure/configure.ini", settings);
        QVERIFY(QDir(folder).mkdir("log"));
        write(folder + "/log/20200101000000.clog", "years ago");
    }
    const ReadOnlyFolder protection(folder);
    QVERIFY(protection.isMounted());
    QVERIFY(!QFile(folder + "/any").open(QIODevice::WriteOnly));

    const QJsonObject expected = {{"folder", folder}, {"language", language}, {"seconds", seconds},
        {"printer", printer}, {"loaded", true}, {"text", "Keep"}};
    for (int start = 0; start < 2; ++start)
        QCOMPARE(run(), expected);
    QCOMPARE(content("configure", "*"), settings);
    QCOMPARE(content("log", "*"), settings.isEmpty() ? QByteArray() : QByteArray("years ago"));
}

int main(int argc, char **argv)
{
    if (argc > 1 && qstrcmp(argv[1], asProgram) == 0)
        return runAsProgram(argc, argv);
    const QCoreApplication application(argc, argv);
    tst_ProgramFolder test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ProgramFolder.moc"
