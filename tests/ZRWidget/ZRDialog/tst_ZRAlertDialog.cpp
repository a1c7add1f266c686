#include "ZRAlertDialog.h"

#include "ModalDriver.h"
#include "ZRLocalize.h"

#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class tst_ZRAlertDialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void addsNoMetaObject();
    void atFirst();
    void geometry_data();
    void geometry();
    void resultOfRoad_data();
    void resultOfRoad();
    void emptyMessage();
    void sizeFollowsMessage_data();
    void sizeFollowsMessage();
    void defaultTextsAreTranslated();
    void givenTexts();
    void firstButtonsWidthServesBoth();
};

namespace {
template <class Widget> Widget *child(const ZRAlertDialog &dialog, const char *name)
{
    return dialog.findChild<Widget *>(name);
}

using Road = std::function<void(ZRAlertDialog &)>;

Road click(const char *name)
{
    return [name](ZRAlertDialog &dialog) { child<QPushButton>(dialog, name)->click(); };
}

const Road pressEsc = [](ZRAlertDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); };
}
Q_DECLARE_METATYPE(Road)

void tst_ZRAlertDialog::cleanup()
{
    ZRLocalize::setLanguageFolder(QString());
    ZRLocalize::loadLanguage("none");
}

void tst_ZRAlertDialog::addsNoMetaObject()
{
    QCOMPARE(ZRAlertDialog(nullptr).metaObject(), &QDialog::staticMetaObject);
}

void tst_ZRAlertDialog::atFirst()
{
    const ZRAlertDialog dialog(nullptr);
    QCOMPARE(dialog.minimumSize(), QSize(300, 90));
    QCOMPARE(child<QLabel>(dialog, "messageLabel")->alignment(), Qt::AlignCenter);
    QCOMPARE(child<QPushButton>(dialog, "okButton")->text(), QStringLiteral("Ok"));
    QCOMPARE(child<QPushButton>(dialog, "cancelButton")->text(), QStringLiteral("Cancel"));
    for (const char *name : {"okButton", "cancelButton"}) {
        QCOMPARE(child<QPushButton>(dialog, name)->minimumWidth(), 100);
        QCOMPARE(child<QPushButton>(dialog, name)->width(), 100);
    }
}

void tst_ZRAlertDialog::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QRect>("expected");
    const struct {
        QSize size;
        QRect ok, cancel, message;
    } rows[] = {
        {{300, 140}, {25, 80, 100, 30}, {175, 80, 100, 30}, {20, 10, 260, 70}},
        {{401, 223}, {50, 163, 100, 30}, {250, 163, 100, 30}, {20, 10, 361, 153}},
    };
    for (const auto &row : rows) {
        QTest::addRow("ok, %d", row.size.width()) << row.size << "okButton" << row.ok;
        QTest::addRow("cancel, %d", row.size.width()) << row.size << "cancelButton" << row.cancel;
        QTest::addRow("message, %d", row.size.width()) << row.size << "messageLabel" << row.message;
    }
}

void tst_ZRAlertDialog::geometry()
{
    QFETCH(QSize, size);
    QFETCH(QString, name);
    QFETCH(QRect, expected);
    ZRAlertDialog dialog(nullptr);
    dialog.resize(size);
    dialog.show();
    QCOMPARE(dialog.findChild<QWidget *>(name)->geometry(), expected);
}

void tst_ZRAlertDialog::resultOfRoad_data()
{
    QTest::addColumn<Road>("road");
    QTest::addColumn<int>("expected");
    QTest::newRow("first button") << click("okButton") << 1;
    QTest::newRow("second button") << click("cancelButton") << 0;
    QTest::newRow("closing") << Road([](ZRAlertDialog &d) { d.close(); }) << 0;
    QTest::newRow("Esc") << pressEsc << 0;
}

