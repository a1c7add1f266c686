#include "FleetProcess.h"

#include "TestNetwork.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("can't write %s", qPrintable(path));
}

}

FleetProcess::FleetProcess(const QString &interface, int count, const QString &firstAddress)
{
    addOptions({"--interface", interface, "--count", QString::number(count), "--first-address",
        firstAddress, "--journal", HostProcess::path(folder.filePath("journal")),
        "--restart-seconds", "1"});
}

FleetProcess::~FleetProcess()
{
    stop();
}

void FleetProcess::addOptions(const QStringList &more)
{
    options += more;
}

QJsonObject FleetProcess::unhurried()
{
    const QJsonObject late = {{"on", "search"}, {"delay-ms", 250}};
    return {{"camera", "all"}, {"rules", QJsonArray{late}}};
}

void FleetProcess::setScenario(const QJsonObject &scenario)
{
    const QString path = folder.filePath("scenario.json");
    writeFile(path, QJsonDocument(scenario).toJson());
    addOptions({"--scenario", HostProcess::path(path)});
}

bool FleetProcess::start()
{
    process.start(
        "nsenter", TestNetwork::atCameras(launcher + QStringList(VORLYN_FLEET) + options));
    while (process.isRunning()) {
        if (process.canReadLine())
            return process.readLine().startsWith("READY");
        if (!process.waitForReadyRead())
            break;
    }
    qWarning("%s", process.errors().constData());
    return false;
}

bool FleetProcess::stop()
{
    if (!process.isRunning())
        return true;
    process.terminate();
    return process.waitForSuccess();
}

bool FleetProcess::order(const QByteArray &line)
{
    return process.write(line + '\n');
}

void FleetProcess::endInput(const QByteArray &line)
{
    process.write(line);
    process.closeInput();
}

QVector<QJsonObject> FleetProcess::events(const QString &event) const
{
    QFile journal(folder.filePath("journal"));
    QVector<QJsonObject> found;
    if (!journal.open(QIODevice::ReadOnly))
        return found;
    for (const QByteArray &line : journal.readAll().split('\n')) {
        const QJsonObject entry = QJsonDocument::fromJson(line).object();
        if (entry["event"].toString() == event)
            found.append(entry);
    }
    return found;
}

QVector<QJsonObject> FleetProcess::requests(const QString &method) const
{
    QVector<QJsonObject> found;
    for (const QJsonObject &entry : events("request")) {
        if (entry["method"].toString() == method)
            found.append(QJsonDocument::fromJson(entry["raw"].toString().toUtf8()).object());
    }
    return found;
}
