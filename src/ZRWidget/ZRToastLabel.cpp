#include "ZRToastLabel.h"

#include "ZRLabel.h"
#include "ZRNamedChild.h"

#include <QTimer>

namespace {
constexpr int lifetime = 2000; // ms
constexpr int clickDelay = 10; // ms; the label must not be deleted inside its own signal
constexpr int cornerRadius = 5;
constexpr int padding = 10;

// The flags of one axis, in the order of their claim.
struct Axis {
    Qt::AlignmentFlag start;
    Qt::AlignmentFlag centre;
    Qt::AlignmentFlag end;
};
constexpr Axis horizontal{Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};
constexpr Axis vertical{Qt::AlignTop, Qt::AlignVCenter, Qt::AlignBottom};

int coordinate(Qt::Alignment alignment, const Axis &axis, int margin, int outer, int inner)
{
    if (alignment & axis.start)
        return margin;
    if (alignment & axis.centre)
        return (outer - inner) / 2;
    if (alignment & axis.end)
        return outer - margin - inner;
    return margin;
}

ZRLabel *createLabel(QWidget *host, const QString &message)
{
    auto *label = namedChild<ZRLabel>(host, "toast");
    label->setText(message);
    label->setBackgroundColor(QColor(0, 0, 0, 64));
    label->setBorder(cornerRadius, 0, QColor());
    label->setMargins(padding, padding, padding, padding);
    label->setTextColor(QColor(255, 255, 255, 255));
    label->adjustSize();
    return label;
}
}

ZRLabel *ZRToastLabel::show(QWidget *host, const QString &message, Qt::Alignment alignment,
    int marginX, int marginY, const std::function<void()> &hide)
{
    ZRLabel *label = createLabel(host, message);
    label->move(coordinate(alignment, horizontal, marginX, host->width(), label->width()),
        coordinate(alignment, vertical, marginY, host->height(), label->height()));
    label->show();

    QObject::connect(label, &ZRLabel::clicked, host,
        [host, hide] { QTimer::singleShot(clickDelay, host, hide); });
    QTimer::singleShot(lifetime, host, hide);
    return label;
}

void ZRToastLabel::remove(ZRLabel *&toast)
{
    if (!toast)
        return;
    toast->hide();
    toast->setParent(nullptr);
    delete toast;
    toast = nullptr;
}
