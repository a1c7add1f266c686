#include "ZRPrinterSettingsDialog.h"

#include "DefaultPrinter.h"
#include "ModalDriver.h"
#include "SettingsFile.h"
#include "ZRLabel.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPrinterInfo>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class tst_ZRPrinterSettingsDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void kind();
    void children();
    void captions_data();
    void captions();
    void captionsFollowTheLanguage();
    void showsTheSettings_data();
    void showsTheSettings();
    void listsThePrinters();
    void choosesThePrinter_data();
    void choosesThePrinter();
    void refusesTheSize_data();
    void refusesTheSize();
    void saves_data();
    void saves();
    void savesThePrinter();
    void returnSaves();
    void otherRoadsSaveNothing_data();
    void otherRoadsSaveNothing();
    void leastSize();
    void messageCoversNothing();
    void layout_data();
    void layout();
    void layoutFollowsTheCaptions();
    void listKeepsItsOwnWidth();
    void tabsFromTopToBottom();

private:
    QTemporaryDir folder;
    SettingsFile settings;
};

namespace {

const QStringList leftColumn = {"printer", "width", "height", "column", "padding"};
const QStringList rightColumn = {"left", "right", "top", "bottom"};
const QStringList numbers = leftColumn.mid(1) + rightColumn;

// A field that holds a number, and what the settings call it.
const QMap<QString, QString> keys = {
    {"width", "label width"},
    {"height", "label height"},
    {"column", "label column"},
    {"padding", "label padding"},
    {"left", "label padding left"},
    {"right", "label padding right"},
    {"top", "label padding top"},
    {"bottom", "label padding bottom"},
};

using Texts = QMap<QString, QString>; // by "width" for widthEdit

class TestedDialog : public ZRPrinterSettingsDialog
{
public:
    TestedDialog() : ZRPrinterSettingsDialog(nullptr) { }

    QLabel *label(const QString &name) const { return findChild<QLabel *>(name + "Label"); }
    QLineEdit *edit(const QString &name) const { return findChild<QLineEdit *>(name + "Edit"); }
    QComboBox *combo() const { return findChild<QComboBox *>("printerCombo"); }
    QPushButton *saveButton() const { return findChild<QPushButton *>("saveButton"); }
    QString toast() const
    {
        const auto *label = findChild<ZRLabel *>();
        return label ? label->text() : QString();
    }
    QWidget *field(const QString &name) const
    {
        return name == "printer" ? static_cast<QWidget *>(combo()) : edit(name);
    }
    void type(const Texts &texts) const
    {
        for (auto it = texts.begin(); it != texts.end(); ++it)
            edit(it.key())->setText(it.value());
    }
    int widestOf(const QStringList &names) const
    {
        int widest = 0;
        for (const QString &name : names)
            widest = qMax(widest, label(name)->sizeHint().width());
        return widest;
    }
};

const QVariantMap someSettings = {{"label width", 30.5}, {"label height", 20.25},
    {"label column", 3}, {"label padding", 2.5}, {"label padding left", 1.5},
    {"label padding right", 1.25}, {"label padding top", -0.5}, {"label padding bottom", 0.125},
    {"printer name", "Printer of before"}};

}

void tst_ZRPrinterSettingsDialog::initTestCase()
{
    QFile file(folder.filePath("xx.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("label right padding=A caption that is wider than all the others are\n"
               "printer=P\nlabel height=H\nlabel top padding=T\nsave=S\n"
               "please input correct size=No size\n");
}

void tst_ZRPrinterSettingsDialog::init()
{
    settings.remove();
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("en"));
}

void tst_ZRPrinterSettingsDialog::kind()
{
    TestedDialog dialog;
    ZRPrinterSettingsDialog *whole = &dialog;
    QCOMPARE(static_cast<void *>(static_cast<ZRDialog *>(whole)), static_cast<void *>(whole));
    QVERIFY(static_cast<void *>(static_cast<ZRLocalize *>(whole)) > static_cast<void *>(whole));
    QCOMPARE(dialog.metaObject(), &QDialog::staticMetaObject);
    QCOMPARE(dialog.minimumSize(), QSize(470, 230));
    QVERIFY(!dialog.parentWidget());
    QWidget parent;
    QCOMPARE(ZRPrinterSettingsDialog(&parent).parentWidget(), &parent);
}

