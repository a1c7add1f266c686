#include "ZRScanCodePrinterDialog.h"

#include "ModalDriver.h"
#include "SettingsFile.h"
#include "ZRConfigure.h"
#include "ZRLabel.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

class tst_ZRScanCodePrinterDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void kind();
    void children();
    void captions_data();
    void captions();
    void captionsFollowTheLanguage();
    void showsTheMargins_data();
    void showsTheMargins();
    void prints();
    void picksTheCode_data();
    void picksTheCode();
    void foreignCode_data();
    void foreignCode();
    void printsOnAndOn();
    void serialIsNeverStored();
    void failedPrint();
    void missingText_data();
    void missingText();
    void savesTheMargins_data();
    void savesTheMargins();
    void savesTheMarginsFirst();
    void keepsTheOtherSettings();
    void carriageReturns_data();
    void carriageReturns();
    void otherKeys_data();
    void otherKeys();
    void keysEndNothing_data();
    void keysEndNothing();
    void closeControlEnds();
    void opensAtItsLeast();
    void layout_data();
    void layout();
    void layoutFollowsTheCaptions();
    void startsAtTheScannersField();

private:
    SettingsFile settings;
};

namespace {

struct Print {
    QString code, model, sn;
};

// Takes the place of the label printer.
QVector<Print> printed;
bool printerWorks;
std::function<void()> atPrint;

bool recordPrint(const QString &code, const QString &model, QString &sn)
{
    printed.append({code, model, sn});
    if (atPrint)
        atPrint();
    return printerWorks;
}

// With a model and a serial.
class TestedDialog : public ZRScanCodePrinterDialog
{
public:
    TestedDialog() : ZRScanCodePrinterDialog(nullptr, recordPrint)
    {
        edit("model")->setText("MR2G-1");
        edit("sn")->setText("AB-00041");
    }

    QLabel *label(const QString &name) const { return findChild<QLabel *>(name + "Label"); }
    QLineEdit *edit(const QString &name) const { return findChild<QLineEdit *>(name + "Edit"); }
    QString text(const QString &name) const { return edit(name)->text(); }
    QString toast() const
    {
        const auto *label = findChild<ZRLabel *>();
        return label ? label->text() : QString();
    }
    // The field's whole content, and the scanner's carriage return.
    void scanned(const QString &text) const
    {
        edit("scan")->setText(text);
        QTest::keyClick(edit("scan"), Qt::Key_Return);
    }
};

const QVariantMap someSettings = {{"label width", 30.5}, {"label height", 20.25},
    {"label column", 3}, {"label padding", 2.5}, {"label padding left", 1.5},
    {"label padding right", 1.25}, {"label padding top", -0.5}, {"label padding bottom", 0.125},
    {"printer name", "POSTEK Q8"}};

}

void tst_ZRScanCodePrinterDialog::init()
{
    settings.remove();
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("en"));
    printed.clear();
    printerWorks = true;
    atPrint = nullptr;
}

void tst_ZRScanCodePrinterDialog::kind()
{
    ZRScanCodePrinterDialog dialog(nullptr, recordPrint);
    ZRScanCodePrinterDialog *whole = &dialog;
    QCOMPARE(static_cast<void *>(static_cast<ZRDialog *>(whole)), static_cast<void *>(whole));
    QVERIFY(static_cast<void *>(static_cast<ZRLocalize *>(whole)) > static_cast<void *>(whole));
    QCOMPARE(dialog.metaObject(), &QDialog::staticMetaObject);
    QCOMPARE(dialog.minimumSize(), QSize(500, 360));
    QWidget parent;
    QCOMPARE(ZRScanCodePrinterDialog(&parent, recordPrint).parentWidget(), &parent);
}

void tst_ZRScanCodePrinterDialog::children()
{
    const ZRScanCodePrinterDialog dialog(nullptr, recordPrint);
    QStringList names;
    for (const QWidget *child :
        dialog.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        names << child->objectName();
    QCOMPARE(names,
        QStringList({"titleLabel", "scanEdit", "modelLabel", "modelEdit", "snLabel", "snEdit",
            "leftLabel", "topLabel", "leftEdit", "topEdit"}));
    for (const char *name : {"scanEdit", "modelEdit", "snEdit"})
        QCOMPARE(dialog.findChild<QLineEdit *>(name)->text(), QString());
}

void tst_ZRScanCodePrinterDialog::captions_data()
{
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "cn", "none"})
        QTest::newRow(language) << language;
}

