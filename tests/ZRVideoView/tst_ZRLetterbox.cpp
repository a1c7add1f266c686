#include "ZRLetterbox.h"

#include <QtTest>

class tst_ZRLetterbox : public QObject
{
    Q_OBJECT

private slots:
    void layout_data();
    void layout();
};

void tst_ZRLetterbox::layout_data()
{
    QTest::addColumn<QSize>("video");
    QTest::addColumn<QSize>("view");
    QTest::addColumn<QRect>("area");

    struct Row {
        const char *name;
        QSize video, view;
        QRect area;
    };
    const Row rows[] = {
        {"wider than the view", {1920, 1080}, {800, 600}, {0, 75, 800, 450}},
        {"narrower than the view", {640, 480}, {1000, 500}, {167, 0, 666, 500}},
        {"same proportions", {1920, 1080}, {960, 540}, {0, 0, 960, 540}},
        {"same proportions, larger", {320, 240}, {640, 480}, {0, 0, 640, 480}},
        {"upright", {1080, 1920}, {600, 600}, {131, 0, 337, 600}},
        {"height rounded down", {1280, 720}, {1101, 700}, {0, 40, 1101, 619}},
        {"one pixel", {1, 1}, {7, 4}, {1, 0, 4, 4}},
        {"so flat that nothing is left", {10000, 1}, {100, 100}, {0, 50, 100, 0}},
        {"no video width", {0, 480}, {100, 50}, {0, 0, 100, 50}},
        {"no video height", {640, 0}, {100, 50}, {0, 0, 100, 50}},
        {"no view width", {640, 480}, {0, 50}, {0, 0, 0, 50}},
        {"no view height", {640, 480}, {100, 0}, {0, 0, 100, 0}},
        {"products beyond 32 bits", {65536, 65536}, {40000, 50000}, {0, 5000, 40000, 40000}},
    };
    for (const Row &row : rows) {
        QTest::newRow(row.name) << row.video << row.view << row.area;
    }
}

void tst_ZRLetterbox::layout()
{
    QFETCH(const QSize, video);
    QFETCH(const QSize, view);
    QTEST(zrLetterbox(video, view), "area");
}

QTEST_APPLESS_MAIN(tst_ZRLetterbox)
#include "tst_ZRLetterbox.moc"