void tst_ZRPrinterSettingsDialog::children()
{
    const TestedDialog dialog;
    QStringList names;
    for (const QWidget *child :
        dialog.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        names << child->objectName();
    QCOMPARE(names,
        QStringList({"printerLabel", "printerCombo", "widthLabel", "heightLabel", "columnLabel",
            "paddingLabel", "leftLabel", "rightLabel", "topLabel", "bottomLabel", "widthEdit",
            "heightEdit", "columnEdit", "paddingEdit", "leftEdit", "rightEdit", "topEdit",
            "bottomEdit", "saveButton"}));
}

void tst_ZRPrinterSettingsDialog::captions_data()
{
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "cn", "none"})
        QTest::newRow(language) << language;
}

void tst_ZRPrinterSettingsDialog::captions()
{
    QFETCH(QString, language);
    ZRLocalize::loadLanguage(language);
    const TestedDialog dialog;
    const Texts expected = {
        {"printer", "Printer"},
        {"width", "Label Width"},
        {"height", "Label Height"},
        {"column", "Label Column"},
        {"padding", "Label padding"},
        {"left", "Label left padding"},
        {"right", "Label right padding"},
        {"top", "Label top padding"},
        {"bottom", "Label bottom padding"},
    };
    for (auto it = expected.begin(); it != expected.end(); ++it)
        QCOMPARE(dialog.label(it.key())->text(), ZRLocalize::translate(it.value()));
    QCOMPARE(dialog.saveButton()->text(), ZRLocalize::translate("Save"));
}

void tst_ZRPrinterSettingsDialog::captionsFollowTheLanguage()
{
    const TestedDialog dialog;
    ZRLocalize::setLanguageFolder(folder.path());
    QVERIFY(ZRLocalize::switchLanguage("xx"));
    QCOMPARE(dialog.label("printer")->text(), QString("P"));
    QCOMPARE(dialog.label("width")->text(), QString("Label Width"));
    QCOMPARE(dialog.label("top")->text(), QString("T"));
    QCOMPARE(dialog.saveButton()->text(), QString("S"));
}

void tst_ZRPrinterSettingsDialog::showsTheSettings_data()
{
    QTest::addColumn<QVariantMap>("stored");
    QTest::addColumn<Texts>("shown");
    QTest::newRow("nothing stored") << QVariantMap() << Texts();
    QTest::newRow("all") << someSettings
                         << Texts{{"width", "30.5"}, {"height", "20.25"}, {"column", "3"},
                                {"padding", "2.5"}, {"left", "1.5"}, {"right", "1.25"},
                                {"top", "-0.5"}, {"bottom", "0.125"}};
    QTest::newRow("six digits") << QVariantMap{{"label width", 45.1234567},
        {"label height", 1234567}, {"label padding", 0.000012345678}, {"label column", 1234567}}
                                << Texts{{"width", "45.1235"}, {"height", "1.23457e+06"},
                                       {"padding", "1.23457e-05"}, {"column", "1234567"}};
}

void tst_ZRPrinterSettingsDialog::showsTheSettings()
{
    QFETCH(QVariantMap, stored);
    QFETCH(Texts, shown);
    settings.write(stored);
    const TestedDialog dialog;
    for (const QString &name : numbers)
        QCOMPARE(dialog.edit(name)->text(), shown.value(name, "0"));
}

void tst_ZRPrinterSettingsDialog::listsThePrinters()
{
    const TestedDialog dialog;
    QStringList listed;
    for (int i = 0; i < dialog.combo()->count(); ++i)
        listed << dialog.combo()->itemText(i);
    QCOMPARE(listed, QPrinterInfo::availablePrinterNames());
    for (const char *queue : {"EDGE-BENCH", "LABEL-300", "RAW-BENCH"})
        QCOMPARE(listed.count(queue), 1);
    QVERIFY(!dialog.combo()->isEditable());
}

