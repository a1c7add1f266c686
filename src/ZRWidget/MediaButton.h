#pragma once

#include "ZRWidget.h"

class ZRLabel;
class ZRPixmapButton;

// A button of an icon and a text in one row, 24 pixels high. Opaque white until the mouse first
// comes over it, transparent after it has left.
class MediaButton : public ZRWidget
{
    Q_OBJECT

public:
    explicit MediaButton(QWidget *parent);
    ~MediaButton() override;

    void setPixmap(const QString &path, int width);
    void setText(const QString &text);
    QString text() const;

    QSize sizeHint() const override;

signals:
    void clicked(); // on release over the icon, on press over the text

protected:
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void setBackground(const QColor &color);

    ZRPixmapButton *icon;
    ZRLabel *label;
};
