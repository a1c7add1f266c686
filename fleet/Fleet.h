#pragma once

#include "FleetJournal.h"
#include "FleetOptions.h"
#include "FleetScenario.h"

#include <QScopedPointer>
#include <QVector>

#include <random>

class FleetNetwork;
class FleetStation;

// Cameras on one interface. Lives in one thread with an event loop, also one to which it was moved
// before start(); adding and removing addresses blocks that thread for moments.
class Fleet : public QObject
{
    Q_OBJECT

public:
    enum Start { Started, Refused, BadScenario };

    explicit Fleet(const FleetOptions &options, QObject *parent = nullptr);
    ~Fleet() override;

    // When it does not return Started, `error` has one line and nothing is left open.
    Start start(QString *error);
    // Closes everything, removes the addresses that were added and tells the journal which rules
    // were never used.
    void stop();

    // Lets cameras tell something by themselves: "report 1 {...}" a message with these keys,
    // "script 1 {...}" an entry of "reports" in a scenario, a word what the scenario has at this
    // "key". In place of the number a MAC or "all". False with one line when it is no such order.
    bool order(const QByteArray &line, QString *error);

    FleetJournal &journal() { return log; }
    int count() const { return stations.size(); }
    // One camera as it is now, from 0.
    const FleetCamera &camera(int index) const;
    QHostAddress address(int index) const;

private:
    QVector<FleetCamera> makeCameras(QString *error) const;
    FleetCamera makeCamera(int index, const QHostAddress &ip) const;
    Start open(QString *error);
    bool begin(const FleetReport &report, const QString &name);
    bool press(const QString &key);
    void readRequests();
    void receive(const QByteArray &datagram, const QString &source);
    int spreadDelayMs(int index);

    const FleetOptions options;
    FleetJournal log;
    FleetScenario scenario;
    QScopedPointer<FleetNetwork> network;
    QVector<FleetStation *> stations;
    std::mt19937 random;
};