void tst_ZRPrinterSettingsDialog::choosesThePrinter_data()
{
    QTest::addColumn<QString>("saved");
    QTest::addColumn<QString>("preferred"); // the system's default printer, if any
    QTest::addColumn<QString>("chosen");
    const QString first = QPrinterInfo::availablePrinterNames().value(0);
    const QString last = QPrinterInfo::availablePrinterNames().last();
    const struct {
        const char *row;
        QString saved, preferred, chosen;
    } rows[] = {
        {"nothing saved", "", "", first},
        {"first saved", first, "", first},
        {"one in the middle saved", "LABEL-300", "", "LABEL-300"},
        {"last saved", last, "", last},
        {"saved before default", "LABEL-300", "RAW-BENCH", "LABEL-300"},
        {"nothing saved but a default", "", "RAW-BENCH", "RAW-BENCH"},
        {"other letter case is no match", "label-300", "RAW-BENCH", "RAW-BENCH"},
        {"nor is a part", "LABEL", "RAW-BENCH", "RAW-BENCH"},
        {"saved one is gone", "POSTEK G6000", "RAW-BENCH", "RAW-BENCH"},
        {"gone, and no default", "POSTEK G6000", "", first},
        {"default is unknown too", "POSTEK G6000", "Nowhere", first},
    };
    for (const auto &row : rows)
        QTest::newRow(row.row) << row.saved << row.preferred << row.chosen;
}

void tst_ZRPrinterSettingsDialog::choosesThePrinter()
{
    QFETCH(QString, saved);
    QFETCH(QString, preferred);
    settings.write({{"printer name", saved}});
    QVERIFY(setDefaultPrinter(preferred));
    const TestedDialog dialog;
    QVERIFY(setDefaultPrinter(QString()));
    QTEST(dialog.combo()->currentText(), "chosen");
}

void tst_ZRPrinterSettingsDialog::refusesTheSize_data()
{
    QTest::addColumn<Texts>("typed");
    for (const char *name : {"width", "height"}) {
        for (const char *text : {"0", "-1", "-0.5", "", "wide", "45mm", "4,5", "1e999", "0.0"})
            QTest::addRow("%s: '%s'", name, text) << Texts{{name, text}};
    }
    QTest::newRow("both") << Texts{{"width", "0"}, {"height", "0"}};
}

void tst_ZRPrinterSettingsDialog::refusesTheSize()
{
    QFETCH(Texts, typed);
    settings.write(someSettings);
    ZRLocalize::setLanguageFolder(folder.path());
    QVERIFY(ZRLocalize::loadLanguage("xx"));
    TestedDialog dialog;
    dialog.show();
    dialog.type({{"left", "7"}});
    dialog.type(typed);
    dialog.saveButton()->click();
    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.toast(), QString("No size"));
    const auto *toast = dialog.findChild<ZRLabel *>();
    QCOMPARE(toast->x(), (dialog.width() - toast->width()) / 2);
    QCOMPARE(toast->y(), dialog.height() - 5 - toast->height());
    const QVariantMap stored = settings.read();
    QCOMPARE(stored.size(), someSettings.size());
    for (auto it = someSettings.begin(); it != someSettings.end(); ++it)
        QCOMPARE(stored.value(it.key()).toString(), it.value().toString());

    dialog.type({{"width", "1"}, {"height", "1"}});
    dialog.saveButton()->click();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void tst_ZRPrinterSettingsDialog::saves_data()
{
    QTest::addColumn<Texts>("typed");
    QTest::addColumn<Texts>("stored"); // beside what stays
    const struct {
        const char *row;
        Texts typed;
        Texts stored;
    } rows[] = {
        {"as it was", {}, {}},
        {"all",
            {{"width", "45"}, {"height", "44.5"}, {"column", "2"}, {"padding", "2.25"},
                {"left", "1"}, {"right", "2"}, {"top", "3"}, {"bottom", "4"}},
            {{"width", "45"}, {"height", "44.5"}, {"column", "2"}, {"padding", "2.25"},
                {"left", "1"}, {"right", "2"}, {"top", "3"}, {"bottom", "4"}}},
        {"column with letters", {{"column", "3x"}}, {{"column", "0"}}},
        {"column with a fraction", {{"column", "2.5"}}, {{"column", "0"}}},
        {"column in hexadecimal", {{"column", "0x10"}}, {{"column", "0"}}},
        {"column beyond an integer", {{"column", "99999999999"}}, {{"column", "0"}}},
        {"no column", {{"column", "0"}}, {{"column", "0"}}},
        {"negative column", {{"column", "-2"}}, {{"column", "-2"}}},
        {"negative margins",
            {{"left", "-1"}, {"right", "-2"}, {"top", "-3"}, {"bottom", "-4"}, {"padding", "-5"}},
            {{"left", "-1"}, {"right", "-2"}, {"top", "-3"}, {"bottom", "-4"}, {"padding", "-5"}}},
        {"no numbers",
            {{"left", ""}, {"right", "two"}, {"top", "1mm"}, {"bottom", "1,5"}, {"padding", "-"}},
            {{"left", "0"}, {"right", "0"}, {"top", "0"}, {"bottom", "0"}, {"padding", "0"}}},
        {"beyond a double", {{"left", "1e999"}}, {{"left", "0"}}},
        {"spaces around", {{"left", " 2 "}, {"column", " 2 "}}, {{"left", "2"}, {"column", "2"}}},
        {"smallest size", {{"width", "1e-9"}, {"height", "0.001"}},
            {{"width", "1e-09"}, {"height", "0.001"}}},
    };
    for (const auto &row : rows)
        QTest::newRow(row.row) << row.typed << row.stored;
}

