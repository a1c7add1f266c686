#pragma once

#include "ZRDialog.h"

#include <QThread>

class ZRWaitDialog;

// The worker of one job; its only act is to call the dialog's run().
class ZRWaitThread : public QThread
{
public:
    explicit ZRWaitThread(ZRWaitDialog *dialog);

    ZRWaitDialog *dialog; // not owned
    // The stop request. A plain flag on purpose: the GUI thread writes it once, the job reads it.
    bool stopped = false;

protected:
    void run() override;
};

// A modal dialog with one blocking job on a thread of its own.
//
// Its creator makes it on the stack with what the job needs, calls start(), then exec(), and then
// reads what run() left in the fields; nothing is locked, as those fields belong to the creator
// before start() and after exec(), and to the job between.
//
// An override of run()
//   - runs on the worker thread and may block;
//   - emits _close() as its last act, whatever came out (or _exits(), to end with
//     QDialog::Rejected; it may not block after that);
//   - asks isStopped() between units of work and returns when it says true;
//   - touches no widget: it speaks to the user by the signals of ZRProgressDialog only;
//   - deletes neither the dialog nor the thread.
// A job that can block for long in a call overrides cancel() to wake that call: finishThread()
// waits without a limit.
//
// Every class that overrides run() or cancel() calls finishThread() in its own destructor. In the
// destructor of the base its overrides and fields are gone already while the job still uses them.
class ZRWaitDialog : public ZRDialog
{
    Q_OBJECT

public:
    explicit ZRWaitDialog(QWidget *parent);
    ~ZRWaitDialog() override;

    // Starts the job, after ending the one before it.
    void start();
    // True when the job should end, and when there is none. Any thread.
    bool isStopped() const;
    // Ends the job: raises the stop flag, calls cancel() and blocks the GUI thread, without
    // handling events, until run() has returned. Does nothing without a job.
    void finishThread();

    void reject() override;

    // The job. This one only logs that it ran, so the dialog stays until the user closes it.
    virtual void run();
    // On the GUI thread, with the stop flag up, before the wait for the job.
    virtual void cancel();

signals:
    void _close(); // the job ends the dialog with QDialog::Accepted
    void _exits(); // and with QDialog::Rejected

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void onClose();
    void onExits();

private:
    ZRWaitThread *thread_ = nullptr; // owned; null while there is no job
};
