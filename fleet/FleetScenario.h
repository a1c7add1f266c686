#pragma once

#include "FleetCamera.h"

#include <QVector>

// What is special about the cameras of a fleet: a JSON file of entries, each about one camera or
// all of them. docs/fleet.md has its keys.
class FleetScenario
{
public:
    // One entry of "cameras", checked.
    struct Entry {
        QJsonValue camera; // a position from 1, a MAC or "all"
        QString place; // in the file, for messages
        QJsonObject changes; // the keys that change the camera
        QVector<FleetRulePointer> rules;
        QVector<FleetReport> reports;

        bool isAbout(const FleetCamera &camera) const;
    };

    // False with one line that names file, place and key when something is wrong.
    bool load(const QString &path, QString *error);
    bool parse(const QByteArray &json, const QString &name, QString *error);
    // Changes the cameras, whose MACs are still those that entries name. False with one line when
    // an entry is about none of them.
    bool apply(QVector<FleetCamera> &cameras, QString *error) const;
    // Places of the rules that no request met.
    QStringList unusedRules() const;

private:
    QString readEntry(const QJsonObject &object, const QString &place);

    QString name;
    QVector<Entry> entries;
};