void tst_ZRScanCodePrinterDialog::captions()
{
    QFETCH(QString, language);
    ZRLocalize::loadLanguage(language);
    const TestedDialog dialog;
    QCOMPARE(dialog.label("title")->text(), ZRLocalize::translate("Scan code"));
    QCOMPARE(dialog.label("model")->text(), ZRLocalize::translate("Product Model") + ":");
    QCOMPARE(dialog.label("sn")->text(), ZRLocalize::translate("Product SN") + ":");
    QCOMPARE(dialog.label("left")->text(), ZRLocalize::translate("Label left padding"));
    QCOMPARE(dialog.label("top")->text(), ZRLocalize::translate("Label top padding"));

    const QPair<QFont, int> fonts[] = {
        {dialog.label("title")->font(), 75}, {dialog.edit("scan")->font(), 50}};
    for (const auto &font : fonts) {
        QCOMPARE(font.first.family(), QString("Arial"));
        QCOMPARE(font.first.pointSize(), 16);
        QCOMPARE(font.first.weight(), font.second);
    }
    QCOMPARE(dialog.edit("model")->font(), dialog.font());
}

void tst_ZRScanCodePrinterDialog::captionsFollowTheLanguage()
{
    const TestedDialog dialog;
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    QCOMPARE(dialog.label("title")->text(), QString::fromUtf8("扫码打印"));
    QCOMPARE(dialog.label("sn")->text(), QString::fromUtf8("产品序列号:"));
    QCOMPARE(dialog.text("sn"), QString("AB-00041"));
}

void tst_ZRScanCodePrinterDialog::showsTheMargins_data()
{
    QTest::addColumn<QVariantMap>("stored");
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("top");
    QTest::newRow("none") << QVariantMap() << "0"
                          << "0";
    QTest::newRow("some") << someSettings << "1.5"
                          << "-0.5";
    QTest::newRow("six digits") << QVariantMap{{"label padding left", 1.23456789},
        {"label padding top", 1234567}}
                                << "1.23457"
                                << "1.23457e+06";
}

void tst_ZRScanCodePrinterDialog::showsTheMargins()
{
    QFETCH(QVariantMap, stored);
    settings.write(stored);
    const TestedDialog dialog;
    QTEST(dialog.text("left"), "left");
    QTEST(dialog.text("top"), "top");
}

void tst_ZRScanCodePrinterDialog::prints()
{
    const TestedDialog dialog;
    dialog.scanned("KVMR2G0001");
    QCOMPARE(printed.size(), 1);
    QCOMPARE(printed[0].code, QString("KVMR2G0001"));
    QCOMPARE(printed[0].model, QString("MR2G-1"));
    QCOMPARE(printed[0].sn, QString("AB-00041"));
    QCOMPARE(dialog.text("sn"), QString("AB-00042"));
    QCOMPARE(dialog.text("scan"), QString("KVMR2G0001"));
    QCOMPARE(dialog.text("model"), QString("MR2G-1"));
    QCOMPARE(dialog.toast(), QString());
}

void tst_ZRScanCodePrinterDialog::picksTheCode_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("code");
    const char *rows[][3] = {
        {"first code", "KVMR2G0001", "KVMR2G0001"},
        {"first code of the other model", "KVNR2G0001", "KVNR2G0001"},
        {"behind the code before", "KVMR2G0001KVMR2G0002", "KVMR2G0002"},
        {"other model behind", "KVMR2G0001KVNR2G0002", "KVNR2G0002"},
        {"first model behind the other", "KVNR2G0001KVMR2G0002", "KVMR2G0002"},
        {"other model twice", "KVNR2G0001KVNR2G0002", "KVNR2G0002"},
        {"from the first of several", "KVMR2G1KVMR2G2KVMR2G3", "KVMR2G2KVMR2G3"},
        {"both behind, other one first", "KVMR2G1KVNR2G2KVMR2G3", "KVMR2G3"},
        {"both behind, foreign before", "000000KVNR2G2KVMR2G3", "KVMR2G3"},
        {"model code alone", "KVMR2G", "KVMR2G"},
        {"right behind the model code", "KVMR2GKVMR2G2", "KVMR2G2"},
        {"one character before", "xKVMR2G0001", "xKVMR2G0001"},
        {"five characters before", "12345KVMR2G0001", "12345KVMR2G0001"},
        {"six characters before", "123456KVMR2G0001", "KVMR2G0001"},
        {"behind a foreign code", "6901234567892KVNR2G0001", "KVNR2G0001"},
        {"small letters behind", "KVMR2G0001kvmr2g0002", "KVMR2G0001kvmr2g0002"},
        {"model code cut in two by the place", "KVKVMR2G0001", "KVKVMR2G0001"},
        {"spaces stay", " KVMR2G 0001 ", " KVMR2G 0001 "},
        {"non-ASCII text", "\u5e8f\u5217\u53f7KVMR2G1", "\u5e8f\u5217\u53f7KVMR2G1"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2]);
}

