#include "QtTexts.h"

#include "QtTextsFile.h"

#include <QTemporaryDir>
#include <QtTest>

// Which file of Qt's texts is in use in which language.
class tst_QtTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void followsTheLanguage();
    void languageOfTheStart_data();
    void languageOfTheStart();
    void firstFolderCounts();
    void withoutTheFile();
    void endsWithItsObject();
    void besideTheProgram();

private:
    QString folder() const { return files.path(); }

    QTemporaryDir files;
};

namespace {
const char source[] = "Look in:"; // of the file dialog
const QString translation = QString::fromUtf8("查看：");

QString shown()
{
    return QCoreApplication::translate("QFileDialog", source);
}

void writeFile(const QString &folder, const QString &text)
{
    QVERIFY(writeQtTexts(folder, source, text));
}
}

void tst_QtTexts::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    writeFile(folder(), translation);
}

void tst_QtTexts::init()
{
    QVERIFY(ZRLocalize::loadLanguage("en"));
    QCOMPARE(shown(), QString(source));
}

void tst_QtTexts::followsTheLanguage()
{
    const QtTexts texts({folder()});
    QCOMPARE(shown(), QString(source));
    for (int i = 0; i < 2; ++i) {
        QVERIFY(ZRLocalize::switchLanguage("cn"));
        QCOMPARE(shown(), translation);
        QVERIFY(ZRLocalize::switchLanguage("cn"));
        QCOMPARE(shown(), translation);
        QVERIFY(ZRLocalize::switchLanguage("en"));
        QCOMPARE(shown(), QString(source));
    }
}

void tst_QtTexts::languageOfTheStart_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("expected");
    QTest::newRow("Chinese") << "cn.txt" << translation;
    QTest::newRow("Chinese, as the settings name it") << "cn" << translation;
    QTest::newRow("English") << "en.txt" << source;
}

void tst_QtTexts::languageOfTheStart()
{
    QFETCH(QString, file);
    QVERIFY(ZRLocalize::loadLanguage(file));
    const QtTexts texts({folder()});
    QTEST(shown(), "expected");
}

void tst_QtTexts::firstFolderCounts()
{
    writeFile(folder() + "/other", "other");
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    const QtTexts texts({folder() + "/none", folder() + "/other", folder()});
    QCOMPARE(shown(), QString("other"));
}

void tst_QtTexts::withoutTheFile()
{
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    const QtTexts texts({folder() + "/none"});
    QCOMPARE(shown(), QString(source));
}

void tst_QtTexts::endsWithItsObject()
{
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    {
        const QtTexts texts({folder()});
        QCOMPARE(shown(), translation);
    }
    QCOMPARE(shown(), QString(source));
}

// Qt's own folder may have the file too, but its text is Chinese as well.
void tst_QtTexts::besideTheProgram()
{
    QCOMPARE(QtTexts::usualFolders().size(), 2);
    writeFile(QCoreApplication::applicationDirPath() + "/translations", translation);
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    const QtTexts texts;
    QVERIFY(shown() != source);
}

QTEST_GUILESS_MAIN(tst_QtTexts)
#include "tst_QtTexts.moc"
