#include "PTZPad.h"

#include "PTZButton.h"
#include "ZRNamedChild.h"

#include <QGridLayout>
#include <QTimer>

namespace {
const int buttonSide = 36;
const QLatin1String stop("stop");

constexpr struct {
    const char *name;
    const char *word;
    int row;
    int column;
    int turn; // of an arrow that points up
} arrows[] = {
    {"upButton", "up", 0, 1, 0},
    {"leftButton", "left", 1, 0, 270},
    {"rightButton", "right", 1, 2, 90},
    {"downButton", "down", 2, 1, 180},
};
}

PTZPad::PTZPad(QWidget *parent) : QWidget(parent), timer(new QTimer(this))
{
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(4);
    const auto add = [this, grid](const char *name, const QString &image, int row, int column) {
        auto *button = namedChild<PTZButton>(this, name);
        button->setPixmap(image, buttonSide);
        button->setFixedSize(buttonSide, buttonSide);
        grid->addWidget(button, row, column);
        return button;
    };
    for (const auto &arrow : arrows) {
        PTZButton *button =
            add(arrow.name, QStringLiteral(":/resources/ptzupnormal.png"), arrow.row, arrow.column);
        button->setTurn(arrow.turn);
        connect(button, &PTZButton::mousePressed, this,
            [this, word = QLatin1String(arrow.word)] { press(word); });
        connect(button, &PTZButton::mouseRelease, this, &PTZPad::release);
    }
    PTZButton *center = add("stopButton", QStringLiteral(":/resources/ptzcenter.png"), 1, 1);
    connect(center, &PTZButton::mousePressed, this, [this] { press(stop); });

    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, &PTZPad::sendNext);
}

// Buttons that go let go of what they hold.
PTZPad::~PTZPad()
{
    for (PTZButton *button : findChildren<PTZButton *>())
        button->disconnect(this);
}

void PTZPad::finish()
{
    for (PTZButton *button : findChildren<PTZButton *>())
        button->release();
    timer->stop();
    while (!waiting.isEmpty())
        emit command(waiting.takeFirst());
}

void PTZPad::press(const QString &word)
{
    waiting = QStringList(word);
    timer->start(0);
}

void PTZPad::release()
{
    waiting.append(stop);
    timer->start(0);
}

// The timer lets the events of a blocked time pass before the next word goes out.
void PTZPad::sendNext()
{
    const QString word = waiting.takeFirst();
    if (!waiting.isEmpty())
        timer->start(0);
    emit command(word);
}
