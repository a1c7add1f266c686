#include "ZRHttpUtils.h"

#include <QDebug>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHttpMultiPart>
#include <QMetaEnum>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QUrl>

#include <memory>

namespace {

QString boundary()
{
    return QStringLiteral("window-iptool-upload");
}

QNetworkRequest uploadRequest(const QString &url, const QString &session)
{
    QNetworkRequest request{QUrl(url, QUrl::TolerantMode)};
    request.setHeader(QNetworkRequest::ContentTypeHeader,
        QStringLiteral("multipart/form-data; boundary=%1").arg(boundary()));
    if (!session.isEmpty())
        request.setRawHeader("cookie", QStringLiteral("session=%1").arg(session).toUtf8());
    return request;
}

// The file name stands in the header as it is, quotation marks too.
QHttpPart filePart(const QString &path)
{
    const QString disposition =
        QStringLiteral("form-data; name=\"file\"; filename=\"%1\"").arg(QFileInfo(path).fileName());
    qDebug().noquote() << disposition;
    QHttpPart part;
    part.setHeader(QNetworkRequest::ContentDispositionHeader, disposition);
    part.setHeader(QNetworkRequest::ContentTypeHeader, "application/octet-stream");
    return part;
}

void logOutcome(QNetworkReply::NetworkError error)
{
    if (error == QNetworkReply::NoError) {
        qDebug("upload success");
    } else {
        qDebug("upload error -> %s",
            QMetaEnum::fromType<QNetworkReply::NetworkError>().valueToKey(error));
    }
}

}

ZRHttpUtils::ZRHttpUtils() : manager(new QNetworkAccessManager), eventLoop(nullptr)
{
    manager->setProxy(QNetworkProxy::NoProxy);
}

ZRHttpUtils::~ZRHttpUtils()
{
    delete manager;
}

QByteArray ZRHttpUtils::upload(const QString &url, const QString &path)
{
    qDebug().noquote() << "upload" << path << "to" << url;
    const QNetworkRequest request = uploadRequest(url, session);
    QFile file(path);
    QHttpPart part = filePart(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug("file open fail");
        return {};
    }
    part.setBodyDevice(&file); // read piece by piece as the network takes it
    QHttpMultiPart form(QHttpMultiPart::FormDataType);
    form.setBoundary(boundary().toUtf8());
    form.append(part);

    // The reply goes first at the end: it may still read from the form.
    const std::unique_ptr<QNetworkReply> reply(manager->post(request, &form));
    QEventLoop loop;
    connect(manager, SIGNAL(finished(QNetworkReply *)), &loop, SLOT(quit()));
    eventLoop = &loop;
    loop.exec();
    eventLoop = nullptr;

    QByteArray response = reply->readAll();
    qDebug().noquote() << "response ->" << QString::fromUtf8(response);
    logOutcome(reply->error());
    return response;
}

void ZRHttpUtils::quit()
{
    if (eventLoop)
        eventLoop->quit();
}
