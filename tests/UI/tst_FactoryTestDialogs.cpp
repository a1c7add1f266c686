#include "FactoryTestList.h"
#include "HeldKey.h"
#include "MetaMethods.h"
#include "ModalDriver.h"
#include "SdCardSize.h"
#include "ZRLocalize.h"

#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <future>
#include <limits>
#include <memory>

namespace {
const QString good = "color: green";
const QString bad = "color: red";
const QString untouched = "color: blue";

const char microphonePrompt[] = "Please Test Microphone";
const char temperatureQuestion[] =
    "Check if the temperature in the upper right corner of the screen matches the ambient "
    "temperature";

using DialogPointer = std::unique_ptr<FactoryDialog>;
using Report = std::function<void(FactoryDialog &)>; // calls an update slot on this thread

DialogPointer make(const QString &className)
{
    for (const FactoryTest &test : factoryTests) {
        DialogPointer dialog(test.make(nullptr));
        if (dialog->metaObject()->className() == className)
            return dialog;
    }
    qFatal("no such dialog: %s", qPrintable(className));
}

QLabel *status(const DialogPointer &dialog)
{
    return dialog->findChild<QLabel *>("statusLabel");
}

QPushButton *pass(const DialogPointer &dialog)
{
    return dialog->findChild<QPushButton *>("passButton");
}

QPushButton *fail(const DialogPointer &dialog)
{
    return dialog->findChild<QPushButton *>("failButton");
}

template <class... Argument> Report report(const char *slot, Argument... arguments)
{
    return [=](FactoryDialog &dialog) {
        if (!QMetaObject::invokeMethod(&dialog, slot, Qt::DirectConnection, arguments...))
            qFatal("no such slot: %s", slot);
    };
}

Report word(const QString &text, const char *slot = "updateStatus")
{
    return [=](FactoryDialog &dialog) { report(slot, Q_ARG(QString, text))(dialog); };
}

Report temperature(double degrees)
{
    return
        [=](FactoryDialog &dialog) { report("updateTemperature", Q_ARG(double, degrees))(dialog); };
}

Report sdCard(int total, int free)
{
    return [=](FactoryDialog &dialog) {
        report("updateSDCard", Q_ARG(int, total), Q_ARG(int, free))(dialog);
    };
}

// The events of one widget, by type and in order.
class EventList : public QObject
{
public:
    explicit EventList(QWidget *widget) { widget->installEventFilter(this); }
    QVector<QEvent::Type> types;

private:
    bool eventFilter(QObject *, QEvent *event) override
    {
        types << event->type();
        return false;
    }
};

bool hasHan(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
        [](QChar letter) { return letter.script() == QChar::Script_Han; });
}

// Every report that makes a dialog as full as it gets.
const struct {
    const char *className;
    Report report;
} fullReports[] = {
    {"FactoryBeepTestDialog", [](FactoryDialog &) {}},
    {"FactoryBreeTestDialog", word("nonsense")},
    {"FactoryConfirmDialog", report("updateImage")},
    {"FactoryCryingDetectionDialog", word("off", "updateCryingStatus")},
    {"FactoryExtTemperatureTestDialog", temperature(-1234.5)},
    {"FactoryFallTestDialog", word("on")},
    {"FactoryImageTestDialog", report("updateImage")},
    {"FactoryKeyCallTestDialog", word("on")},
    {"FactoryKeyWordTestDialog", word("on")},
    {"FactoryMicrophoneTestDialog", report("updateMicrophone")},
    {"FactoryMillimeterWaveDialog", word("no body")},
    {"FactoryPTZTestDialog", [](FactoryDialog &) {}},
    {"FactorySDCardTestDialog", sdCard(30412, 26828)},
    {"FactorySpeakerTestDialog", report("updateSpeaker")},
    {"FactoryTemperatureTestDialog", temperature(-1234.5)},
    {"FactoryWiFiTestDialog",
        [](FactoryDialog &dialog) {
            auto &wifi = static_cast<FactoryWiFiTestDialog &>(dialog);
            wifi.setInfos(-1, {});
            wifi.updateWiFi();
        }},
};
}

Q_DECLARE_METATYPE(Report)

