#pragma once

#include "ZRWidget.h"

// A horizontal slider: a groove, filled up to a round handle. Dragged and clicked with the left
// button, turned with the wheel, moved with the arrow, page, Home and End keys. GUI thread.
class ZRSlider : public ZRWidget
{
    Q_OBJECT

public:
    explicit ZRSlider(QWidget *parent);
    ~ZRSlider() override;

    // Moves the value inside, if need be. A maximum below the minimum counts as equal to it.
    void setRange(int minimum, int maximum); // 0 to 100 at first
    int minimum() const { return minimum_; }
    int maximum() const { return maximum_; }
    // Kept inside the range.
    void setValue(int value);
    int value() const { return value_; }
    // Of the filled part and the handle's edge.
    void setColor(const QColor &color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void valueChanged(int value); // by whomever, and only when it differs

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int travel() const; // pixels between the handle's two ends
    int pageStep() const;
    int handleX() const; // of its middle
    int valueAt(int x) const;
    void step(qint64 distance);

    int minimum_ = 0;
    int maximum_ = 100;
    int value_ = 0;
    int wheelRest = 0; // of a notch, in eighths of a degree
    QColor color{96, 125, 30};
};
