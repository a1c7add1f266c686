#pragma once

#include <QColor>
#include <QPixmap>
#include <QWidget>

// A spinner of twelve fading spokes that can also show a percentage. At the default delay one turn
// takes 480 ms.
class ZRProgress : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(int delay MEMBER delay WRITE setAnimationDelay)
    Q_PROPERTY(bool displayedWhenStopped MEMBER displayedWhenStopped WRITE setDisplayedWhenStopped)
    Q_PROPERTY(QColor color MEMBER color WRITE setColor)

public:
    explicit ZRProgress(QWidget *parent);
    ~ZRProgress() override;

    QSize sizeHint() const override;

signals:
    void Finished(); // nothing emits it

public slots:
    // Shows the spinner; stopAnimation() hides it.
    void startAnimation();
    void stopAnimation();
    void setAnimationDelay(int delay); // milliseconds between two steps of 30 degrees
    void setDisplayedWhenStopped(bool state);
    void setColor(QColor color);
    // Percent; 1 to 99 shows as text, 100 ends the animation at the next paint. Shown by the next
    // step of the animation.
    void onProgress(short _progress);

protected:
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void paintSpokes(QPainter &painter) const;

    int angle = 0; // degrees
    int timerId = -1; // -1 when stopped
    int delay = 40; // milliseconds
    bool displayedWhenStopped = false;
    QColor color = Qt::white;
    qint16 progress = 0;
    QPixmap stoppedPixmap; // nothing sets it
};