class tst_FactoryTestDialogs : public QObject
{
    Q_OBJECT

private slots:
    void metaObject_data();
    void metaObject();
    void list();
    void atFirst_data();
    void atFirst();
    void statusRow_data();
    void statusRow();
    void fontFollowsTheStyleSheet();
    void unlistedThenListed();
    void fallHasNoText();
    void oneCryIsEnough();
    void cryingTouchesNeitherFontNorColor();
    void fixedText_data();
    void fixedText();
    void temperatureText_data();
    void temperatureText();
    void sdCardText_data();
    void sdCardText();
    void answersStayWhereNothingIsJudged_data();
    void answersStayWhereNothingIsJudged();
    void crossesThreads_data();
    void crossesThreads();
    void answers_data();
    void answers();
    void heldKeyAnswersNothing_data();
    void heldKeyAnswersNothing();
    void blindKeyAnswersNothingTooEarly();
    void lostPassLeavesNoFocusToTheOther_data();
    void lostPassLeavesNoFocusToTheOther();
    void isTranslated_data() { addLanguages(); }
    void isTranslated();
    void textsFit_data() { addLanguages(); }
    void textsFit();

private:
    static void addLanguages();
};

void tst_FactoryTestDialogs::metaObject_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("methods");
    constexpr struct {
        const char *className;
        const char *methods;
    } rows[] = {
        {"FactoryBeepTestDialog", ""},
        {"FactoryFallTestDialog", "private slot updateStatus(QString)"},
        {"FactoryBreeTestDialog", "private slot updateStatus(QString)"},
        {"FactoryConfirmDialog", "public slot updateImage()"},
        {"FactoryCryingDetectionDialog", "private slot updateCryingStatus(QString)"},
        {"FactoryExtTemperatureTestDialog", "private slot updateTemperature(double)"},
        {"FactoryImageTestDialog", "public slot updateImage()"},
        {"FactoryKeyCallTestDialog", "private slot updateStatus(QString)"},
        {"FactoryKeyWordTestDialog", "private slot updateStatus(QString)"},
        {"FactoryMicrophoneTestDialog", "public slot updateMicrophone()"},
        {"FactoryMillimeterWaveDialog", "private slot updateStatus(QString)"},
        {"FactoryPTZTestDialog", ""},
        {"FactorySDCardTestDialog", "public slot updateSDCard(int,int)"},
        {"FactorySpeakerTestDialog", "public slot updateSpeaker()"},
        {"FactoryTemperatureTestDialog", "private slot updateTemperature(double)"},
        {"FactoryWiFiTestDialog",
            "public slot setInfos(int,QVector<VorlynDeviceWiFiInfo>)|public slot updateWiFi()"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.className) << row.className << row.methods;
}

void tst_FactoryTestDialogs::metaObject()
{
    QFETCH(QString, className);
    const QMetaObject &meta = *make(className)->metaObject();
    QCOMPARE(meta.superClass(), &QDialog::staticMetaObject);
    QTEST(ownMethods(meta).join('|'), "methods");
}

void tst_FactoryTestDialogs::list()
{
    QSet<QString> classes;
    for (const FactoryTest &test : factoryTests) {
        const DialogPointer dialog(test.make(nullptr));
        classes << dialog->metaObject()->className();
        QCOMPARE(dialog->windowTitle(), QString(test.title));
        const bool needsWiFi = qobject_cast<FactoryWiFiTestDialog *>(dialog.get());
        QCOMPARE(QString(test.function), QString(needsWiFi ? "WIFI" : ""));
    }
    QCOMPARE(classes.size(), 16);
}

