#pragma once

#include "ZRWidget.h"

// A button of one image that fills it.
class ZRPixmapButton : public ZRWidget
{
    Q_OBJECT

public:
    explicit ZRPixmapButton(QWidget *parent);
    ~ZRPixmapButton() override;

    // `width` is the width to which the image is scaled, in pixels; 0 keeps the file's own.
    void setPixmap(const QString &path, int width);

    QSize sizeHint() const override;

signals:
    void clicked(); // on release

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString path;
    int imageWidth = 0;
};