void tst_ZRScanCodePrinterDialog::picksTheCode()
{
    QFETCH(QString, field);
    QFETCH(QString, code);
    for (const bool works : {true, false}) {
        printed.clear();
        printerWorks = works;
        const TestedDialog dialog;
        dialog.scanned(field);
        QCOMPARE(printed.size(), 1);
        QCOMPARE(printed[0].code, code);
        QCOMPARE(dialog.text("scan"), code);
    }
}

void tst_ZRScanCodePrinterDialog::foreignCode_data()
{
    QTest::addColumn<QString>("field");
    for (const char *field : {"", "6901234567892", "kvmr2g0001", "KVMR2", "KVMR3G0001", "KVMR 2G1",
             "a long text with nothing of a product in it"})
        QTest::addRow("'%s'", field) << field;
}

// It replaces itself; not even a missing model matters.
void tst_ZRScanCodePrinterDialog::foreignCode()
{
    QFETCH(QString, field);
    const TestedDialog dialog;
    dialog.edit("model")->clear();
    dialog.edit("sn")->setText("AB-7");
    dialog.scanned(field);
    QVERIFY(printed.isEmpty());
    QCOMPARE(dialog.text("scan"), field);
    QCOMPARE(dialog.text("sn"), QString("AB-7"));
    QCOMPARE(dialog.toast(), QString());
}

// Key for key, as the scanner types, from the moment of opening.
void tst_ZRScanCodePrinterDialog::printsOnAndOn()
{
    TestedDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    const QStringList codes = {
        "KVMR2G-A-0001", "KVNR2G-B-0001", "6901234567892", "KVMR2G-A-0001", "KVMR2G-A-0002"};
    for (const QString &code : codes) {
        QTest::keyClicks(dialog.focusWidget(), code);
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    }
    // The foreign code lands behind the one before, which is a product's and prints with it.
    const QString expected[][2] = {{codes[0], "AB-00041"}, {codes[1], "AB-00042"},
        {codes[1] + codes[2], "AB-00043"}, {codes[3], "AB-00044"}, {codes[4], "AB-00045"}};
    QCOMPARE(printed.size(), 5);
    for (int i = 0; i < printed.size(); ++i) {
        QCOMPARE(printed[i].code, expected[i][0]);
        QCOMPARE(printed[i].sn, expected[i][1]);
    }
    QCOMPARE(dialog.text("sn"), QString("AB-00046"));
    QCOMPARE(dialog.focusWidget(), static_cast<QWidget *>(dialog.edit("scan")));
}

void tst_ZRScanCodePrinterDialog::serialIsNeverStored()
{
    settings.write(someSettings);
    {
        const TestedDialog dialog;
        dialog.scanned("KVMR2G0001");
    }
    QCOMPARE(settings.read().keys(), someSettings.keys());
    const ZRScanCodePrinterDialog next(nullptr, recordPrint);
    QCOMPARE(next.findChild<QLineEdit *>("snEdit")->text(), QString());
    QCOMPARE(next.findChild<QLineEdit *>("modelEdit")->text(), QString());
}

// The label is printed anew with the same serial.
void tst_ZRScanCodePrinterDialog::failedPrint()
{
    printerWorks = false;
    const TestedDialog dialog;
    dialog.scanned("KVMR2G0001KVMR2G0002");
    QCOMPARE(dialog.text("sn"), QString("AB-00041"));
    QCOMPARE(dialog.text("scan"), QString("KVMR2G0002"));
    QCOMPARE(dialog.toast(), QString());
    printerWorks = true;
    dialog.scanned("KVMR2G0002KVMR2G0002");
    QCOMPARE(printed.size(), 2);
    for (const Print &print : printed) {
        QCOMPARE(print.code, QString("KVMR2G0002"));
        QCOMPARE(print.sn, QString("AB-00041"));
    }
    QCOMPARE(dialog.text("sn"), QString("AB-00042"));
}

