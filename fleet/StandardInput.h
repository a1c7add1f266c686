#pragma once

#include <QByteArray>
#include <QObject>

// Standard input as lines on the event loop. One a process. Its end, or none to begin with, ends
// nothing else.
class StandardInput : public QObject
{
    Q_OBJECT

public:
    // Where a program starts without standard input, keeps its place free of other files. Comes
    // before anything that opens one.
    static void claim();

    explicit StandardInput(QObject *parent = nullptr);
    ~StandardInput() override;

signals:
    // Without its end; never empty.
    void line(const QByteArray &text);

private:
    // What was read; nothing at the input's end.
    Q_INVOKABLE void take(const QByteArray &bytes);

    QByteArray rest;
};
