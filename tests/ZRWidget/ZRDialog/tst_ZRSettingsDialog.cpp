#include "ZRSettingsDialog.h"

#include "MetaMethods.h"
#include "ModalDriver.h"
#include "SettingsFile.h"
#include "ZRConfigure.h"

#include <QComboBox>
#include <QLabel>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

class tst_ZRSettingsDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void metaObject();
    void texts_data();
    void texts();
    void geometry_data();
    void geometry();
    void storedSettingsAreSelected_data();
    void storedSettingsAreSelected();
    void firstOpeningReloadsTheSameLanguage();
    void laterOpeningFindsNothingToDo();
    void englishStartRunsNoSlot();
    void chineseInCapitalsIsRewritten();
    void capitalsStayWhenTheLanguageIsLoaded();
    void hardwareOffIsRewritten_data();
    void hardwareOffIsRewritten();
    void choosingLanguages();
    void tellsAllInOrder();
    void switchesBeforeItStores();
    void missingLanguageShowsKeys();
    void hookSetsAlignments();
    void choosingLanguageFiresNothingElse();
    void noChoiceDoesNothing();
    void otherIndexes();
    void choosingHardware();
    void closingKeepsWhatIsStored();

private:
    QTemporaryDir folder;
    SettingsFile settings;
};

namespace {
// Counts the switches of language, and looks at something at each.
class Listener : public ZRLocalize
{
public:
    explicit Listener(std::function<QString()> look = {}) : look(look) { }

    void onLanguageChanged() override
    {
        ++switches;
        if (look)
            seen << look();
    }

    std::function<QString()> look;
    int switches = 0;
    QStringList seen;
};

QComboBox *languageComboBox(const ZRSettingsDialog &dialog)
{
    return dialog.findChild<QComboBox *>("languageComboBox");
}

QComboBox *hardwareComboBox(const ZRSettingsDialog &dialog)
{
    return dialog.findChild<QComboBox *>("hardwareComboBox");
}

QString textOf(const ZRSettingsDialog &dialog, const QString &field)
{
    return dialog.findChild<QLabel *>(field)->text();
}

QStringList itemsOf(const QComboBox *comboBox)
{
    QStringList texts;
    for (int i = 0; i < comboBox->count(); ++i)
        texts << comboBox->itemText(i);
    return texts;
}

constexpr char english[] = "system version=EV\nbuild date=EB\nlanguage=EL\nhardware=EH\n"
                           "english=EE\nchinese=EC\non=EOn\noff=EOff\n";
constexpr char chinese[] = "system version=CV\nbuild date=CB\nlanguage=CL\nhardware=CH\n"
                           "english=CE\nchinese=CC\non=COn\noff=COff\n";
}

void tst_ZRSettingsDialog::initTestCase()
{
    QVERIFY(folder.isValid());
    const QPair<const char *, const char *> languages[] = {
        {"en.txt", english}, {"cn.txt", chinese}};
    for (const auto &language : languages) {
        QFile file(folder.filePath(language.first));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(language.second);
    }
    ZRLocalize::setLanguageFolder(folder.path());
}

// As after start-up in English.
void tst_ZRSettingsDialog::init()
{
    settings.write({{"langage", "en"}, {"hardware", 1}});
    QVERIFY(ZRLocalize::loadLanguage("en.txt"));
}

void tst_ZRSettingsDialog::metaObject()
{
    QCOMPARE(ownMethods(ZRSettingsDialog::staticMetaObject),
        (QStringList{
            "private slot onLanguageChanged(int)", "private slot onHardwareChanged(int)"}));
}

void tst_ZRSettingsDialog::texts_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isName");
    const struct {
        const char *field, *text;
        bool isName;
    } rows[] = {
        {"versionNameLabel", "EV : ", true},
        {"versionLabel", "2.2.6 IPTool", false},
        {"buildDateNameLabel", "EB : ", true},
        {"buildDateLabel", "20240319", false},
        {"languageLabel", "EL : ", true},
        {"hardwareLabel", "EH : ", true},
    };
    for (const auto &row : rows)
        QTest::newRow(row.field) << QString(row.field) << QString(row.text) << row.isName;
}

void tst_ZRSettingsDialog::texts()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(bool, isName);
    const ZRSettingsDialog dialog(nullptr);
    QCOMPARE(textOf(dialog, field), text);
    QCOMPARE(dialog.findChild<QLabel *>(field)->alignment(),
        Qt::AlignVCenter | (isName ? Qt::AlignRight : Qt::AlignLeft));
    QCOMPARE(itemsOf(languageComboBox(dialog)), (QStringList{"EE", "EC"}));
    QCOMPARE(itemsOf(hardwareComboBox(dialog)), (QStringList{"EOn", "EOff"}));
}

