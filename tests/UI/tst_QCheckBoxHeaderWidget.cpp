#include "QCheckBoxHeaderWidget.h"

#include <QCheckBox>
#include <QScopedPointer>
#include <QTableWidget>
#include <QtTest>

class tst_QCheckBoxHeaderWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void boxLiesOnTheViewport();
    void boxFollowsTheFirstSection_data();
    void boxFollowsTheFirstSection();
    void otherSectionsDontMoveIt();
    void boxScrollsWithTheFirstSection();
    void boxFits();

private:
    QPoint centred(int sectionWidth) const
    {
        return {(sectionWidth - header->checkBox->width()) / 2, 5};
    }

    QScopedPointer<QTableWidget> table;
    QCheckBoxHeaderWidget *header = nullptr;
};

void tst_QCheckBoxHeaderWidget::init()
{
    table.reset(new QTableWidget);
    header = new QCheckBoxHeaderWidget(table.data());
    header->setMinimumSectionSize(10); // whatever the font
    table->setHorizontalHeader(header);
    table->setColumnCount(3);
    table->resize(500, 200);
    table->show();
    QVERIFY(QTest::qWaitForWindowExposed(table.data()));
}

void tst_QCheckBoxHeaderWidget::boxLiesOnTheViewport()
{
    QCOMPARE(header->orientation(), Qt::Horizontal);
    QVERIFY(header->sectionsClickable());
    QCOMPARE(header->checkBox->parentWidget(), header->viewport());
    QCOMPARE(header->checkBox->objectName(), QString("checkBox"));
    QCOMPARE(header->checkBox->size(), header->checkBox->sizeHint());
    QCOMPARE(header->checkBox->pos(), centred(header->sectionSize(0)));
}

void tst_QCheckBoxHeaderWidget::boxFollowsTheFirstSection_data()
{
    QTest::addColumn<int>("width");
    for (int width : {30, 81, 300})
        QTest::addRow("%d", width) << width;
}

void tst_QCheckBoxHeaderWidget::boxFollowsTheFirstSection()
{
    QFETCH(int, width);
    header->resizeSection(0, width);
    QCOMPARE(header->checkBox->pos(), centred(width));
}

void tst_QCheckBoxHeaderWidget::otherSectionsDontMoveIt()
{
    header->checkBox->move(77, 3); // wherever it is, nobody touches it
    header->resizeSection(1, 222);
    QCOMPARE(header->checkBox->pos(), QPoint(77, 3));
    header->resizeSection(0, 60);
    QCOMPARE(header->checkBox->pos(), centred(60));
}

void tst_QCheckBoxHeaderWidget::boxScrollsWithTheFirstSection()
{
    const QPoint before = header->checkBox->pos();
    header->setOffset(20);
    QCOMPARE(header->checkBox->pos(), before - QPoint(20, 0));
}

// Whatever the style and the font make of the header.
void tst_QCheckBoxHeaderWidget::boxFits()
{
    QFont small = table->font();
    small.setPixelSize(6);
    header->setFont(small);
    QTRY_COMPARE(header->height(), header->minimumHeight());
    QCOMPARE(header->height(), header->checkBox->geometry().top() * 2 + header->checkBox->height());
    QVERIFY(header->viewport()->rect().contains(header->checkBox->geometry()));
}

QTEST_MAIN(tst_QCheckBoxHeaderWidget)
#include "tst_QCheckBoxHeaderWidget.moc"
