#pragma once

#include "Painting.h"
#include "ZRLabel.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QtTest>

// What a toast does, the same over every class that can show one.
namespace ToastChecks {

inline ZRLabel *toastOf(const QWidget &host)
{
    return host.findChild<ZRLabel *>("toast");
}

enum Place { Margin, Centre, Opposite };

inline void placementRows()
{
    QTest::addColumn<Qt::Alignment>("alignment");
    QTest::addColumn<int>("horizontal");
    QTest::addColumn<int>("vertical");

    struct Flag {
        const char *name;
        Qt::Alignment flags;
        Place place;
    };
    const Flag columns[] = {{"none", {}, Margin}, {"left", Qt::AlignLeft, Margin},
        {"centre", Qt::AlignHCenter, Centre}, {"right", Qt::AlignRight, Opposite},
        {"left before centre", Qt::AlignLeft | Qt::AlignHCenter, Margin},
        {"left before right", Qt::AlignLeft | Qt::AlignRight, Margin},
        {"centre before right", Qt::AlignHCenter | Qt::AlignRight, Centre},
        {"left before both", Qt::AlignLeft | Qt::AlignHCenter | Qt::AlignRight, Margin}};
    const Flag rows[] = {{"none", {}, Margin}, {"top", Qt::AlignTop, Margin},
        {"centre", Qt::AlignVCenter, Centre}, {"bottom", Qt::AlignBottom, Opposite},
        {"top before centre", Qt::AlignTop | Qt::AlignVCenter, Margin},
        {"top before bottom", Qt::AlignTop | Qt::AlignBottom, Margin},
        {"centre before bottom", Qt::AlignVCenter | Qt::AlignBottom, Centre},
        {"top before both", Qt::AlignTop | Qt::AlignVCenter | Qt::AlignBottom, Margin}};
    for (const Flag &column : columns) {
        for (const Flag &row : rows)
            QTest::addRow("%s, %s", column.name, row.name)
                << (column.flags | row.flags) << int(column.place) << int(row.place);
    }
}

inline int coordinate(int place, int margin, int outer, int inner)
{
    switch (place) {
    case Centre:
        return (outer - inner) / 2;
    case Opposite:
        return outer - margin - inner;
    default:
        return margin;
    }
}

template <class Host> void placement()
{
    QFETCH(Qt::Alignment, alignment);
    QFETCH(int, horizontal);
    QFETCH(int, vertical);
    Host host(nullptr);
    for (const QSize &size : {QSize(300, 200), QSize(411, 133)}) {
        host.resize(size);
        host.showToast(QStringLiteral("message"), alignment, 13, 29);
        const ZRLabel *toast = toastOf(host);
        QVERIFY(toast);
        QCOMPARE(toast->size(), toast->sizeHint());
        QCOMPARE(toast->pos(),
            QPoint(coordinate(horizontal, 13, size.width(), toast->width()),
                coordinate(vertical, 29, size.height(), toast->height())));
    }
}

template <class Host> void look()
{
    Host host(nullptr);
    host.resize(300, 200);
    host.showToast(QStringLiteral("\u2588\u2588"), Qt::AlignCenter, 5, 5);
    ZRLabel *toast = toastOf(host);
    QCOMPARE(toast->text(), QStringLiteral("\u2588\u2588"));
    QVERIFY(!toast->isHidden());
    const QSize text = QFontMetrics(toast->font()).size(Qt::AlignCenter, toast->text());
    QCOMPARE(toast->size(), text + QSize(20, 20));

    const QImage image = painted(*toast);
    QCOMPARE(image.pixelColor(0, 0), QColor(0, 0, 0, 0)); // outside the rounded corner
    QCOMPARE(image.pixelColor(5, image.height() / 2), QColor(0, 0, 0, 64));
    QCOMPARE(image.pixelColor(image.rect().center()), QColor(255, 255, 255));
}

template <class Host> void secondReplacesFirst()
{
    Host host(nullptr);
    host.showToast(QStringLiteral("first"), {}, 5, 5);
    const QPointer<ZRLabel> first = toastOf(host);
    host.showToast(QStringLiteral("second"), {}, 5, 5);
    QVERIFY(first.isNull());
    QCOMPARE(host.template findChildren<ZRLabel *>("toast").size(), 1);
    QCOMPARE(toastOf(host)->text(), QStringLiteral("second"));
}

template <class Host> void hides()
{
    Host host(nullptr);
    host.hideToast(); // nothing to hide
    host.showToast(QStringLiteral("message"), {}, 5, 5);
    const QPointer<ZRLabel> toast = toastOf(host);
    host.hideToast();
    QVERIFY(toast.isNull());
    QVERIFY(!toastOf(host));
    host.hideToast();
}

// Times are compared with those of timers of the same event loop, whose order holds however late
// the loop runs. A coarse timer of 2000 ms ends within a twentieth of that.
template <class Host> void livesTwoSeconds()
{
    Host host(nullptr);
    host.showToast(QStringLiteral("message"), {}, 5, 5);
    QPointer<ZRLabel> toast = toastOf(host);
    bool before = false;
    bool after = true;
    bool over = false;
    QTimer::singleShot(1850, Qt::PreciseTimer, &host, [&] { before = toast; });
    QTimer::singleShot(2200, Qt::PreciseTimer, &host, [&] {
        after = toast;
        over = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(over, 30000);
    QVERIFY(before);
    QVERIFY(!after);
}

template <class Host> void earlierTimerCutsSecondShort()
{
    Host host(nullptr);
    host.showToast(QStringLiteral("first"), {}, 5, 5);
    bool before = false;
    bool after = true;
    bool over = false;
    QTimer::singleShot(
        1500, Qt::PreciseTimer, &host, [&] { host.showToast(QStringLiteral("second"), {}, 5, 5); });
    QTimer::singleShot(1850, Qt::PreciseTimer, &host,
        [&] { before = toastOf(host) && toastOf(host)->text() == QStringLiteral("second"); });
    QTimer::singleShot(2300, Qt::PreciseTimer, &host, [&] {
        after = toastOf(host);
        over = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(over, 30000);
    QVERIFY(before);
    QVERIFY(!after);
}

template <class Host> void clickHidesAfterTheSignal()
{
    Host host(nullptr);
    host.resize(300, 200);
    host.showToast(QStringLiteral("message"), {}, 5, 5);
    const QPointer<ZRLabel> toast = toastOf(host);
    QElapsedTimer clock;
    qint64 delay = 0;
    QObject::connect(toast.data(), &QObject::destroyed, [&] { delay = clock.elapsed(); });
    clock.start();
    QTest::mousePress(toast.data(), Qt::LeftButton);
    QVERIFY(toast);
    bool soon = true;
    bool over = false;
    QTimer::singleShot(500, Qt::PreciseTimer, &host, [&] { soon = toast; });
    // The timer of its two seconds finds nothing to hide.
    QTimer::singleShot(2200, Qt::PreciseTimer, &host, [&] { over = true; });
    QTRY_VERIFY_WITH_TIMEOUT(over, 30000);
    QVERIFY(!soon);
    QVERIFY2(delay >= 9, qPrintable(QString::number(delay))); // a timer's 10 ms are rounded
    QVERIFY(!toastOf(host));
}

// The pending timers must not reach a host that is gone.
template <class Host> void hostMayGoFirst()
{
    {
        Host host(nullptr);
        host.showToast(QStringLiteral("message"), {}, 5, 5);
        QTest::mousePress(toastOf(host), Qt::LeftButton);
    }
    bool over = false;
    QTimer::singleShot(2200, [&] { over = true; });
    QTRY_VERIFY_WITH_TIMEOUT(over, 30000);
}

}
