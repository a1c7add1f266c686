#pragma once

#include <QProcess>

#include <csignal>
#include <sys/prctl.h>

// A silent program that ends with this one, whatever ends this one.
class ChildProcess : public QProcess
{
public:
    ChildProcess()
    {
        setStandardInputFile(nullDevice());
        setStandardOutputFile(nullDevice());
        setStandardErrorFile(nullDevice());
    }
    ~ChildProcess() override { end(); }

    void end()
    {
        terminate();
        if (state() != NotRunning && !waitForFinished(5000)) {
            kill();
            waitForFinished();
        }
    }

protected:
    void setupChildProcess() override { prctl(PR_SET_PDEATHSIG, SIGTERM); }
};
