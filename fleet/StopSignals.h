#pragma once

#include <QObject>

// Turns the system's requests to end the program into a signal on the event loop. One a process,
// made before anything that has to be cleaned up.
class StopSignals : public QObject
{
    Q_OBJECT

public:
    explicit StopSignals(QObject *parent = nullptr);
    ~StopSignals() override;

signals:
    void raised();
};