void tst_ZRScanCodePrinterDialog::missingText_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("sn");
    QTest::addColumn<QString>("problem");
    QTest::newRow("model") << ""
                           << "AB-1"
                           << "Please set model first";
    QTest::newRow("serial") << "M"
                            << ""
                            << "Please set SN first";
    QTest::newRow("both") << ""
                          << ""
                          << "Please set model first";
    QTest::newRow("spaces are texts") << " "
                                      << " "
                                      << "";
}

void tst_ZRScanCodePrinterDialog::missingText()
{
    QFETCH(QString, model);
    QFETCH(QString, sn);
    QFETCH(QString, problem);
    for (const char *language : {"en", "cn"}) {
        QVERIFY(ZRLocalize::loadLanguage(language));
        printed.clear();
        TestedDialog dialog;
        dialog.show();
        dialog.edit("model")->setText(model);
        dialog.edit("sn")->setText(sn);
        const QString field = "KVMR2G0001KVMR2G0002";
        dialog.scanned(field);
        QCOMPARE(dialog.toast(), ZRLocalize::translate(problem));
        QCOMPARE(printed.isEmpty(), !problem.isEmpty());
        if (problem.isEmpty())
            continue;
        QCOMPARE(dialog.text("scan"), field); // as it was
        QCOMPARE(dialog.text("sn"), sn);
        const auto *toast = dialog.findChild<ZRLabel *>();
        QCOMPARE(toast->x(), (dialog.width() - toast->width()) / 2);
        QCOMPARE(toast->y(), dialog.height() - 5 - toast->height());
        QVERIFY(dialog.isVisible());
    }
}

void tst_ZRScanCodePrinterDialog::savesTheMargins_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("stored");
    const QPair<const char *, double> rows[] = {{"2.25", 2.25}, {"-3", -3.0}, {"", 0.0},
        {"1mm", 0.0}, {"1,5", 0.0}, {"1e999", 0.0}, {" 4 ", 4.0}, {"0.1234567", 0.1234567}};
    for (const auto &row : rows)
        QTest::addRow("'%s'", row.first) << row.first << row.second;
}

void tst_ZRScanCodePrinterDialog::savesTheMargins()
{
    QFETCH(QString, typed);
    QFETCH(double, stored);
    const QPair<const char *, const char *> edits[] = {
        {"left", "label padding left"}, {"top", "label padding top"}};
    for (const auto &edit : edits) {
        settings.write(someSettings);
        const TestedDialog dialog;
        dialog.edit(edit.first)->setText(typed);
        QCOMPARE(settings.read()[edit.second], QVariant(someSettings[edit.second].toString()));
        dialog.scanned("KVMR2G0001");
        QVariantMap expected = someSettings;
        expected[edit.second] = stored;
        const QVariantMap read = settings.read();
        QCOMPARE(read.keys(), expected.keys());
        for (auto it = expected.begin(); it != expected.end(); ++it)
            QCOMPARE(read[it.key()].toString(), it.value().toString());
        QCOMPARE(dialog.text(edit.first), typed);
    }
}

// Whatever comes of the code: a foreign one, a text that is missing, a printer that fails. And the
// printer finds them stored.
void tst_ZRScanCodePrinterDialog::savesTheMarginsFirst()
{
    const TestedDialog dialog;
    const auto stored = [] {
        double left, top, other;
        int column;
        ZRConfigure().labelSettings(other, other, column, left, top, other, other, other);
        return QPair<double, double>(left, top);
    };
    const auto type = [&dialog](const char *left, const char *top) {
        dialog.edit("left")->setText(left);
        dialog.edit("top")->setText(top);
    };
    type("1", "2");
    dialog.scanned("foreign");
    QCOMPARE(stored(), qMakePair(1.0, 2.0));

    type("3", "4");
    dialog.edit("model")->clear();
    dialog.scanned("KVMR2G0001");
    QCOMPARE(stored(), qMakePair(3.0, 4.0));

    type("5", "6");
    dialog.edit("model")->setText("M");
    printerWorks = false;
    QPair<double, double> found;
    atPrint = [&] { found = stored(); };
    dialog.scanned("KVMR2G0001");
    QCOMPARE(found, qMakePair(5.0, 6.0));
}

