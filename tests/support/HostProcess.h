#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

// A program of the system that the tests run on. A test for Windows runs in Wine, which can't
// speak with programs outside of itself: there it goes through run-test.sh's door.py.
// Thread: one. Waits in its operations, at the most `patience`; the destructor kills the program.
class HostProcess : public QObject
{
    Q_OBJECT

public:
    static constexpr int patience = 60000; // milliseconds

    HostProcess();
    ~HostProcess() override;

    // Runs a command to its end, passes on its errors and tells whether it ended with 0.
    static bool run(const QString &program, const QStringList &arguments);
    // The same, but tells what the command printed; empty if it failed.
    static QByteArray output(const QString &program, const QStringList &arguments);
    // As the programs outside know a file of the test's.
    static QString path(const QString &file);

    // False when there is no such program, which errors() tells.
    bool start(const QString &program, const QStringList &arguments);
    bool isRunning() const;
    qint64 processId() const; // 0 when it doesn't run

    // Its standard input. False when it did not take it.
    bool write(const QByteArray &input);
    void closeInput();

    // What it wrote and what nobody has read.
    bool canReadLine() const;
    QByteArray readLine();
    QByteArray readAll();
    QByteArray errors();
    // False when nothing came, or when it ended.
    bool waitForReadyRead(int milliseconds = patience);

    // By SIGTERM, as a user would.
    void terminate();
    void kill();
    // True when it has ended by itself and with status 0.
    bool waitForSuccess(int milliseconds = patience);

signals:
    // From the event loop, or out of a wait.
    void readyRead();

private:
    struct Link;
    std::unique_ptr<Link> link;
};
