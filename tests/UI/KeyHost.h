#pragma once

#include <QKeyEvent>
#include <QVector>
#include <QWidget>

// A parent that tells what keys reach it.
class KeyHost : public QWidget
{
public:
    QVector<int> keys;

protected:
    void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
};