// What others wrote meanwhile, the printer among them, is read and written anew at each scan.
void tst_ZRScanCodePrinterDialog::keepsTheOtherSettings()
{
    settings.write(someSettings);
    const TestedDialog dialog;
    ZRConfigure().saveLabelSettings(11, 12, 13, 14, 15, 16, 17, 18);
    dialog.scanned("foreign");
    const QVariantMap expected = {{"label width", 11}, {"label height", 12}, {"label column", 13},
        {"label padding left", 1.5}, {"label padding top", -0.5}, {"label padding right", 16},
        {"label padding bottom", 17}, {"label padding", 18}, {"printer name", "POSTEK Q8"}};
    const QVariantMap read = settings.read();
    for (auto it = expected.begin(); it != expected.end(); ++it)
        QCOMPARE(read[it.key()].toString(), it.value().toString());
}

struct Key {
    int key;
    Qt::KeyboardModifiers modifiers;
    QString text;
};
Q_DECLARE_METATYPE(Key)

static void press(QWidget *widget, const Key &key)
{
    QTest::sendKeyEvent(QTest::Click, widget, Qt::Key(key.key), key.text, key.modifiers);
}

void tst_ZRScanCodePrinterDialog::carriageReturns_data()
{
    QTest::addColumn<Key>("key");
    QTest::addColumn<QString>("focus");
    const QPair<const char *, Key> rows[] = {
        {"Return", {Qt::Key_Return, Qt::NoModifier, "\r"}},
        {"Enter", {Qt::Key_Enter, Qt::KeypadModifier, "\r"}},
        {"Shift+Return", {Qt::Key_Return, Qt::ShiftModifier, "\r"}},
        {"Ctrl+M", {Qt::Key_M, Qt::ControlModifier, "\r"}},
        {"text alone", {0, Qt::NoModifier, "\r"}},
    };
    for (const auto &row : rows)
        QTest::newRow(row.first) << row.second << "";
    for (const char *field : {"scan", "model", "sn", "left", "top"})
        QTest::addRow("Return in %s", field) << rows[0].second << field;
}

// Wherever it is pressed.
void tst_ZRScanCodePrinterDialog::carriageReturns()
{
    QFETCH(Key, key);
    QFETCH(QString, focus);
    TestedDialog dialog;
    dialog.edit("scan")->setText("KVMR2G0001");
    press(focus.isEmpty() ? static_cast<QWidget *>(&dialog) : dialog.edit(focus), key);
    QCOMPARE(printed.size(), 1);
}

void tst_ZRScanCodePrinterDialog::otherKeys_data()
{
    QTest::addColumn<Key>("key");
    const QPair<const char *, Key> rows[] = {
        {"line feed", {Qt::Key_Return, Qt::NoModifier, "\n"}},
        {"both", {Qt::Key_Return, Qt::NoModifier, "\r\n"}},
        {"two", {Qt::Key_Return, Qt::NoModifier, "\r\r"}},
        {"Return without text", {Qt::Key_Return, Qt::NoModifier, ""}},
        {"Tab", {Qt::Key_Tab, Qt::NoModifier, "\t"}},
        {"Esc", {Qt::Key_Escape, Qt::NoModifier, "\x1b"}},
        {"a letter", {Qt::Key_A, Qt::NoModifier, "a"}},
        {"F1", {Qt::Key_F1, Qt::NoModifier, ""}},
    };
    for (const auto &row : rows)
        QTest::newRow(row.first) << row.second;
}

void tst_ZRScanCodePrinterDialog::otherKeys()
{
    QFETCH(Key, key);
    settings.write(someSettings);
    TestedDialog dialog;
    dialog.show();
    const QString field = "KVMR2G0001KVMR2G0002";
    dialog.edit("scan")->setText(field);
    dialog.edit("left")->setText("9");
    press(&dialog, key);
    QVERIFY(printed.isEmpty());
    QCOMPARE(dialog.text("scan"), field);
    QCOMPARE(settings.read()["label padding left"].toDouble(), 1.5);
    QVERIFY(dialog.isVisible());
}

void tst_ZRScanCodePrinterDialog::keysEndNothing_data()
{
    QTest::addColumn<int>("key");
    for (const auto key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter})
        QTest::newRow(qPrintable(QVariant::fromValue(key).toString())) << int(key);
}