void tst_ZRSettingsDialog::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("child");
    QTest::addColumn<QRect>("expected");
    for (const QSize &size : {QSize(400, 200), QSize(533, 301)}) {
        const int half = size.width() / 2;
        const QPair<const char *, QRect> rows[] = {
            {"versionNameLabel", {0, 30, half, 30}},
            {"versionLabel", {half, 30, half, 30}},
            {"buildDateNameLabel", {0, 70, half, 30}},
            {"buildDateLabel", {half, 70, half, 30}},
            {"languageLabel", {0, 110, half, 30}},
            {"languageComboBox", {half, 115, 100, 20}},
            {"hardwareLabel", {1, 150, half, 30}},
            {"hardwareComboBox", {half, 155, 100, 20}},
        };
        for (const auto &row : rows) {
            QTest::addRow("%s, %d", row.first, size.width())
                << size << QString(row.first) << row.second;
        }
    }
}

void tst_ZRSettingsDialog::geometry()
{
    QFETCH(QSize, size);
    QFETCH(QString, child);
    QFETCH(QRect, expected);
    ZRSettingsDialog dialog(nullptr);
    QCOMPARE(dialog.size(), QSize(400, 200));
    dialog.resize(size);
    dialog.show();
    QCOMPARE(dialog.findChild<QWidget *>(child)->geometry(), expected);
}

void tst_ZRSettingsDialog::storedSettingsAreSelected_data()
{
    QTest::addColumn<QVariantMap>("stored");
    QTest::addColumn<int>("language");
    QTest::addColumn<int>("hardware");
    QTest::newRow("nothing") << QVariantMap() << 0 << 1;
    QTest::newRow("en, on") << QVariantMap{{"langage", "en"}, {"hardware", 1}} << 0 << 0;
    QTest::newRow("cn, off") << QVariantMap{{"langage", "cn"}, {"hardware", 0}} << 1 << 1;
    QTest::newRow("CN, 2") << QVariantMap{{"langage", "CN"}, {"hardware", 2}} << 1 << 0;
    QTest::newRow("neither") << QVariantMap{{"langage", "fr"}, {"hardware", "x"}} << 0 << 1;
}

void tst_ZRSettingsDialog::storedSettingsAreSelected()
{
    QFETCH(QVariantMap, stored);
    QFETCH(int, language);
    QFETCH(int, hardware);
    settings.write(stored);
    const ZRSettingsDialog dialog(nullptr);
    QCOMPARE(languageComboBox(dialog)->currentIndex(), language);
    QCOMPARE(hardwareComboBox(dialog)->currentIndex(), hardware);
}

// At start-up the name has its suffix, so it differs from the code.
void tst_ZRSettingsDialog::firstOpeningReloadsTheSameLanguage()
{
    settings.write({{"langage", "cn"}, {"hardware", 1}});
    QVERIFY(ZRLocalize::loadLanguage("cn.txt"));
    Listener listener;
    const ZRSettingsDialog dialog(nullptr);
    QCOMPARE(listener.switches, 1);
    QCOMPARE(ZRLocalize::languageFileName(), QStringLiteral("cn"));
    QCOMPARE(settings.read().value("langage").toString(), QStringLiteral("cn"));
    QCOMPARE(textOf(dialog, "languageLabel"), QStringLiteral("CL : "));
}

void tst_ZRSettingsDialog::laterOpeningFindsNothingToDo()
{
    settings.write({{"langage", "cn"}, {"hardware", 1}});
    QVERIFY(ZRLocalize::loadLanguage("cn.txt"));
    const ZRSettingsDialog first(nullptr);
    Listener listener;
    const ZRSettingsDialog second(nullptr);
    QCOMPARE(listener.switches, 0);
    QCOMPARE(languageComboBox(second)->currentIndex(), 1);
}

void tst_ZRSettingsDialog::englishStartRunsNoSlot()
{
    settings.write({{"langage", "En"}, {"hardware", 2}}); // a slot would rewrite either
    Listener listener;
    const ZRSettingsDialog dialog(nullptr);
    QCOMPARE(listener.switches, 0);
    QCOMPARE(ZRLocalize::languageFileName(), QStringLiteral("en.txt"));
    QCOMPARE(settings.read().value("langage").toString(), QStringLiteral("En"));
    QCOMPARE(settings.read().value("hardware").toInt(), 2);
}

