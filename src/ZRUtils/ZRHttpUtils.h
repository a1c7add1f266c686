#pragma once

#include <QObject>

class QEventLoop;
class QNetworkAccessManager;

// Qt's asynchronous HTTP as one plain call: a multipart upload that blocks the calling thread in
// a local event loop. Made, used and destroyed on one thread, any proxy of the system bypassed.
class ZRHttpUtils : public QObject
{
    Q_OBJECT

public:
    ZRHttpUtils();
    ~ZRHttpUtils() override;

    // Sends the file as the one part of a form by POST. Returns the body of the reply whatever
    // its status, or an empty array when the file can't be opened. There is no timeout.
    QByteArray upload(const QString &url, const QString &path);
    // Ends a running upload(); from any thread, without a lock. Lost when none runs yet.
    void quit();

private:
    QNetworkAccessManager *manager;
    QString session; // sent as a cookie when not empty; nothing sets it
    QEventLoop *eventLoop;
};
