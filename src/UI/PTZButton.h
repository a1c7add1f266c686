#pragma once

#include "ZRWidget.h"

// A round button of a pad that steers something for as long as it is held: the left mouse button,
// pressed on its disc, or the space bar. GUI thread.
class PTZButton : public ZRWidget
{
    Q_OBJECT

public:
    explicit PTZButton(QWidget *parent);
    ~PTZButton() override;

    // `width` pixels are the size hint; 0 means that of the file. The image fills the disc.
    void setPixmap(const QString &path, int width);
    // Turns the image clockwise, in degrees.
    void setTurn(int degrees);
    bool isPressed() const { return pressed; }
    // Ends a press before the operator does.
    void release();

    QSize sizeHint() const override;

signals:
    void mousePressed();
    // Follows each mousePressed(): by the release, wherever the mouse is then, and when the button
    // is hidden or disabled or loses the focus before.
    void mouseRelease();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    QRect disc() const;
    bool isOnDisc(const QPoint &point) const;
    void press();

    QString path;
    int imageWidth = 0;
    int turn = 0;
    bool pressed = false;
};