void tst_ZRSettingsDialog::chineseInCapitalsIsRewritten()
{
    settings.write({{"langage", "CN"}, {"hardware", 1}});
    QVERIFY(ZRLocalize::loadLanguage("cn.txt"));
    const ZRSettingsDialog dialog(nullptr);
    QCOMPARE(languageComboBox(dialog)->currentIndex(), 1);
    QCOMPARE(settings.read().value("langage").toString(), QStringLiteral("cn"));
}

// The name is the code already, so that the slot finds nothing to do.
void tst_ZRSettingsDialog::capitalsStayWhenTheLanguageIsLoaded()
{
    settings.write({{"langage", "CN"}, {"hardware", 1}});
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    const ZRSettingsDialog dialog(nullptr);
    QCOMPARE(languageComboBox(dialog)->currentIndex(), 1);
    QCOMPARE(settings.read().value("langage").toString(), QStringLiteral("CN"));
}

void tst_ZRSettingsDialog::hardwareOffIsRewritten_data()
{
    QTest::addColumn<QVariantMap>("stored");
    QTest::newRow("absent") << QVariantMap{{"langage", "en"}};
    QTest::newRow("no number") << QVariantMap{{"langage", "en"}, {"hardware", "x"}};
    QTest::newRow("zero written otherwise") << QVariantMap{{"langage", "en"}, {"hardware", "00"}};
}

void tst_ZRSettingsDialog::hardwareOffIsRewritten()
{
    QFETCH(QVariantMap, stored);
    settings.write(stored);
    const ZRSettingsDialog dialog(nullptr);
    QCOMPARE(hardwareComboBox(dialog)->currentIndex(), 1);
    QCOMPARE(settings.read().value("hardware").toString(), QStringLiteral("0"));
}

void tst_ZRSettingsDialog::choosingLanguages()
{
    ZRSettingsDialog dialog(nullptr);
    dialog.show();
    Listener listener;

    languageComboBox(dialog)->setCurrentIndex(1);
    QCOMPARE(listener.switches, 1);
    QCOMPARE(settings.read().value("langage").toString(), QStringLiteral("cn"));
    QCOMPARE(textOf(dialog, "versionNameLabel"), QStringLiteral("CV : "));
    QCOMPARE(textOf(dialog, "versionLabel"), QStringLiteral("2.2.6 IPTool"));
    QCOMPARE(textOf(dialog, "buildDateNameLabel"), QStringLiteral("CB : "));
    QCOMPARE(textOf(dialog, "languageLabel"), QStringLiteral("CL : "));
    QCOMPARE(textOf(dialog, "hardwareLabel"), QStringLiteral("CH : "));

    languageComboBox(dialog)->setCurrentIndex(0);
    QCOMPARE(listener.switches, 2);
    QCOMPARE(settings.read().value("langage").toString(), QStringLiteral("en"));
    QCOMPARE(textOf(dialog, "versionNameLabel"), QStringLiteral("EV : "));
}

// One made before the dialog is told before it, one made later after it.
void tst_ZRSettingsDialog::tellsAllInOrder()
{
    ZRSettingsDialog *shown = nullptr;
    const auto look = [&] { return textOf(*shown, "languageLabel"); };
    Listener before(look);
    ZRSettingsDialog dialog(nullptr);
    shown = &dialog;
    Listener after(look);
    languageComboBox(dialog)->setCurrentIndex(1);
    QCOMPARE(before.seen, QStringList{"EL : "});
    QCOMPARE(after.seen, QStringList{"CL : "});
}

void tst_ZRSettingsDialog::switchesBeforeItStores()
{
    ZRSettingsDialog dialog(nullptr);
    Listener listener([] { return ZRConfigure().language(); });
    languageComboBox(dialog)->setCurrentIndex(1);
    QCOMPARE(listener.seen, QStringList{"en"});
    QCOMPARE(ZRConfigure().language(), QStringLiteral("cn"));
}

void tst_ZRSettingsDialog::missingLanguageShowsKeys()
{
    ZRSettingsDialog dialog(nullptr);
    ZRLocalize::setLanguageFolder(folder.filePath("none"));
    languageComboBox(dialog)->setCurrentIndex(1);
    ZRLocalize::setLanguageFolder(folder.path());
    QCOMPARE(textOf(dialog, "versionNameLabel"), QStringLiteral("System Version : "));
    QCOMPARE(textOf(dialog, "buildDateNameLabel"), QStringLiteral("Build Date : "));
    QCOMPARE(textOf(dialog, "languageLabel"), QStringLiteral("Language : "));
    QCOMPARE(textOf(dialog, "hardwareLabel"), QStringLiteral("Hardware : "));
    QCOMPARE(itemsOf(languageComboBox(dialog)), (QStringList{"English", "Chinese"}));
    QCOMPARE(itemsOf(hardwareComboBox(dialog)), (QStringList{"On", "Off"}));
}

