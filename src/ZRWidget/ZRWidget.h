#pragma once

#include <QColor>
#include <QWidget>

// A child widget that paints its own rounded, bordered and filled rectangle; invisible until a
// colour is set. Lengths are pixels.
class ZRWidget : public QWidget
{
public:
    explicit ZRWidget(QWidget *parent);
    ~ZRWidget() override;

    void setBackgroundColor(const QColor &color);
    // A radius of 0 or less means square corners, a width of 0 or less no outline.
    void setBorder(int radius, int width, const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    qint32 radius = 0;
    qint32 borderWidth = 0;
    QColor borderColor{255, 255, 255, 0};
    QColor backgroundColor{255, 255, 255, 0};
};
