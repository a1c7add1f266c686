#pragma once

#include "ZRLocalize.h"
#include "ZRWidget.h"

class MediaButton;

// The top strip of the window. Its owner connects the buttons, which stand on the screen in the
// order of the fields.
class WindowHeaderWidget : public ZRWidget, public ZRLocalize
{
public:
    explicit WindowHeaderWidget(QWidget *parent);

    void onLanguageChanged() override;

    MediaButton *networkButton;
    MediaButton *searchButton;
    MediaButton *settingsButton;
    MediaButton *printerButton;
    MediaButton *scanCodeButton;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void layOut();
};
