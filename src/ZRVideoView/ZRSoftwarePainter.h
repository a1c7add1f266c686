#pragma once

#include "ZRVideoPainter.h"
#include "ZRYuvPicture.h"

#include <QObject>

class QImage;
class QPoint;
class QRect;
class QRegion;
class QSize;
class QWidget;
struct AVFrame;
struct SwsContext;

// Paints in software: each picture is scaled once, straight to the window's size, when the window
// is painted, and converted into the window's own pixels. A hidden window costs nothing; a resized
// one gets the last picture scaled afresh.
class ZRSoftwarePainter : public QObject, public ZRVideoPainter
{
public:
    explicit ZRSoftwarePainter(QWidget *window);
    ~ZRSoftwarePainter() override;

    void show(const ZRYuvPicture *picture) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void paint(const QRegion &region);
    bool scale(const QSize &size);
    void convert(const QRect &area, QImage *pixels, const QPoint &offset) const;

    QWidget *const window;
    ZRYuvPicture picture;
    bool shown = false; // a picture, and not black
    bool stale = false; // `scaled` is of an earlier picture
    SwsContext *scaler = nullptr; // for the sizes that it was last used with
    AVFrame *scaled; // the picture at the window's size, with chroma at full size
};
