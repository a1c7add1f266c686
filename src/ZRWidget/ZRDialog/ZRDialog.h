#pragma once

#include "ZRBackgournd.h"

#include <QDialog>

class ZRLabel;

// Base of every dialog: no help button in the title bar, a background of its own, and a short
// message that can float over it. GUI thread only.
class ZRDialog : public QDialog, public ZRBackgournd
{
public:
    explicit ZRDialog(QWidget *parent);
    ~ZRDialog() override;

    // Replaces the message that shows; placement and life as in ZRToastLabel.
    void showToast(QString message, Qt::Alignment alignment, int marginX, int marginY);
    void hideToast();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ZRLabel *toast = nullptr; // null while no message shows
};