// Those of the version's row alone.
void tst_ZRSettingsDialog::hookSetsAlignments()
{
    ZRSettingsDialog dialog(nullptr);
    const QMap<QString, Qt::Alignment> expected{
        {"versionNameLabel", Qt::AlignRight | Qt::AlignVCenter},
        {"versionLabel", Qt::AlignLeft | Qt::AlignVCenter},
    };
    const auto labels = dialog.findChildren<QLabel *>(QRegularExpression("Label$"));
    QCOMPARE(labels.size(), 6);
    for (QLabel *label : labels)
        label->setAlignment(Qt::AlignTop);
    dialog.onLanguageChanged();
    for (const QLabel *label : labels)
        QCOMPARE(label->alignment(), expected.value(label->objectName(), Qt::AlignTop));
}

// New item texts change no index.
void tst_ZRSettingsDialog::choosingLanguageFiresNothingElse()
{
    ZRSettingsDialog dialog(nullptr);
    QSignalSpy language(
        languageComboBox(dialog), QOverload<int>::of(&QComboBox::currentIndexChanged));
    QSignalSpy hardware(
        hardwareComboBox(dialog), QOverload<int>::of(&QComboBox::currentIndexChanged));
    languageComboBox(dialog)->setCurrentIndex(1);
    QCOMPARE(itemsOf(languageComboBox(dialog)), (QStringList{"CE", "CC"}));
    QCOMPARE(itemsOf(hardwareComboBox(dialog)), (QStringList{"COn", "COff"}));
    QCOMPARE(languageComboBox(dialog)->currentIndex(), 1);
    QCOMPARE(hardwareComboBox(dialog)->currentIndex(), 0);
    QCOMPARE(language.count(), 1);
    QCOMPARE(hardware.count(), 0);
}

void tst_ZRSettingsDialog::noChoiceDoesNothing()
{
    ZRSettingsDialog dialog(nullptr);
    Listener listener;
    languageComboBox(dialog)->setCurrentIndex(-1);
    QCOMPARE(listener.switches, 0);
    QCOMPARE(settings.read().value("langage").toString(), QStringLiteral("en"));
    // For the other slot any index but 0 means off.
    hardwareComboBox(dialog)->setCurrentIndex(-1);
    QCOMPARE(settings.read().value("hardware").toInt(), 0);
}

// Further items would be no languages; they keep their texts.
void tst_ZRSettingsDialog::otherIndexes()
{
    ZRSettingsDialog dialog(nullptr);
    Listener listener;
    languageComboBox(dialog)->addItem("third");
    languageComboBox(dialog)->setCurrentIndex(2);
    QCOMPARE(listener.switches, 0);
    QCOMPARE(ZRConfigure().language(), QStringLiteral("en"));
    hardwareComboBox(dialog)->addItem("third");
    hardwareComboBox(dialog)->setCurrentIndex(2);
    QVERIFY(!ZRConfigure().hardware());

    dialog.onLanguageChanged();
    QCOMPARE(itemsOf(languageComboBox(dialog)), (QStringList{"EE", "EC", "third"}));
    QCOMPARE(itemsOf(hardwareComboBox(dialog)), (QStringList{"EOn", "EOff", "third"}));
}

void tst_ZRSettingsDialog::choosingHardware()
{
    ZRSettingsDialog dialog(nullptr);
    hardwareComboBox(dialog)->setCurrentIndex(1);
    QCOMPARE(settings.read().value("hardware").toString(), QStringLiteral("0"));
    hardwareComboBox(dialog)->setCurrentIndex(0);
    QCOMPARE(settings.read().value("hardware").toString(), QStringLiteral("1"));
}

void tst_ZRSettingsDialog::closingKeepsWhatIsStored()
{
    ZRSettingsDialog dialog(nullptr);
    ModalDriver<ZRSettingsDialog> driver([](ZRSettingsDialog &shown) {
        hardwareComboBox(shown)->setCurrentIndex(1);
        shown.close();
    });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QCOMPARE(settings.read().value("hardware").toInt(), 0);
}

QTEST_MAIN(tst_ZRSettingsDialog)
#include "tst_ZRSettingsDialog.moc"
