#pragma once

#include "ZRWidget.h"

class ZRLabel;

// Widget base that can float a short message over itself. Both slots may be called from any
// thread: off the widget's own they arrive there queued, by their names.
class ZRToast : public ZRWidget
{
    Q_OBJECT

public:
    explicit ZRToast(QWidget *parent);
    ~ZRToast() override;

public slots:
    // Replaces the message that shows; placement and life as in ZRToastLabel.
    void showToast(QString message, Qt::Alignment alignment = Qt::AlignHCenter | Qt::AlignBottom,
        int marginX = 5, int marginY = 5);
    void hideToast();

private:
    ZRLabel *toast = nullptr; // null while no message shows
};