void tst_ZRAlertDialog::resultOfRoad()
{
    QFETCH(Road, road);
    QFETCH(int, expected);
    {
        ModalDriver<ZRAlertDialog> driver([&](ZRAlertDialog &dialog) {
            QVERIFY(dialog.isModal());
            QVERIFY(!dialog.parentWidget());
            road(dialog);
        });
        QCOMPARE(ZRAlertDialog::alert("Sure?"), expected);
    }
    ModalDriver<ZRAlertDialog> driver(road);
    QCOMPARE(ZRAlertDialog::alert("Sure?", "Yes", "No"), expected);
}

void tst_ZRAlertDialog::emptyMessage()
{
    ModalDriver<ZRAlertDialog> driver([](ZRAlertDialog &dialog) {
        QCOMPARE(dialog.size(), QSize(300, 140));
        dialog.accept();
    });
    ZRAlertDialog::alert(QString());
}

void tst_ZRAlertDialog::sizeFollowsMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("wide")
        << QString("Check if the temperature matches the ambient one. ").repeated(3);
    QTest::newRow("high") << QString("line\n").repeated(12);
    QTest::newRow("short") << "Restore?";
}

void tst_ZRAlertDialog::sizeFollowsMessage()
{
    QFETCH(QString, message);
    QLabel reference(message);
    reference.adjustSize();
    const QSize expected(qMax(reference.width(), 200) + 100, qMax(reference.height(), 40) + 100);

    ModalDriver<ZRAlertDialog> driver([&](ZRAlertDialog &dialog) {
        QCOMPARE(child<QLabel>(dialog, "messageLabel")->text(), message);
        QCOMPARE(dialog.size(), expected);
        dialog.accept();
    });
    ZRAlertDialog::alert(message);
}

void tst_ZRAlertDialog::defaultTextsAreTranslated()
{
    QTemporaryDir folder;
    QFile file(folder.filePath("xx.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("ok=Gut\ncancel=Weg\nSure?=Sicher?\n");
    file.close();
    ZRLocalize::setLanguageFolder(folder.path());
    QVERIFY(ZRLocalize::loadLanguage("xx"));

    ModalDriver<ZRAlertDialog> driver([](ZRAlertDialog &dialog) {
        QCOMPARE(child<QPushButton>(dialog, "okButton")->text(), QStringLiteral("Gut"));
        QCOMPARE(child<QPushButton>(dialog, "cancelButton")->text(), QStringLiteral("Weg"));
        // Messages come translated, and aren't looked up again.
        QCOMPARE(child<QLabel>(dialog, "messageLabel")->text(), QStringLiteral("Sure?"));
        dialog.accept();
    });
    ZRAlertDialog::alert("Sure?");
}

void tst_ZRAlertDialog::givenTexts()
{
    ModalDriver<ZRAlertDialog> driver([](ZRAlertDialog &dialog) {
        QCOMPARE(child<QPushButton>(dialog, "okButton")->text(), QStringLiteral("Pass"));
        QCOMPARE(child<QPushButton>(dialog, "cancelButton")->text(), QStringLiteral("Failure"));
        dialog.accept();
    });
    ZRAlertDialog::alert("Test Speaker Result", "Pass", "Failure");
}

void tst_ZRAlertDialog::firstButtonsWidthServesBoth()
{
    const QString text(40, 'W');
    QPushButton reference(text);
    reference.adjustSize();
    QVERIFY(reference.width() > 100);
    {
        ModalDriver<ZRAlertDialog> driver([&](ZRAlertDialog &dialog) {
            QCOMPARE(child<QPushButton>(dialog, "okButton")->width(), 100);
            QCOMPARE(child<QPushButton>(dialog, "cancelButton")->width(), 100);
            dialog.accept();
        });
        ZRAlertDialog::alert("message", "Pass", text);
    }
    ModalDriver<ZRAlertDialog> driver([&](ZRAlertDialog &dialog) {
        QCOMPARE(child<QPushButton>(dialog, "okButton")->width(), reference.width());
        QCOMPARE(child<QPushButton>(dialog, "cancelButton")->width(), reference.width());
        dialog.accept();
    });
    ZRAlertDialog::alert("message", text, "Failure");
}

QTEST_MAIN(tst_ZRAlertDialog)
#include "tst_ZRAlertDialog.moc"
