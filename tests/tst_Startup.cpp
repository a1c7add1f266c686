#include "Startup.h"

#include "LogCatcher.h"
#include "OpenGLDriver.h"
#include "SettingsFile.h"
#include "VorlynSDK.h"
#include "ZRLocalize.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QtTest>

#include <cstdio>

static const char *probeOnly = "--probe-only"; // the test program as a probe of its environment

class tst_Startup : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void probe_data();
    void probe();
    void probeWithoutOpenGL();
    void attributesByMajorVersion_data();
    void attributesByMajorVersion();
    void icon();
    void languageBySetting_data();
    void languageBySetting();
    void firstRun();
    void withoutLanguageFile();

private:
    QString languageFolder;
};

void tst_Startup::init()
{
    SettingsFile().remove();
    languageFolder = QCoreApplication::applicationDirPath() + "/language";
    QDir(languageFolder).removeRecursively();
    QVERIFY(QDir().mkpath(languageFolder));
    for (const char *name : {"/en.txt", "/cn.txt"})
        QVERIFY(QFile::copy(QStringLiteral(LANGUAGE_FOLDER) + name, languageFolder + name));
}

void tst_Startup::cleanup()
{
    VorlynSDK::destroyInstance();
    SettingsFile().remove();
}

void tst_Startup::probe_data()
{
    QTest::addColumn<int>("major");

    QTest::newRow("3.3") << 3;
    QTest::newRow("4.0") << 4;
}

void tst_Startup::probe()
{
    QFETCH(int, major);

    QCOMPARE(outputWithOpenGL(QTest::currentDataTag(), probeOnly), QByteArray::number(major));
}

void tst_Startup::probeWithoutOpenGL()
{
    QProcess process;
    process.setProcessEnvironment(environmentWithoutOpenGL());
    process.start(QCoreApplication::applicationFilePath(), {probeOnly});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardOutput().trimmed().toInt(), 2);
}

void tst_Startup::attributesByMajorVersion_data()
{
    QTest::addColumn<int>("major");
    QTest::addColumn<bool>("desktop");

    QTest::newRow("none, the default format") << 2 << false;
    QTest::newRow("3.3") << 3 << false;
    QTest::newRow("4.0") << 4 << true;
    QTest::newRow("later") << 5 << true;
}

void tst_Startup::attributesByMajorVersion()
{
    QFETCH(int, major);
    QFETCH(bool, desktop);

    const LogCatcher log;
    setOpenGLAttributes(major);
    // Qt grumbles at each attribute that is set late: thrice desktop, then thrice software.
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 6);
    for (int i = 0; i < lines.size(); ++i)
        QVERIFY(lines[i].contains(i < 3 ? "AA_UseDesktopOpenGL" : "AA_UseSoftwareOpenGL"));
    QCOMPARE(QCoreApplication::testAttribute(Qt::AA_UseDesktopOpenGL), desktop);
    QCOMPARE(QCoreApplication::testAttribute(Qt::AA_UseSoftwareOpenGL), !desktop);
}

void tst_Startup::icon()
{
    for (int size : {16, 32, 48, 256})
        QCOMPARE(applicationIcon().pixmap(size).size(), QSize(size, size));
}

void tst_Startup::languageBySetting_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<bool>("english");

    QTest::newRow("en") << "en" << true;
    QTest::newRow("capitals") << "EN" << true;
    QTest::newRow("cn") << "cn" << false;
    QTest::newRow("another") << "fr" << false;
    QTest::newRow("longer") << "en.txt" << false;
    QTest::newRow("space before") << " en" << false;
    QTest::newRow("empty") << "" << false;
}

void tst_Startup::languageBySetting()
{
    QFETCH(QString, setting);
    QFETCH(bool, english);

    SettingsFile().write({{"langage", setting}});
    LogCatcher log;
    initGolbals();
    // The line names the other language.
    QCOMPARE(log.lines(), QStringList(english ? "install cn language" : "install en language"));
    QCOMPARE(ZRLocalize::languageFileName(), QString(english ? "en.txt" : "cn.txt"));
    QCOMPARE(ZRLocalize::translate("Failure"), QString::fromUtf8(english ? "Fail" : "失败"));
    QCOMPARE(SettingsFile().read()["langage"].toString(), setting);
    QVERIFY(VorlynSDK::instance());
}

void tst_Startup::firstRun()
{
    LogCatcher log;
    initGolbals();
    QCOMPARE(log.lines(), QStringList("install en language"));
    const QVariantMap expected = {{"hardware", "1"}, {"langage", "cn"}, {"search seconds", "3"}};
    QCOMPARE(SettingsFile().read(), expected);
}

void tst_Startup::withoutLanguageFile()
{
    initGolbals();
    QVERIFY(ZRLocalize::translate("Failure") != "Failure");
    QVERIFY(QDir(languageFolder).removeRecursively());
    initGolbals();
    QCOMPARE(ZRLocalize::translate("Failure"), QString("Failure"));
    QVERIFY(VorlynSDK::instance());
}

int main(int argc, char *argv[])
{
    if (argc == 2 && qstrcmp(argv[1], probeOnly) == 0) {
        std::printf("%d\n", probeOpenGLMajorVersion(argc, argv));
        return QCoreApplication::instance() ? 1 : 0; // the probe leaves nothing behind
    }
    QApplication application(argc, argv);
    tst_Startup test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Startup.moc"
