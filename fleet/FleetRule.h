#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QSharedPointer>
#include <QString>
#include <QVector>

// "This method gets this answer, this late." Made by the scenario, shared by all cameras that it
// is about; how often it was used up is kept by each of them.
struct FleetRule {
    QString on; // a method, "any", "upload", "page" or "stream"
    QString place; // in the scenario, for messages
    int times = -1; // below 0: never used up
    int after = 0;
    bool apply = true; // false: the camera's state stays as it was
    QJsonObject faults; // checked
    int used = 0; // by all cameras together

    bool isAbout(const QString &method) const;
    // Reads a rule of the scenario; returns what is wrong with it, or an empty text.
    QString read(const QJsonObject &object);
};

using FleetRulePointer = QSharedPointer<FleetRule>;

// The rules of one camera with what is left of them.
class FleetRules
{
public:
    void append(const FleetRulePointer &rule) { uses.append({rule, 0}); }
    bool isEmpty() const { return uses.isEmpty(); }
    // The rule that this request meets, counted as used; null for none.
    FleetRulePointer take(const QString &method);

private:
    struct Use {
        FleetRulePointer rule;
        int met;
    };
    QVector<Use> uses;
};

// A reply on its way out: what the camera says, and what the faults of a rule make of it.
struct FleetReply {
    QJsonObject body;
    int delayMs = 0;
    bool silent = false;
    int copies = 1;
    int burst = 0; // replies to nobody's request, before the real one
    int size = 0; // of the datagram, 0 as it comes
    bool malformed = false;
    int lengthError = 0;
    int cut = -1; // bytes that go out, below 0 all

    void spoil(const FleetRule &rule);
    // All datagrams to send, in order; none when silent.
    QVector<QByteArray> datagrams() const;

private:
    QByteArray datagram(const QJsonObject &object) const;
};

// The same for HTTP.
struct FleetHttpAnswer {
    int status = 200;
    QByteArray contentType;
    QByteArray body;
    int delayMs = 0;
    bool silent = false;
    qint64 resetAfter = -1; // bytes of the request's body, below 0 never
    bool fixed = false; // `body` and `contentType` were set by a rule

    void spoil(const FleetRule &rule);
};

// The same for one connection of a viewer. Times count from the first packet of media.
struct FleetStreamFaults {
    int status = 0; // 0: no such answer
    bool silent = false;
    bool reset = false;
    int garbage = 0; // bytes in place of each answer
    int delayMs = 0; // of each answer
    int freezeAfterMs = -1; // below 0 never
    int closeAfterMs = -1;
    int loseEvery = 0; // packets, 0 none
    int corruptEvery = 0;

    void spoil(const FleetRule &rule);
    bool any() const;
    // The stream itself has no part in it.
    bool answersItself() const { return silent || garbage > 0 || status > 0; }
};