void tst_ZRPrinterSettingsDialog::saves()
{
    QFETCH(Texts, typed);
    QFETCH(Texts, stored);
    settings.write(someSettings);
    TestedDialog dialog;
    const ModalDriver<ZRPrinterSettingsDialog> driver([&](ZRPrinterSettingsDialog &) {
        dialog.type(typed);
        dialog.saveButton()->click();
    });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    const QVariantMap read = settings.read();
    for (const QString &name : numbers) {
        const QString before = someSettings[keys[name]].toString();
        QCOMPARE(read[keys[name]].toString(), stored.value(name, before));
    }
    QCOMPARE(dialog.toast(), QString());
}

// Whatever the list shows, nothing at all where there is no printer.
void tst_ZRPrinterSettingsDialog::savesThePrinter()
{
    settings.write(someSettings);
    {
        const TestedDialog dialog;
        dialog.combo()->clear();
        dialog.saveButton()->click();
        QCOMPARE(settings.read()["printer name"].toString(), QString());
    }
    const TestedDialog dialog;
    dialog.combo()->addItems({"POSTEK Q8", "POSTEK G6000"});
    dialog.combo()->setCurrentText("POSTEK G6000");
    dialog.saveButton()->click();
    QCOMPARE(settings.read()["printer name"].toString(), QString("POSTEK G6000"));
}

void tst_ZRPrinterSettingsDialog::returnSaves()
{
    settings.write(someSettings);
    TestedDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    dialog.type({{"width", "77"}});
    QTest::keyClick(dialog.edit("width"), Qt::Key_Return);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(settings.read()["label width"].toDouble(), 77.0);
}

using Road = void (*)(QDialog &);
Q_DECLARE_METATYPE(Road)