void tst_FactoryTestDialogs::atFirst_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("labels");
    QTest::addColumn<bool>("passes");
    constexpr struct {
        const char *className;
        const char *labels;
        bool passes;
    } rows[] = {
        {"FactoryBeepTestDialog", "promptLabel", true},
        {"FactoryBreeTestDialog", "promptLabel statusLabel", false},
        {"FactoryConfirmDialog", "statusLabel", true},
        {"FactoryCryingDetectionDialog", "statusLabel", false},
        {"FactoryExtTemperatureTestDialog", "statusLabel", true},
        {"FactoryFallTestDialog", "promptLabel", false},
        {"FactoryImageTestDialog", "statusLabel", true},
        {"FactoryKeyCallTestDialog", "promptLabel statusLabel", false},
        {"FactoryKeyWordTestDialog", "promptLabel statusLabel", false},
        {"FactoryMicrophoneTestDialog", "statusLabel", true},
        {"FactoryMillimeterWaveDialog", "promptLabel statusLabel", false},
        {"FactoryPTZTestDialog", "promptLabel", true},
        {"FactorySDCardTestDialog", "statusLabel", true},
        {"FactorySpeakerTestDialog", "statusLabel", true},
        {"FactoryTemperatureTestDialog", "statusLabel", true},
        {"FactoryWiFiTestDialog", "titleLabel", true},
    };
    for (const auto &row : rows)
        QTest::newRow(row.className) << row.className << row.labels << row.passes;
}

void tst_FactoryTestDialogs::atFirst()
{
    QFETCH(QString, className);
    const DialogPointer dialog = make(className);
    QStringList labels;
    for (const QLabel *label : dialog->findChildren<QLabel *>()) {
        labels << label->objectName();
        QVERIFY(!label->text().isEmpty());
    }
    QTEST(labels.join(' '), "labels");
    QTEST(pass(dialog)->isEnabled(), "passes");
    QCOMPARE(pass(dialog)->text(), QString("Pass"));
    QCOMPARE(fail(dialog)->text(), QString("Failure"));
    QVERIFY(fail(dialog)->isEnabled());
}

void tst_FactoryTestDialogs::statusRow_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("text"); // empty: untouched
    QTest::addColumn<QString>("styleSheet");
    QTest::addColumn<bool>("passes");
    const struct {
        const char *className;
        const char *words; // that act alike
        const char *text;
        QString styleSheet;
        bool passes;
    } rows[] = {
        {"Bree", "on|ON|On", "", untouched, true},
        {"Bree", "no body|NO BODY", "Nobody Bree", good, true},
        {"Bree", "body|Body", "Body Bree", good, true},
        {"Bree", "fall|FALL", "Fall Bree", bad, true},
        {"Bree", "off|nobody|on | on||body fall|跌倒", "Detected Failure", bad, false},
        {"KeyCall", "on|ON|On", "Detected Success", good, true},
        {"KeyCall", "off||body|no body|fall", "Detected Failure", bad, false},
        {"KeyWord", "on|ON|On", "Detected Success", good, true},
        {"KeyWord", "off||body|no body|fall", "Detected Failure", bad, false},
        {"MillimeterWave", "on|ON|On", "Detected Success", good, true},
        {"MillimeterWave", "no body|NO BODY", "Nobody Bree", good, true},
        {"MillimeterWave", "body|Body", "Body Bree", good, true},
        {"MillimeterWave", "fall|Fall|off||nobody", "Detected Failure", bad, false},
    };
    for (const auto &row : rows) {
        const QString className = QString(row.className) == "MillimeterWave"
            ? QString("FactoryMillimeterWaveDialog")
            : QString("Factory%1TestDialog").arg(row.className);
        for (const QString &word : QString(row.words).split('|'))
            QTest::newRow(qPrintable(QString("%1 \"%2\"").arg(row.className, word)))
                << className << word << QString(row.text) << row.styleSheet << row.passes;
    }
}

// The pass control starts in the other state.
void tst_FactoryTestDialogs::statusRow()
{
    QFETCH(QString, className);
    QFETCH(QString, text);
    QFETCH(QString, styleSheet);
    QFETCH(bool, passes);
    QFETCH(QString, status);
    const DialogPointer dialog = make(className);
    const QLabel *prompt = dialog->findChild<QLabel *>("promptLabel");
    const QString promptText = prompt->text();
    const QFont before("Courier", 9, QFont::Bold, true);
    QLabel *label = ::status(dialog);
    label->setText("as it was");
    label->setStyleSheet(untouched);
    label->setFont(before);
    pass(dialog)->setEnabled(!passes);

    word(status)(*dialog);
    QCOMPARE(label->text(), text.isEmpty() ? "as it was" : text);
    QCOMPARE(label->styleSheet(), styleSheet);
    QCOMPARE(pass(dialog)->isEnabled(), passes);
    const QFont font = label->font();
    if (text.isEmpty()) {
        QCOMPARE(font.family(), before.family());
        QCOMPARE(font.pointSize(), 9);
        QVERIFY(font.bold() && font.italic());
    } else {
        QCOMPARE(font.family(), QString("Arial"));
        QCOMPARE(font.pointSize(), 18);
        QCOMPARE(font.weight(), int(QFont::Normal));
        QVERIFY(!font.italic());
    }
    QCOMPARE(prompt->text(), promptText);
}

