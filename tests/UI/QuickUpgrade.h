#pragma once

#include "VorlynDeviceUpgradeDialog.h"
#include "VorlynDeviceUpgradeLoadingDialog.h"
#include "ZRThread.h"

#include <QStringList>

// The job of an upgrade with a clock that only its pauses move, each of which takes `milliseconds`
// of real time.
class QuickUpgrade : public VorlynDeviceUpgradeLoadingDialog
{
public:
    QuickUpgrade(VorlynDeviceUpgradeDialog &dialog, unsigned long milliseconds) :
        VorlynDeviceUpgradeLoadingDialog(nullptr),
        milliseconds(milliseconds)
    {
        setUpgradeDialog(&dialog);
        connect(this, &ZRProgressDialog::_setMessage, this,
            [this](const QString &message) { messages.append(message); });
    }

    ~QuickUpgrade() override { finishThread(); }

    // What was said so far, once the events of it have been handled.
    QStringList messages;
    // The job's until it has ended.
    double seconds = 0;
    int pauses = 0;
    // Makes the short searches long enough for an answer from a busy machine. Set before start().
    bool awaitsAnswers = false;

protected:
    double now() const override { return 1700000000.0 + seconds; }

    void pause(unsigned long asked) override
    {
        ZRThread::sleep(milliseconds);
        seconds += asked / 1000.0;
        ++pauses;
    }

    double shortSearch() const override
    {
        return awaitsAnswers ? 1 : VorlynDeviceUpgradeLoadingDialog::shortSearch();
    }

private:
    unsigned long milliseconds;
};
