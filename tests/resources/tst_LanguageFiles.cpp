#include "ZRLocalize.h"

#include <QtTest>

#include <QDirIterator>
#include <QFile>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace {

const QString sourceFolder = QStringLiteral(SOURCE_FOLDER);
const QString languageFolder = sourceFolder + "/resources/language";

constexpr const char *keys[] = {
    "Ok",
    "Cancel",
    "Please select network",
    "OK",
    "Please input correct size",
    "Printer",
    "Label Width",
    "Label Height",
    "Label Column",
    "Label padding",
    "Label left padding",
    "Label right padding",
    "Label top padding",
    "Label bottom padding",
    "Save",
    "Please set model first",
    "Please set SN first",
    "Scan code",
    "Product Model",
    "Product SN",
    "English",
    "Chinese",
    "On",
    "Off",
    "System Version",
    "Build Date",
    "Language",
    "Hardware",
    "Test Success",
    "Test Failure",
    "Wait for Test",
    "Restore Device",
    "Please Input Name",
    "Device Settings",
    "Device Name",
    "IP Address",
    "Firmware Version",
    "Set",
    "Upgrade Firmware",
    "Restore",
    "IP Mode",
    "DHCP",
    "Static",
    "Gateway",
    "Netmask",
    "Dns1",
    "Dns2",
    "Please input valid ip address",
    "Please input valid netmask",
    "Please input valid gateway",
    "Pass",
    "Auto Test App Version Result",
    "Failure",
    "Auto Test SDCard Result",
    "Start Auto Test",
    "Name",
    "Mac",
    "End Auto Test",
    "Start Manual Test",
    "End Manual Test",
    "Please Select FunctionId File",
    "Please Input Mac Address",
    "Please Select P2PID File",
    "Please set p2pid first",
    "Please select firmware file",
    "Test IR-cut Auto Result",
    "Test IR-cut Day Result",
    "Test IR-cut Night Result",
    "Test Microphone Result",
    "Test Speaker Result",
    "Test Video Audio Result",
    "Test White Light Off Result",
    "Test White Light On Result",
    "Upgrading",
    "Waiting for Devices Restart",
    "No.",
    "Upgrade Version",
    "Result",
    "Upgrade Success",
    "Upgrade Failure",
    "IP",
    "Searching devices",
    "Loading WiFi Info",
    "Nobody Bree",
    "Body Bree",
    "Fall Bree",
    "Detected Failure",
    "Please Test Microphone",
    "Crying is Detected",
    "No Crying is Detected",
    "Current Temperature",
    "Detected Success",
    "Test SDCard",
    "Please Test Speaker",
    "Check if the temperature in the upper right corner "
    "of the screen matches the ambient temperature",
    "Test WiFi",
    "Unable to search WiFi list",
    "Select Network",
    "Network",
    "Search Devices",
    "Search",
    "Settings",
    "Printer Settings",
    "Scan Code",
    "Set All",
};

// Chinese texts that are written in Latin letters: a protocol's name, and the language that shows
// its own name.
const QStringList latinKeys = {"DHCP", "English"};

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString languageText(const QString &file)
{
    return QString::fromUtf8(contents(languageFolder + '/' + file));
}

struct Entry {
    QString key;
    QString value;
};

// The entries of lines that are written in the files' own style; other lines are left out.
QVector<Entry> entries(const QString &file)
{
    static const QRegularExpression style(QStringLiteral("^\"([^\"=]+)\" = \"([^\"=]+)\";$"));
    QVector<Entry> result;
    for (const QString &line : languageText(file).split('\n')) {
        const QRegularExpressionMatch match = style.match(line);
        if (match.hasMatch())
            result.append({match.captured(1), match.captured(2)});
    }
    return result;
}

QSet<QString> lowerKeys(const QString &file)
{
    QSet<QString> result;
    for (const Entry &entry : entries(file))
        result.insert(entry.key.toLower());
    return result;
}

// Reads the string literal that opens at `at`, with those that follow it with nothing but space
// between, and moves behind them.
QString readLiteral(const QString &code, int &at)
{
    static const QRegularExpression opening(QStringLiteral("\\G\\s*\""));
    QString text;
    while (opening.match(code, at).hasMatch()) {
        at = opening.match(code, at).capturedEnd();
        for (; at < code.size() && code[at] != '"'; ++at) {
            if (code[at] == '\\')
                ++at;
            text += code[at];
        }
        ++at;
    }
    return text;
}