void tst_FactoryTestDialogs::fontFollowsTheStyleSheet()
{
    const DialogPointer dialog = make("FactoryBreeTestDialog");
    dialog->ensurePolished();
    status(dialog)->ensurePolished();
    const EventList events(status(dialog));
    word("body")(*dialog);
    QVERIFY(events.types.contains(QEvent::StyleChange));
    QVERIFY(events.types.lastIndexOf(QEvent::FontChange)
        > events.types.lastIndexOf(QEvent::StyleChange));
}

void tst_FactoryTestDialogs::unlistedThenListed()
{
    const DialogPointer dialog = make("FactoryBreeTestDialog");
    word("on")(*dialog);
    QVERIFY(pass(dialog)->isEnabled());
    word("gone")(*dialog);
    QVERIFY(!pass(dialog)->isEnabled());
    QCOMPARE(status(dialog)->text(), QString("Detected Failure"));
    word("on")(*dialog); // keeps what is shown
    QVERIFY(pass(dialog)->isEnabled());
    QCOMPARE(status(dialog)->text(), QString("Detected Failure"));
    QCOMPARE(status(dialog)->styleSheet(), bad);
    word("gone")(*dialog);
    word("body")(*dialog);
    QVERIFY(pass(dialog)->isEnabled());
    QCOMPARE(status(dialog)->text(), QString("Body Bree"));
}

void tst_FactoryTestDialogs::fallHasNoText()
{
    const DialogPointer dialog = make("FactoryFallTestDialog");
    const QString prompt = dialog->findChild<QLabel *>("promptLabel")->text();
    QCOMPARE(dialog->findChildren<QLabel *>().size(), 1);
    const QVector<QPair<const char *, bool>> reports = {{"on", true}, {"fall", false}, {"ON", true},
        {"off", false}, {"On", true}, {"", false}, {"on ", false}};
    for (const auto &report : reports) {
        word(report.first)(*dialog);
        QCOMPARE(pass(dialog)->isEnabled(), report.second);
        QCOMPARE(dialog->findChild<QLabel *>("promptLabel")->text(), prompt);
    }
}

void tst_FactoryTestDialogs::oneCryIsEnough()
{
    const DialogPointer dialog = make("FactoryCryingDetectionDialog");
    const auto expect = [&dialog](const char *status, const char *text, bool passes) {
        word(status, "updateCryingStatus")(*dialog);
        QCOMPARE(::status(dialog)->text(), QString(text));
        QCOMPARE(pass(dialog)->isEnabled(), passes);
    };
    expect("off", "No Crying is Detected", false);
    expect("oN", "Crying is Detected", true);
    expect("off", "No Crying is Detected", true);
    expect("nonsense", "No Crying is Detected", true);
    expect("", "No Crying is Detected", true);
    expect("ON", "Crying is Detected", true);
}

void tst_FactoryTestDialogs::cryingTouchesNeitherFontNorColor()
{
    const DialogPointer dialog = make("FactoryCryingDetectionDialog");
    status(dialog)->setFont(QFont("Courier", 9, QFont::Bold, true));
    const QFont font = status(dialog)->font();
    for (const char *report : {"on", "off"}) {
        word(report, "updateCryingStatus")(*dialog);
        QCOMPARE(status(dialog)->font(), font);
        QCOMPARE(status(dialog)->styleSheet(), QString());
    }
}

void tst_FactoryTestDialogs::fixedText_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<Report>("report");
    QTest::addColumn<QString>("text");
    QTest::newRow("speaker") << "FactorySpeakerTestDialog" << report("updateSpeaker")
                             << "Please Test Speaker";
    QTest::newRow("microphone") << "FactoryMicrophoneTestDialog" << report("updateMicrophone")
                                << microphonePrompt;
    // The words for the microphone here too.
    QTest::newRow("image") << "FactoryImageTestDialog" << report("updateImage") << microphonePrompt;
    QTest::newRow("confirm") << "FactoryConfirmDialog" << report("updateImage") << microphonePrompt;
}

