#include "MediaButton.h"
#include "Painting.h"
#include "WindowHeaderWidget.h"

#include <QtTest>

using Texts = QVector<QPair<QString, QString>>; // tool tip and label of each button

class tst_WindowHeaderWidget : public QObject
{
    Q_OBJECT

private slots:
    void init() { loadLanguage("none"); }
    void buttons();
    void look();
    void icons();
    void followsTheLanguage();
    void layout_data();
    void layout();

private:
    void loadLanguage(const QString &name)
    {
        ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
        ZRLocalize::switchLanguage(name);
    }
    static QVector<MediaButton *> buttonsOf(const WindowHeaderWidget &header)
    {
        return {header.networkButton, header.searchButton, header.settingsButton,
            header.printerButton, header.scanCodeButton};
    }
    static Texts textsOf(const WindowHeaderWidget &header)
    {
        Texts texts;
        for (const MediaButton *button : buttonsOf(header))
            texts.append({button->toolTip(), button->text()});
        return texts;
    }
};

static const Texts keys = {{"Select Network", "Network"}, {"Search Devices", "Search"},
    {"Settings", "Settings"}, {"Printer Settings", "Printer Settings"}, {"Scan Code", "Scan Code"}};

void tst_WindowHeaderWidget::buttons()
{
    const WindowHeaderWidget header(nullptr);
    QCOMPARE(textsOf(header), keys);
    QStringList names;
    for (const MediaButton *button : buttonsOf(header)) {
        QCOMPARE(button->parentWidget(), &header);
        names << button->objectName();
    }
    QCOMPARE(names,
        QStringList({"networkButton", "searchButton", "settingsButton", "printerButton",
            "scanCodeButton"}));
}

void tst_WindowHeaderWidget::look()
{
    WindowHeaderWidget header(nullptr);
    QCOMPARE(header.minimumHeight(), 20);
    header.resize(700, 26);
    const QImage image = painted(header);
    QCOMPARE(image.pixel(690, 24), qRgba(255, 255, 255, 255));
    QCOMPARE(image.pixel(0, 0), qRgba(255, 255, 255, 255));
}

// Each button paints its own image, 20 pixels wide.
void tst_WindowHeaderWidget::icons()
{
    const WindowHeaderWidget header(nullptr);
    const QStringList names = {"network", "search", "settings", "printer", "print"};
    for (int i = 0; i < names.size(); ++i) {
        auto *icon = buttonsOf(header)[i]->findChild<QWidget *>("icon");
        const QPixmap file(":/resources/" + names[i] + ".png");
        QVERIFY2(!file.isNull(), qPrintable(names[i]));
        const QPixmap scaled = file.scaledToWidth(20, Qt::SmoothTransformation);
        QCOMPARE(icon->sizeHint().width(), 20);
        icon->resize(scaled.size());
        QCOMPARE(
            painted(*icon), scaled.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }
}

void tst_WindowHeaderWidget::followsTheLanguage()
{
    const WindowHeaderWidget header(nullptr);
    for (const char *language : {"cn", "en"}) {
        const Texts before = textsOf(header);
        loadLanguage(language);
        Texts expected;
        for (const auto &key : keys)
            expected.append({ZRLocalize::translate(key.first), ZRLocalize::translate(key.second)});
        QVERIFY(expected != before);
        QCOMPARE(textsOf(header), expected);
    }
}

void tst_WindowHeaderWidget::layout_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "cn"}) {
        for (const QSize &size : {QSize(796, 26), QSize(1596, 40)})
            QTest::addRow("%d x %d %s", size.width(), size.height(), language)
                << size << QString(language);
    }
}

void tst_WindowHeaderWidget::layout()
{
    QFETCH(QSize, size);
    QFETCH(QString, language);
    WindowHeaderWidget header(nullptr);
    loadLanguage(language); // lays out without a change of size
    for (int pass = 0; pass < 2; ++pass) {
        int x = 3;
        for (const MediaButton *button : buttonsOf(header)) {
            const int width = button->sizeHint().width();
            QCOMPARE(button->geometry(), QRect(x, 0, width, 24));
            x = button->geometry().right() + 3;
        }
        header.setAttribute(Qt::WA_DontShowOnScreen);
        header.resize(size);
        header.show();
    }
}

QTEST_MAIN(tst_WindowHeaderWidget)
#include "tst_WindowHeaderWidget.moc"
