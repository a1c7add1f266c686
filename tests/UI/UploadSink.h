#pragma once

#include <QByteArrayList>
#include <QTcpServer>

// The web server of a camera, on the loopback address: takes uploads and answers each with a
// "Result". GUI thread; works while an event loop runs.
class UploadSink : public QTcpServer
{
public:
    explicit UploadSink(int result = 0);

    // The requests so far, head and body.
    QByteArrayList uploads;

private:
    void receive(QTcpSocket *socket);

    int result;
};