void tst_FactoryTestDialogs::fixedText()
{
    QFETCH(QString, className);
    QFETCH(Report, report);
    const DialogPointer dialog = make(className);
    for (int times = 0; times < 2; ++times) {
        report(*dialog);
        QTEST(status(dialog)->text(), "text");
    }
    QCOMPARE(status(dialog)->styleSheet(), QString());
}

void tst_FactoryTestDialogs::temperatureText_data()
{
    QTest::addColumn<double>("temperature");
    QTest::addColumn<QString>("number");
    QTest::newRow("rounded") << 36.456 << "36.46";
    QTest::newRow("filled") << 36.0 << "36.00";
    QTest::newRow("zero") << 0.0 << "0.00";
    QTest::newRow("negative") << -5.126 << "-5.13";
    QTest::newRow("nearly zero") << -0.001 << "-0.00";
    QTest::newRow("large") << 1234567.0 << "1234567.00";
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << "nan";
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << "inf";
}

void tst_FactoryTestDialogs::temperatureText()
{
    QFETCH(double, temperature);
    QFETCH(QString, number);
    const QString line = "Current Temperature " + number;
    const DialogPointer external = make("FactoryExtTemperatureTestDialog");
    ::temperature(temperature)(*external);
    QCOMPARE(status(external)->text(), line);

    const DialogPointer dialog = make("FactoryTemperatureTestDialog");
    ::temperature(temperature)(*dialog);
    QCOMPARE(status(dialog)->text(), QString("%1\n%2").arg(temperatureQuestion, line));
}

void tst_FactoryTestDialogs::sdCardText_data()
{
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("free");
    QTest::addColumn<QString>("text");
    QTest::newRow("six digits") << 30412 << 26828 << "3.5 / 29.6992(GB)";
    QTest::newRow("round") << 2048 << 1024 << "1 / 2(GB)";
    QTest::newRow("empty card") << 1024 << 1024 << "0 / 1(GB)";
    QTest::newRow("small") << 3 << 0 << "0.00292969 / 0.00292969(GB)";
    QTest::newRow("no card") << 0 << 0 << "0 / 0(GB)";
    QTest::newRow("more free than there is") << 1024 << 2048 << "-1 / 1(GB)";
    QTest::newRow("largest") << INT_MAX << 0 << "2.09715e+06 / 2.09715e+06(GB)";
    QTest::newRow("widest") << INT_MAX << INT_MIN << "4.1943e+06 / 2.09715e+06(GB)";
}

void tst_FactoryTestDialogs::sdCardText()
{
    QFETCH(int, total);
    QFETCH(int, free);
    QFETCH(QString, text);
    QCOMPARE(sdCardSizeText(total, free), text);
    const DialogPointer dialog = make("FactorySDCardTestDialog");
    sdCard(total, free)(*dialog);
    QCOMPARE(status(dialog)->text(), "Test SDCard " + text);
}

void tst_FactoryTestDialogs::answersStayWhereNothingIsJudged_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<Report>("report");
    for (const auto &row : fullReports) {
        if (make(row.className)->findChild<QPushButton *>("passButton")->isEnabled())
            QTest::newRow(row.className) << row.className << row.report;
    }
}

void tst_FactoryTestDialogs::answersStayWhereNothingIsJudged()
{
    QFETCH(QString, className);
    QFETCH(Report, report);
    const DialogPointer dialog = make(className);
    report(*dialog);
    QVERIFY(pass(dialog)->isEnabled());
    QVERIFY(fail(dialog)->isEnabled());
}

void tst_FactoryTestDialogs::crossesThreads_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<Report>("report");
    for (const auto &row : fullReports) {
        if (!ownMethods(*make(row.className)->metaObject()).isEmpty())
            QTest::newRow(row.className) << row.className << row.report;
    }
}

