#pragma once

#include "CameraPeer.h"

#include <QJsonObject>
#include <QStringList>

// The SDK at work on the private network, and one camera that the test itself plays. A test that
// lets a dialog's job run shows the dialog without exec(), or acts from a ModalDriver: the calls
// here block the GUI thread, as the job is on its own.
class CameraBench
{
public:
    CameraBench();
    ~CameraBench();

    // False when either side is not ready for traffic.
    bool isReady() const;

    // The next request that arrives; empty when none does.
    QJsonObject request();
    // The same with an answer to it.
    QJsonObject answerNext(const QString &result, const QJsonObject &more = {});
    bool answer(const QJsonObject &request, const QString &result, const QJsonObject &more = {});
    // That nothing has been sent.
    bool isQuiet();

    static QStringList targets(const QJsonObject &request);

private:
    CameraPeer camera;
    bool ready;
};
