#pragma once

#include <QStringList>
#include <QWidget>

class QTimer;

// Arrows that move a camera for as long as they are held, around a button that stops it.
// GUI thread.
class PTZPad : public QWidget
{
    Q_OBJECT

public:
    explicit PTZPad(QWidget *parent);
    // Sends nothing: what may be held then is the owner's to finish().
    ~PTZPad() override;

    // Lets go of what is held and sends the words that wait, before it returns.
    void finish();

signals:
    // "up", "down", "left" or "right", and then "stop". It comes from the event loop or finish(),
    // and a slot may block: of what is pressed meanwhile only the last is heard.
    void command(QString word);

private:
    void press(const QString &word);
    void release();
    void sendNext();

    QStringList waiting; // words yet to be sent
    QTimer *timer;
};
