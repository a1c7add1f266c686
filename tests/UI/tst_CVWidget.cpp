#include "CVWidget.h"
#include "MetaMethods.h"

#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

class tst_CVWidget : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void texts();
    void clickTellsTheRow();
    void settingIsSilent();
    void checkBoxIsCentred_data();
    void checkBoxIsCentred();
    void labelFillsTheCell_data() { checkBoxIsCentred_data(); }
    void labelFillsTheCell();
};

void tst_CVWidget::metaObject()
{
    QCOMPARE(ownMethods(VLCheckItemWidget::staticMetaObject),
        QStringList("public signal clicked(bool,int)"));
    QCOMPARE(&CVWidget::staticMetaObject, &QWidget::staticMetaObject);
    QCOMPARE(&VLTextItemWidget::staticMetaObject, &QWidget::staticMetaObject);
}

void tst_CVWidget::texts()
{
    QCOMPARE(CVWidget(nullptr).text(), QString());

    VLCheckItemWidget check(nullptr);
    check.setChecked(true);
    QCOMPARE(check.text(), QString());

    VLTextItemWidget text(nullptr);
    QCOMPARE(text.text(), QString());
    text.setText("02:00");
    QCOMPARE(text.text(), QString("02:00"));
    const QLabel *label = text.findChild<QLabel *>("label");
    QCOMPARE(label->text(), QString("02:00"));
    QCOMPARE(label->alignment(), Qt::Alignment(Qt::AlignCenter));
}

void tst_CVWidget::clickTellsTheRow()
{
    VLCheckItemWidget cell(nullptr);
    QSignalSpy clicked(&cell, &VLCheckItemWidget::clicked);
    QCheckBox *box = cell.findChild<QCheckBox *>("checkBox");
    box->click();
    QCOMPARE(clicked.takeFirst(), QVariantList({true, -1}));
    cell.setRow(7);
    box->click();
    QCOMPARE(clicked.takeFirst(), QVariantList({false, 7}));
}

void tst_CVWidget::settingIsSilent()
{
    VLCheckItemWidget cell(nullptr);
    QSignalSpy clicked(&cell, &VLCheckItemWidget::clicked);
    cell.setChecked(true);
    QVERIFY(cell.findChild<QCheckBox *>("checkBox")->isChecked());
    QCOMPARE(clicked.count(), 0);
}

void tst_CVWidget::checkBoxIsCentred_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize &size : {QSize(30, 30), QSize(31, 44), QSize(160, 29), QSize(8, 5)})
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
}

void tst_CVWidget::checkBoxIsCentred()
{
    QFETCH(QSize, size);
    VLCheckItemWidget cell(nullptr);
    const QCheckBox *box = cell.findChild<QCheckBox *>("checkBox");
    const QSize own = box->sizeHint();
    cell.setAttribute(Qt::WA_DontShowOnScreen);
    cell.resize(size);
    cell.show();
    QCOMPARE(box->geometry(),
        QRect(QPoint((size.width() - own.width()) / 2, (size.height() - own.height()) / 2), own));
}

void tst_CVWidget::labelFillsTheCell()
{
    QFETCH(QSize, size);
    VLTextItemWidget cell(nullptr);
    cell.setAttribute(Qt::WA_DontShowOnScreen);
    cell.resize(size);
    cell.show();
    QCOMPARE(cell.findChild<QLabel *>("label")->geometry(), QRect(QPoint(0, 0), size));
}

QTEST_MAIN(tst_CVWidget)
#include "tst_CVWidget.moc"
