#pragma once

#include "HostProcess.h"

#include <QJsonObject>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

// The program vorlyn-fleet, running in the cameras' network namespace of tests/support/run-test.sh
// (docs/fleet.md tells its options, scenarios and journal).
// Thread: one. The destructor ends it as a user would, by a signal.
class FleetProcess
{
public:
    // Cameras on an interface of the cameras' side, "cam-a" or "cam-b".
    FleetProcess(const QString &interface, int count, const QString &firstAddress);
    ~FleetProcess();

    void addOptions(const QStringList &options);
    // Starts by this command, with the program and its options behind it.
    void setLauncher(const QStringList &command) { launcher = command; }
    void setScenario(const QJsonObject &scenario);
    // Entry of a scenario: all cameras take a while to answer a search. A window searches while its
    // sockets still open, and an answer that comes before them is lost.
    static QJsonObject unhurried();

    // True when all cameras listen.
    bool start();
    // True when it ended by itself within its time, and with status 0.
    bool stop();

    // A line on its standard input: "report 1 {...}" lets a camera tell something by itself.
    // False when it did not take it.
    bool order(const QByteArray &line);
    // With a last line that has no end.
    void endInput(const QByteArray &line = QByteArray());

    qint64 processId() const { return process.processId(); }

    // The journal so far: all entries of an event, in order.
    QVector<QJsonObject> events(const QString &event) const;
    // The messages of one method as they came over the wire, in order.
    QVector<QJsonObject> requests(const QString &method) const;
    QByteArray errors() { return process.errors(); }

private:
    QTemporaryDir folder;
    QStringList launcher;
    QStringList options;
    HostProcess process;
};