// The GUI thread stands still until the caller is back.
void tst_FactoryTestDialogs::crossesThreads()
{
    QFETCH(QString, className);
    QFETCH(Report, report);
    const DialogPointer expected = make(className);
    report(*expected);
    const DialogPointer dialog = make(className);
    const auto shown = [](const DialogPointer &dialog) {
        QStringList texts;
        for (const QLabel *label : dialog->findChildren<QLabel *>())
            texts << label->text();
        return qMakePair(texts, pass(dialog)->isEnabled());
    };
    const auto before = shown(dialog);
    QVERIFY(before != shown(expected));

    std::future<void> call =
        std::async(std::launch::async, [&dialog, &report] { report(*dialog); });
    if (call.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
        QTRY_VERIFY(call.wait_for(std::chrono::seconds(0)) == std::future_status::ready);
        QFAIL("the caller had to wait");
    }
    QCOMPARE(shown(dialog), before);
    QTRY_COMPARE(shown(dialog), shown(expected));
}

void tst_FactoryTestDialogs::answers_data()
{
    using Act = Report;
    QTest::addColumn<Act>("act");
    QTest::addColumn<int>("result"); // -1: still open
    const auto key = [](Qt::Key key) -> Act {
        return [key](FactoryDialog &dialog) { QTest::keyClick(dialog.focusWidget(), key); };
    };
    const auto click = [](const char *name) -> Act {
        return [name](FactoryDialog &dialog) {
            QTest::mouseClick(dialog.findChild<QPushButton *>(name), Qt::LeftButton);
        };
    };
    const auto press = [](const char *name, Qt::Key key) -> Act {
        return [name, key](FactoryDialog &dialog) {
            auto *button = dialog.findChild<QPushButton *>(name);
            button->setFocus(Qt::TabFocusReason);
            QTest::keyClick(button, key);
        };
    };
    QTest::newRow("click on pass") << click("passButton") << int(QDialog::Accepted);
    QTest::newRow("click on fail") << click("failButton") << int(QDialog::Rejected);
    QTest::newRow("Enter") << key(Qt::Key_Return) << int(QDialog::Accepted);
    QTest::newRow("Esc") << key(Qt::Key_Escape) << int(QDialog::Rejected);
    QTest::newRow("Space on pass") << press("passButton", Qt::Key_Space) << int(QDialog::Accepted);
    QTest::newRow("Space on fail") << press("failButton", Qt::Key_Space) << int(QDialog::Rejected);
    QTest::newRow("Enter on fail") << press("failButton", Qt::Key_Return) << int(QDialog::Rejected);
    QTest::newRow("closing") << Act([](FactoryDialog &dialog) { dialog.close(); })
                             << int(QDialog::Rejected);
}

void tst_FactoryTestDialogs::answers()
{
    QFETCH(Report, act);
    for (const FactoryTest &test : factoryTests) {
        const DialogPointer dialog(test.make(nullptr));
        pass(dialog)->setEnabled(true);
        ModalDriver<FactoryDialog> driver([&act](FactoryDialog &dialog) {
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            QVERIFY(dialog.isModal());
            act(dialog);
        });
        QTEST(dialog->exec(), "result");
    }
}

void tst_FactoryTestDialogs::heldKeyAnswersNothing_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("Return") << int(Qt::Key_Return) << Qt::KeyboardModifiers(Qt::NoModifier);
    QTest::newRow("Enter") << int(Qt::Key_Enter) << Qt::KeyboardModifiers(Qt::KeypadModifier);
    QTest::newRow("Esc") << int(Qt::Key_Escape) << Qt::KeyboardModifiers(Qt::NoModifier);
}

// Wherever the focus is: a key that repeats itself is still down from what came before. The same
// key pressed anew answers.
void tst_FactoryTestDialogs::heldKeyAnswersNothing()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    for (const FactoryTest &test : factoryTests) {
        const DialogPointer dialog(test.make(nullptr));
        pass(dialog)->setEnabled(true);
        dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
        QList<QWidget *> places = {dialog.get()};
        for (QWidget *child : dialog->findChildren<QWidget *>()) {
            if (child->focusPolicy() != Qt::NoFocus && child->isVisible())
                places << child;
        }
        QVERIFY(places.size() >= 3); // with both answers
        for (QWidget *place : qAsConst(places)) {
            place->setFocus(Qt::TabFocusReason);
            holdKey(place, key, modifiers);
            QVERIFY2(dialog->isVisible(), qPrintable(place->objectName()));
        }
        dialog->setFocus();
        QTest::keyPress(dialog.get(), Qt::Key(key), modifiers);
        QVERIFY(!dialog->isVisible());
        QCOMPARE(
            dialog->result(), int(key == Qt::Key_Escape ? QDialog::Rejected : QDialog::Accepted));
    }
}

