#pragma once

#include <QHostAddress>
#include <QStringList>
#include <QVector>

struct HostAddress {
    QHostAddress ip;
    int prefixLength;
};

// The IPv4 addresses of one interface of this computer. It remembers what it added and removes
// only that, at the latest when it is destroyed.
// Operations block while the system changes; on failure they return false with one line of text.
class HostAddresses
{
public:
    explicit HostAddresses(const QString &interface);
    ~HostAddresses();

    static QStringList interfaces();

    bool exists() const;
    QVector<HostAddress> present() const; // read afresh
    bool has(const QHostAddress &ip) const;

    // Adds those that the interface lacks; on failure none is left behind.
    bool add(const QVector<HostAddress> &addresses, QString *error);
    // Removes an address that add() added, and does nothing for another.
    bool remove(const QHostAddress &ip, QString *error);
    void removeAll();

private:
    Q_DISABLE_COPY(HostAddresses)

    // The system's part, in the sibling files.
    enum class Change { Add, Remove };
    static bool change(Change change, const QString &interface,
        const QVector<HostAddress> &addresses, QString *error);
    // A program of the system's. Empty when it went well, else what it says against it.
    static QString run(
        const QString &program, const QStringList &arguments, const QByteArray &input = {});
    // "can't add 10.77.0.11/24 to eth0: " and why.
    static QString failure(
        Change change, const QString &interface, const HostAddress &address, const QString &reason);

    bool restore(const QVector<HostAddress> &wanted, QString *error);

    const QString interface;
    QVector<HostAddress> added;
};
