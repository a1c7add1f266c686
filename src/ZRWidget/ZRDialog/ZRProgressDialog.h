#pragma once

#include "ZRWaitDialog.h"

class QLabel;
class QProgressBar;

// A wait dialog with a line of text over a busy bar. The job drives both by the signals, never by
// the slots. A derived class with a job ends it in its own destructor, see ZRWaitDialog.
class ZRProgressDialog : public ZRWaitDialog
{
    Q_OBJECT

public:
    explicit ZRProgressDialog(QWidget *parent);
    ~ZRProgressDialog() override;

signals:
    void _setProgress(float progress); // 0.0 to 1.0
    void _setMessage(QString msg);

public slots:
    // Kept as a whole percentage; the bar has no range, so it goes on showing that it is busy.
    void setProgress(float progress);
    void setMessage(QString msg);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QLabel *messageLabel;
    QProgressBar *progressBar;
};
