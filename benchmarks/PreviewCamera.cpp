#include "PreviewCamera.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

const char address[] = "10.77.0.11";
const int port = 8554;
const char path[] = "/live1";

QByteArray contents(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("can't read %s", qPrintable(name));
    return file.readAll();
}

} // namespace

PreviewCamera::PreviewCamera(const QString &program, const QString &namespaceProcess) :
    program(program),
    namespaceProcess(namespaceProcess)
{
    process.setStandardOutputFile(QString()); // the READY line is read
}

void PreviewCamera::start(QSize video, bool alwaysRunning)
{
    // The cameras answer a search one after the other, so that the first has the first row.
    const QString size = QStringLiteral("%1x%2").arg(video.width()).arg(video.height());
    const QJsonObject stream = {
        {"video", "H.264"}, {"audio", "AAC"}, {"size", size}, {"always", alwaysRunning}};
    const QJsonObject scenario = {{"cameras",
        QJsonArray{QJsonObject{{"camera", 1}, {"stream", stream}},
            QJsonObject{{"camera", 2}, {"fields", QJsonObject{{"rtsppath1", ""}}}}}}};
    QFile file(QDir(folder.path()).filePath("scenario.json"));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("can't write %s", qPrintable(file.fileName()));
    file.write(QJsonDocument(scenario).toJson());
    file.close();

    const QStringList command = atCameras({program, "--interface", "cam-a", "--count", "2",
        "--first-address", address, "--spread", "0.5", "--scenario", file.fileName()});
    process.start(command.first(), command.mid(1));
    if (!process.waitForReadyRead(20000) || !process.readLine().startsWith("READY"))
        qFatal("the cameras can't be started: %s", qPrintable(command.join(' ')));
}

QStringList PreviewCamera::atCameras(const QStringList &command) const
{
    return QStringList{"nsenter", "-t", namespaceProcess, "-n"} + command;
}

QString PreviewCamera::url() const
{
    return QStringLiteral("rtsp://%1:%2%3").arg(address).arg(port).arg(path);
}

// The third column is the far end, with the port in hexadecimal, the fourth the state, 01 when
// established.
bool PreviewCamera::hasViewer() const
{
    const QByteArray farPort = ':' + QByteArray::number(port, 16).toUpper().rightJustified(4, '0');
    for (const QByteArray &line : contents("/proc/net/tcp").split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() > 3 && fields[2].endsWith(farPort) && fields[3] == "01")
            return true;
    }
    return false;
}

void PreviewCamera::setLinkUp(bool up)
{
    const QStringList command = atCameras({"ip", "link", "set", "cam-a", up ? "up" : "down"});
    if (QProcess::execute(command.first(), command.mid(1)) != 0)
        qFatal("the cable can't be switched");
}

qint64 PreviewCamera::receivedBytes() const
{
    for (const QByteArray &line : contents("/proc/net/dev").split('\n')) {
        const QByteArray text = line.trimmed();
        if (text.startsWith("veth-a:"))
            return text.mid(7).simplified().split(' ').first().toLongLong();
    }
    return 0;
}