// Neither the dialog nor a button in it that Return would press in another.
void tst_ZRScanCodePrinterDialog::keysEndNothing()
{
    QFETCH(int, key);
    for (const char *field : {"KVMR2G0001", "foreign"}) {
        TestedDialog dialog;
        QPushButton button(&dialog);
        button.setDefault(true);
        const QSignalSpy clicked(&button, &QPushButton::clicked);
        const QSignalSpy finished(&dialog, &QDialog::finished);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        dialog.edit("scan")->setText(field);
        QTest::keyClick(dialog.edit("scan"), Qt::Key(key));
        QTest::keyClick(&dialog, Qt::Key(key));
        QVERIFY(dialog.isVisible());
        QCOMPARE(clicked.count(), 0);
        QCOMPARE(finished.count(), 0);
    }
}

void tst_ZRScanCodePrinterDialog::closeControlEnds()
{
    TestedDialog dialog;
    const ModalDriver<ZRScanCodePrinterDialog> driver(
        [](ZRScanCodePrinterDialog &shown) { shown.close(); });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
}

void tst_ZRScanCodePrinterDialog::opensAtItsLeast()
{
    TestedDialog dialog;
    dialog.show();
    QCOMPARE(dialog.size(), QSize(500, 360));
    dialog.resize(10, 10);
    QCOMPARE(dialog.size(), QSize(500, 360));
}

void tst_ZRScanCodePrinterDialog::layout_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QSize>("size");
    for (const char *language : {"en", "cn", "none"}) {
        for (const QSize size : {QSize(500, 360), QSize(801, 633)})
            QTest::addRow("%s, %d", language, size.width()) << language << size;
    }
}

void tst_ZRScanCodePrinterDialog::layout()
{
    QFETCH(QString, language);
    QFETCH(QSize, size);
    ZRLocalize::loadLanguage(language);
    TestedDialog dialog;
    dialog.show();
    dialog.resize(size);
    QTRY_COMPARE(dialog.size(), size);

    int labelWidth = 0;
    for (const char *name : {"model", "sn", "left", "top"})
        labelWidth = qMax(labelWidth, dialog.label(name)->sizeHint().width());
    const struct {
        const char *name;
        int y, editWidth;
    } rows[] = {{"model", 75, 200}, {"sn", 105, 200}, {"left", 150, 80}, {"top", 180, 80}};
    for (const auto &row : rows) {
        QCOMPARE(dialog.label(row.name)->geometry(), QRect(20, row.y, labelWidth, 25));
        QCOMPARE(
            dialog.edit(row.name)->geometry(), QRect(25 + labelWidth, row.y, row.editWidth, 25));
    }
    QCOMPARE(dialog.label("title")->geometry(), QRect(80, 10, 440, 25));
    QCOMPARE(dialog.edit("scan")->geometry(), QRect(30, 245, 440, 50));
}

void tst_ZRScanCodePrinterDialog::layoutFollowsTheCaptions()
{
    TestedDialog dialog;
    dialog.show();
    dialog.label("title")->setText(QString(60, 'W'));
    dialog.label("left")->setText(QString(30, 'W'));
    dialog.resize(600, 400);
    const int titleWidth = dialog.label("title")->sizeHint().width();
    QVERIFY(titleWidth > 440);
    QTRY_COMPARE(dialog.label("title")->geometry(), QRect(80, 10, titleWidth, 25));
    QCOMPARE(dialog.label("left")->width(), dialog.label("left")->sizeHint().width());
    for (const char *name : {"model", "sn", "top"}) {
        QCOMPARE(dialog.label(name)->width(), dialog.label("left")->width());
        QCOMPARE(dialog.edit(name)->x(), 25 + dialog.label("left")->width());
    }
    QCOMPARE(dialog.edit("scan")->width(), 440);
}

// A code that is scanned right after opening lands nowhere else; then come the rows, top down.
void tst_ZRScanCodePrinterDialog::startsAtTheScannersField()
{
    TestedDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QStringList visited;
    for (int i = 0; i < 6; ++i) {
        visited << dialog.focusWidget()->objectName();
        QVERIFY(dialog.focusWidget()->hasFocus());
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(visited,
        QStringList({"scanEdit", "modelEdit", "snEdit", "leftEdit", "topEdit", "scanEdit"}));
}

QTEST_MAIN(tst_ZRScanCodePrinterDialog)
#include "tst_ZRScanCodePrinterDialog.moc"
