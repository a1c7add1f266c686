#pragma once

#include "ZRDialog.h"

class QLabel;
class QPushButton;

// The program's message box: a question or a notice over two buttons.
class ZRAlertDialog : public ZRDialog
{
public:
    explicit ZRAlertDialog(QWidget *parent);
    ~ZRAlertDialog() override;

    // Blocks until it is answered: QDialog::Accepted for the first button, QDialog::Rejected for
    // the second and for closing. Texts come translated; the default ones are "Ok" and "Cancel".
    static int alert(QString message);
    static int alert(QString message, QString okText, QString cancelText);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    // Sizes the dialog for it.
    void setMessage(const QString &message);

    QLabel *messageLabel;
    QPushButton *okButton;
    QPushButton *cancelButton;
};
