#pragma once

#include "ZRWidget.h"

// A button of two images. A click doesn't change its state: the owner does, by setChecked().
class ZRPixmapsButton : public ZRWidget
{
    Q_OBJECT

public:
    explicit ZRPixmapsButton(QWidget *parent);
    ~ZRPixmapsButton() override;

    // Scaled to `width` pixels; 0 keeps the files' own. Shows at the next repaint.
    void setPixmaps(const QString &path, const QString &checkedPath, int width);
    void setChecked(bool checked);
    bool isChecked() const;

    // Follows the image of the unchecked state, whatever the state.
    QSize sizeHint() const override;

signals:
    void clicked(); // on release

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString path;
    QString checkedPath;
    int imageWidth = 0;
    bool checked = false;
};
