#include "ShownLikeness.h"

#include "TestCard.h"
#include "ZRLetterbox.h"

#include <QCoreApplication>
#include <QtTest>

#include <algorithm>

constexpr int patience = 20000; // milliseconds

const ShownLikeness ShownLikeness::computed = {TestCard::likeness, 35};

bool ShownLikeness::isReached(const QWidget &view, const AVFrame &frame) const
{
    const QRect area = zrLetterbox({frame.width, frame.height}, view.size());
    double best = 0;
    bool exact = false;
    const bool reached = QTest::qWaitFor(
        [&] {
            const QImage shot = TestCard::shot(view);
            exact = TestCard::fillsExactly(shot, area);
            best = std::max(best, of(shot, area, frame));
            return exact && best >= enough;
        },
        patience);
    qInfo("%dx%d on %dx%d: %.1f dB", frame.width, frame.height, area.width(), area.height(), best);
    if (!reached) {
        qWarning("letterbox %s", exact ? "right" : "wrong");
        TestCard::shot(view).save(QCoreApplication::applicationDirPath() + "/failed.png");
    }
    return reached;
}
