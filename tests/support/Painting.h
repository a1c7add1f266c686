#pragma once

#include <QEvent>
#include <QImage>
#include <QWidget>
#include <QtTest>

// The widget as it paints itself at pixel ratio 1, on nothing: without its children and without
// the window's background. Needs no screen and no wait.
inline QImage painted(QWidget &widget, QWidget::RenderFlags flags = {})
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), flags);
    return image;
}

// The smallest rectangle around all pixels that aren't fully transparent.
inline QRect paintedArea(const QImage &image)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 0) {
                area |= QRect(x, y, 1, 1);
            }
        }
    }
    return area;
}

// Counts how often a widget on the screen is painted. Keeps the window manager away, which could
// ask for a repaint at any time.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget &widget) : widget(widget)
    {
        widget.installEventFilter(this);
        widget.setWindowFlag(Qt::X11BypassWindowManagerHint);
        widget.resize(100, 100); // some have no size of their own
        widget.show();
    }

    // True once the window is on the screen and at rest.
    bool waitForRest() { return QTest::qWaitForWindowExposed(&widget) && (flush(), true); }

    // The number of paints that the action causes.
    template <class Action> int paintsOf(Action action)
    {
        const int before = paints;
        action();
        flush();
        return paints - before;
    }

private:
    void flush()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            ++paints;
        }
        return false;
    }

    QWidget &widget;
    int paints = 0;
};