void tst_ZRPrinterSettingsDialog::otherRoadsSaveNothing_data()
{
    QTest::addColumn<Road>("road");
    QTest::newRow("Esc") << Road([](QDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    QTest::newRow("close") << Road([](QDialog &dialog) { dialog.close(); });
}

void tst_ZRPrinterSettingsDialog::otherRoadsSaveNothing()
{
    QFETCH(Road, road);
    settings.write(someSettings);
    TestedDialog dialog;
    const ModalDriver<ZRPrinterSettingsDialog> driver([&](ZRPrinterSettingsDialog &shown) {
        dialog.type({{"width", "77"}, {"column", "9"}});
        road(shown);
    });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QCOMPARE(settings.read()["label width"].toDouble(), 30.5);
    QCOMPARE(settings.read()["label column"].toInt(), 3);
    QCOMPARE(settings.read()["printer name"], someSettings["printer name"]);
}

void tst_ZRPrinterSettingsDialog::leastSize()
{
    TestedDialog dialog;
    dialog.show();
    dialog.resize(10, 10);
    QCOMPARE(dialog.size(), QSize(470, 230));
}

// In the size in which it opens.
void tst_ZRPrinterSettingsDialog::messageCoversNothing()
{
    TestedDialog dialog;
    dialog.show();
    dialog.saveButton()->click();
    const auto *toast = dialog.findChild<ZRLabel *>();
    QVERIFY(toast);
    QVERIFY(toast->y() > dialog.saveButton()->geometry().bottom());
}

void tst_ZRPrinterSettingsDialog::layout_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QSize>("size");
    for (const char *language : {"en", "cn", "none"}) {
        for (const QSize size : {QSize(470, 230), QSize(801, 433)})
            QTest::addRow("%s, %d", language, size.width()) << language << size;
    }
}

void tst_ZRPrinterSettingsDialog::layout()
{
    QFETCH(QString, language);
    QFETCH(QSize, size);
    ZRLocalize::loadLanguage(language);
    TestedDialog dialog;
    dialog.show();
    dialog.resize(size);
    QTRY_COMPARE(dialog.size(), size);

    const int leftWidth = dialog.widestOf(leftColumn);
    const int editX = 10 + leftWidth + 5;
    const int comboWidth = qMax(size.width() - editX - 20, dialog.combo()->sizeHint().width());
    for (int i = 0; i < leftColumn.size(); ++i) {
        const int y = 10 + 30 * i;
        QCOMPARE(dialog.label(leftColumn[i])->geometry(), QRect(10, y, leftWidth, 25));
        QCOMPARE(
            dialog.field(leftColumn[i])->geometry(), QRect(editX, y, i == 0 ? comboWidth : 80, 25));
    }
    const int rightX = editX + 80 + 50;
    const int rightWidth = dialog.widestOf(rightColumn);
    for (int i = 0; i < rightColumn.size(); ++i) {
        const int y = 40 + 30 * i; // beside the left column's rows of numbers
        QCOMPARE(dialog.label(rightColumn[i])->geometry(), QRect(rightX, y, rightWidth, 25));
        QCOMPARE(
            dialog.edit(rightColumn[i])->geometry(), QRect(rightX + rightWidth + 5, y, 80, 25));
    }
    QCOMPARE(dialog.saveButton()->geometry(), QRect((size.width() - 120) / 2, 185, 120, 25));

    if (language != "none") { // the program's own languages need no more room
        for (const QString &name : leftColumn + rightColumn)
            QVERIFY(dialog.rect().contains(dialog.field(name)->geometry()));
    }
}

// At the next change of size: each column has a width of its own.
void tst_ZRPrinterSettingsDialog::layoutFollowsTheCaptions()
{
    TestedDialog dialog;
    dialog.show();
    const int leftWidth = dialog.label("width")->width();
    const int rightWidth = dialog.label("right")->width();
    ZRLocalize::setLanguageFolder(folder.path());
    QVERIFY(ZRLocalize::switchLanguage("xx"));
    dialog.resize(900, 300);
    QTRY_COMPARE(dialog.saveButton()->x(), 390);
    QVERIFY(dialog.label("right")->width() > rightWidth);
    QCOMPARE(dialog.label("right")->width(), dialog.label("right")->sizeHint().width());
    QCOMPARE(dialog.label("top")->width(), dialog.label("right")->width());
    QCOMPARE(dialog.label("printer")->width(), dialog.widestOf(leftColumn));
    QVERIFY(dialog.label("printer")->width() != leftWidth);
}

void tst_ZRPrinterSettingsDialog::listKeepsItsOwnWidth()
{
    TestedDialog dialog;
    dialog.combo()->addItem(QString(90, 'W'));
    dialog.show();
    const int own = dialog.combo()->sizeHint().width();
    QVERIFY(own > 470);
    QCOMPARE(dialog.combo()->width(), own);
    const QSize wide(own + 500, 230);
    dialog.resize(wide);
    QTRY_COMPARE(dialog.combo()->width(), wide.width() - dialog.combo()->x() - 20);
    QVERIFY(dialog.combo()->width() > own);
    dialog.resize(500, 230);
    QTRY_COMPARE(dialog.combo()->width(), own);
}

void tst_ZRPrinterSettingsDialog::tabsFromTopToBottom()
{
    TestedDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QStringList visited;
    for (int i = 0; i < 10; ++i) {
        visited << dialog.focusWidget()->objectName();
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(visited,
        QStringList({"printerCombo", "widthEdit", "heightEdit", "columnEdit", "paddingEdit",
            "leftEdit", "rightEdit", "topEdit", "bottomEdit", "saveButton"}));
}

QTEST_MAIN(tst_ZRPrinterSettingsDialog)
#include "tst_ZRPrinterSettingsDialog.moc"
