#include "MediaButton.h"

#include "ZRLabel.h"
#include "ZRNamedChild.h"
#include "ZRPixmapButton.h"

namespace {
constexpr int margin = 2;
constexpr int side = 20; // of the icon, and height of the label
constexpr int labelLeft = margin + side + margin;
constexpr int aroundLabel = labelLeft + 2 * margin;
}

MediaButton::MediaButton(QWidget *parent) :
    ZRWidget(parent),
    icon(namedChild<ZRPixmapButton>(this, "icon")),
    label(namedChild<ZRLabel>(this, "label"))
{
    setBackground(QColor(255, 255, 255, 255));
    setCursor(Qt::PointingHandCursor);
    connect(icon, &ZRPixmapButton::clicked, this, &MediaButton::clicked);
    connect(label, &ZRLabel::clicked, this, &MediaButton::clicked);
}

MediaButton::~MediaButton() = default;

void MediaButton::setPixmap(const QString &path, int width)
{
    icon->setPixmap(path, width);
}

void MediaButton::setText(const QString &text)
{
    label->setText(text);
}

QString MediaButton::text() const
{
    return label->text();
}

QSize MediaButton::sizeHint() const
{
    return {label->sizeHint().width() + aroundLabel, side + 2 * margin};
}

void MediaButton::enterEvent(QEvent *event)
{
    ZRWidget::enterEvent(event);
    setBackground(QColor(202, 211, 138, 255));
}

void MediaButton::leaveEvent(QEvent *event)
{
    ZRWidget::leaveEvent(event);
    setBackground(QColor(255, 255, 255, 0));
}

void MediaButton::resizeEvent(QResizeEvent *event)
{
    ZRWidget::resizeEvent(event);
    icon->setGeometry(margin, margin, side, side);
    label->setGeometry(labelLeft, margin, width() - aroundLabel, side);
}

void MediaButton::setBackground(const QColor &color)
{
    setBackgroundColor(color);
    setBorder(1, 0, QColor());
}
