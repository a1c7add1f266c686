#include "WindowHeaderWidget.h"

#include "MediaButton.h"
#include "ZRNamedChild.h"

namespace {
using Header = WindowHeaderWidget;

// In their order on the screen.
constexpr struct {
    MediaButton *Header::*button;
    const char *name;
    const char *icon;
    const char *toolTip;
    const char *label;
} buttons[] = {
    {&Header::networkButton, "networkButton", ":/resources/network.png", "Select Network",
        "Network"},
    {&Header::searchButton, "searchButton", ":/resources/search.png", "Search Devices", "Search"},
    {&Header::settingsButton, "settingsButton", ":/resources/settings.png", "Settings", "Settings"},
    {&Header::printerButton, "printerButton", ":/resources/printer.png", "Printer Settings",
        "Printer Settings"},
    {&Header::scanCodeButton, "scanCodeButton", ":/resources/print.png", "Scan Code", "Scan Code"},
};
}

WindowHeaderWidget::WindowHeaderWidget(QWidget *parent) : ZRWidget(parent)
{
    for (const auto &row : buttons) {
        this->*row.button = namedChild<MediaButton>(this, row.name);
        (this->*row.button)->setPixmap(QLatin1String(row.icon), 20);
    }
    setBackgroundColor(Qt::white);
    setMinimumHeight(20);
    WindowHeaderWidget::onLanguageChanged();
}

void WindowHeaderWidget::onLanguageChanged()
{
    for (const auto &row : buttons) {
        (this->*row.button)->setToolTip(translate(QLatin1String(row.toolTip)));
        (this->*row.button)->setText(translate(QLatin1String(row.label)));
    }
    layOut();
}

void WindowHeaderWidget::resizeEvent(QResizeEvent *event)
{
    ZRWidget::resizeEvent(event);
    layOut();
}

void WindowHeaderWidget::layOut()
{
    int x = 3;
    for (const auto &row : buttons) {
        MediaButton *button = this->*row.button;
        button->adjustSize();
        button->setGeometry(x, 0, button->width(), 24);
        x = button->geometry().right() + 3;
    }
}
