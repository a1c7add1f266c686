#pragma once

#include "ZRWidget.h"

// A text on a painted rectangle, with margins in pixels and a click. New lines in the text are
// kept.
class ZRLabel : public ZRWidget
{
    Q_OBJECT

public:
    explicit ZRLabel(QWidget *parent);
    ~ZRLabel() override;

    void setText(const QString &text);
    QString text() const;
    // Black until it is set.
    void setTextColor(const QColor &color);
    // Qt::Alignment, with the Qt::TextFlags if wanted. Shows at the next repaint, as the margins.
    void setAlignment(int alignment);
    void setMargins(int left, int top, int right, int bottom);

    QSize sizeHint() const override;

signals:
    void clicked(); // on press

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QColor textColor;
    int alignment = Qt::AlignCenter;
    QString text_;
    int marginLeft = 0;
    int marginRight = 0;
    int marginTop = 0;
    int marginBottom = 0;
};