// The literals in the argument of every translate(...) of a source text.
QStringList translatedLiterals(const QString &code)
{
    static const QRegularExpression call(QStringLiteral(R"(\btranslate\()"));
    QStringList result;
    for (auto calls = call.globalMatch(code); calls.hasNext();) {
        int at = calls.next().capturedEnd();
        for (int depth = 1; depth > 0 && at < code.size();) {
            if (code[at] == '"') {
                result << readLiteral(code, at);
                continue;
            }
            depth += (code[at] == '(') - (code[at] == ')');
            ++at;
        }
    }
    return result;
}

QStringList literalsOfTheSources()
{
    QStringList result;
    QDirIterator files(sourceFolder, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        result << translatedLiterals(QString::fromUtf8(contents(files.next())));
    result.removeDuplicates();
    return result;
}

QStringList sorted(QStringList list)
{
    std::sort(list.begin(), list.end());
    return list;
}

void addLanguages()
{
    QTest::addColumn<QString>("file");
    for (const char *file : {"en.txt", "cn.txt"})
        QTest::newRow(file) << file;
}

}

class tst_LanguageFiles : public QObject
{
    Q_OBJECT

private slots:
    void fileIsPlain_data() { addLanguages(); }
    void fileIsPlain();
    void everyLineIsAnEntry_data() { addLanguages(); }
    void everyLineIsAnEntry();
    void noKeyTwice_data() { addLanguages(); }
    void noKeyTwice();
    void everyKeyHasItsEntry_data() { addLanguages(); }
    void everyKeyHasItsEntry();
    void readerSeesEveryEntry_data() { addLanguages(); }
    void readerSeesEveryEntry();
    void filesHoldTheSameKeys();
    void chineseIsChinese();
    void literalsAreFound_data();
    void literalsAreFound();
    void everyTranslatedLiteralHasAnEntry_data() { addLanguages(); }
    void everyTranslatedLiteralHasAnEntry();
    void textFitsItsPlace_data();
    void textFitsItsPlace();
};

void tst_LanguageFiles::fileIsPlain()
{
    QFETCH(QString, file);
    const QByteArray bytes = contents(languageFolder + '/' + file);
    QVERIFY(bytes.endsWith(";\n"));
    QVERIFY(!bytes.startsWith("\xEF\xBB\xBF"));
    QVERIFY(!bytes.contains('\r'));
    QVERIFY(!bytes.contains('\t'));
    QVERIFY(!bytes.contains('%'));
    QCOMPARE(languageText(file).toUtf8(), bytes);
}

void tst_LanguageFiles::everyLineIsAnEntry()
{
    QFETCH(QString, file);
    const QStringList lines = languageText(file).split('\n');
    QCOMPARE(lines.last(), QString()); // behind the last line's end
    QCOMPARE(entries(file).size(), lines.size() - 1);
}

void tst_LanguageFiles::noKeyTwice()
{
    QFETCH(QString, file);
    QCOMPARE(lowerKeys(file).size(), entries(file).size());
}

void tst_LanguageFiles::everyKeyHasItsEntry()
{
    QFETCH(QString, file);
    const QSet<QString> present = lowerKeys(file);
    QStringList missing;
    for (const char *key : keys) {
        if (!present.contains(QString(key).toLower()))
            missing << key;
    }
    QCOMPARE(missing, QStringList());
}

void tst_LanguageFiles::readerSeesEveryEntry()
{
    QFETCH(QString, file);
    ZRLocalize::setLanguageFolder(languageFolder);
    QVERIFY(ZRLocalize::loadLanguage(file));
    for (const Entry &entry : entries(file)) {
        QCOMPARE(ZRLocalize::translate(entry.key), entry.value);
        QCOMPARE(ZRLocalize::translate(entry.key.toUpper()), entry.value);
    }
}

void tst_LanguageFiles::filesHoldTheSameKeys()
{
    QStringList english;
    QStringList chinese;
    for (const Entry &entry : entries("en.txt"))
        english << entry.key;
    for (const Entry &entry : entries("cn.txt"))
        chinese << entry.key;
    QCOMPARE(chinese, english);
}