// Neither a space answers at first, nor Return before the test may pass.
void tst_FactoryTestDialogs::blindKeyAnswersNothingTooEarly()
{
    for (const FactoryTest &test : factoryTests) {
        const DialogPointer dialog(test.make(nullptr));
        const bool passes = pass(dialog)->isEnabled();
        dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
        QCOMPARE(dialog->focusWidget(), dialog.get());
        QTest::keyClick(dialog.get(), Qt::Key_Space);
        QVERIFY(dialog->isVisible());
        QTest::keyClick(dialog.get(), Qt::Key_Return);
        QCOMPARE(dialog->isVisible(), !passes);
    }
}

void tst_FactoryTestDialogs::lostPassLeavesNoFocusToTheOther_data()
{
    QTest::addColumn<bool>("active");
    QTest::newRow("active window") << true;
    QTest::newRow("another window is active") << false;
}

void tst_FactoryTestDialogs::lostPassLeavesNoFocusToTheOther()
{
    QFETCH(bool, active);
    const DialogPointer dialog = make("FactoryBreeTestDialog");
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    word("on")(*dialog);
    pass(dialog)->setFocus();
    QVERIFY(pass(dialog)->hasFocus());
    QWidget other;
    if (!active) {
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QVERIFY(!pass(dialog)->hasFocus());
    }
    word("gone")(*dialog);
    QCOMPARE(dialog->focusWidget(), dialog.get());
    dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    QVERIFY(!fail(dialog)->hasFocus());
    QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    QVERIFY(dialog->isVisible());
}

void tst_FactoryTestDialogs::addLanguages()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << "en";
    QTest::newRow("Chinese") << "cn";
}

// Whatever a dialog shows, at first and after a report, comes from the language file.
void tst_FactoryTestDialogs::isTranslated()
{
    QFETCH(QString, language);
    for (const auto &row : fullReports) {
        const DialogPointer keys = make(row.className);
        row.report(*keys);
        ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
        QVERIFY(ZRLocalize::loadLanguage(language));
        const DialogPointer dialog = make(row.className);
        QStringList texts{dialog->windowTitle(), pass(dialog)->text(), fail(dialog)->text()};
        for (const bool reported : {false, true}) {
            if (reported)
                row.report(*dialog);
            for (const QLabel *label : dialog->findChildren<QLabel *>())
                texts << label->text();
        }
        const QString caption = ZRLocalize::translate(keys->windowTitle());
        ZRLocalize::loadLanguage("none");
        QCOMPARE(dialog->windowTitle(), caption);
        for (const QString &text : texts)
            QVERIFY2(hasHan(text) == (language == "cn"), qPrintable(text));
        QVERIFY(dialog->windowTitle() != keys->windowTitle());
    }
}

// In the smallest dialog; and no button is narrower than its caption.
void tst_FactoryTestDialogs::textsFit()
{
    QFETCH(QString, language);
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage(language));
    for (const auto &row : fullReports) {
        const DialogPointer dialog = make(row.className);
        row.report(*dialog);
        dialog->resize(dialog->minimumSize());
        dialog->show();
        for (const QLabel *label : dialog->findChildren<QLabel *>()) {
            const QRect text = label->fontMetrics().boundingRect(
                label->contentsRect(), Qt::AlignCenter | Qt::TextWordWrap, label->text());
            QVERIFY2(label->contentsRect().contains(text), row.className);
        }
        for (const QPushButton *button : {pass(dialog), fail(dialog)})
            QVERIFY(button->width() >= button->sizeHint().width());
    }
    ZRLocalize::loadLanguage("none");
}

QTEST_MAIN(tst_FactoryTestDialogs)
#include "tst_FactoryTestDialogs.moc"