void tst_LanguageFiles::chineseIsChinese()
{
    QStringList latin;
    for (const Entry &entry : entries("cn.txt")) {
        if (std::none_of(entry.value.begin(), entry.value.end(),
                [](QChar letter) { return letter.script() == QChar::Script_Han; }))
            latin << entry.key;
    }
    QCOMPARE(sorted(latin), sorted(latinKeys));
}

void tst_LanguageFiles::literalsAreFound_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QStringList>("literals");
    QTest::newRow("bare") << R"(setText(translate("Set"));)" << QStringList{"Set"};
    QTest::newRow("wrapped") << R"(ZRLocalize::translate(QStringLiteral("Set")))"
                             << QStringList{"Set"};
    QTest::newRow("two calls") << R"(f(translate("A"), "no", translate("B")))"
                               << QStringList{"A", "B"};
    QTest::newRow("choice") << R"(translate(ok ? "Pass" : "Failure") + "no")"
                            << QStringList{"Pass", "Failure"};
    QTest::newRow("joined") << "translate(\n    \"One \"\n    \"two\")" << QStringList{"One two"};
    QTest::newRow("bracket inside") << "translate(\"a)\"), \"no\")" << QStringList{"a)"};
    QTest::newRow("escape") << R"(translate("a\"b"))" << QStringList{"a\"b"};
    QTest::newRow("no literal") << "translate(key)" << QStringList();
    QTest::newRow("other call") << R"(painter.untranslate("no"))" << QStringList();
}

void tst_LanguageFiles::literalsAreFound()
{
    QFETCH(QString, code);
    QTEST(translatedLiterals(code), "literals");
}

void tst_LanguageFiles::everyTranslatedLiteralHasAnEntry()
{
    QFETCH(QString, file);
    const QStringList literals = literalsOfTheSources();
    QVERIFY2(!literals.isEmpty(), "the sources were not found");
    const QSet<QString> present = lowerKeys(file);
    QStringList missing;
    for (const QString &literal : literals) {
        if (!present.contains(literal.toLower()))
            missing << literal;
    }
    QCOMPARE(sorted(missing), QStringList());
}

void tst_LanguageFiles::textFitsItsPlace_data()
{
    struct Place {
        const char *keys;
        const char *suffix;
        int width; // without the frame of a button, a combo box or a table header
    };
    constexpr Place places[] = {
        {"Device Name|IP Address|Firmware Version", "", 120},
        {"Set|Upgrade Firmware|Restore", "", 130 - 12},
        {"IP Mode|IP Address|Gateway|Netmask|Dns1|Dns2", "", 110},
        {"Set|Cancel", "", 110 - 12},
        {"DHCP|Static", "", 110 - 30},
        {"OK", "", 60 - 12},
        {"System Version|Build Date|Language|Hardware", " : ", 200},
        {"English|Chinese|On|Off", "", 100 - 30},
        {"Save", "", 120 - 12},
        {"No.", "", 30 - 4},
        {"Name|Mac", "", 120 - 4},
        {"Result|Upgrade Success|Upgrade Failure", "", 150 - 6},
        // Two columns of labels share the form with two columns of edits.
        {"Label Width|Label Height|Label Column|Label padding", "", 107},
        {"Label left padding|Label right padding|Label top padding|Label bottom padding", "", 128},
    };
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<int>("width");
    for (const QString file : {"en.txt", "cn.txt"}) {
        for (const Place &place : places) {
            for (const QString &key : QString(place.keys).split('|'))
                QTest::newRow(qPrintable(QString("%1: %2 in %3").arg(file, key).arg(place.width)))
                    << file << key << place.suffix << place.width;
        }
    }
}

// In the program's default font.
void tst_LanguageFiles::textFitsItsPlace()
{
    QFETCH(QString, file);
    QFETCH(QString, key);
    QFETCH(QString, suffix);
    QFETCH(int, width);
    ZRLocalize::setLanguageFolder(languageFolder);
    QVERIFY(ZRLocalize::loadLanguage(file));
    const QString text = ZRLocalize::translate(key) + suffix;
    const int taken = QFontMetrics(QGuiApplication::font()).horizontalAdvance(text);
    QVERIFY2(taken <= width, qPrintable(QString("%1: %2 of %3").arg(text).arg(taken).arg(width)));
}

QTEST_MAIN(tst_LanguageFiles)
#include "tst_LanguageFiles.moc"
