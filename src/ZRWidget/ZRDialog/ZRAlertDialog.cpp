#include "ZRAlertDialog.h"

#include "ZRLocalize.h"
#include "ZRNamedChild.h"

#include <QLabel>
#include <QPushButton>

namespace {
constexpr QSize aroundMessage(100, 100);
constexpr QSize smallestMessage(200, 40);

void setFittingText(QPushButton *button, const QString &text)
{
    button->setText(text);
    button->adjustSize();
}
}

ZRAlertDialog::ZRAlertDialog(QWidget *parent) :
    ZRDialog(parent),
    messageLabel(namedChild<QLabel>(this, "messageLabel")),
    okButton(namedChild<QPushButton>(this, "okButton")),
    cancelButton(namedChild<QPushButton>(this, "cancelButton"))
{
    setMinimumSize(300, 90);
    for (QPushButton *button : {okButton, cancelButton})
        button->setMinimumWidth(100);
    setFittingText(okButton, ZRLocalize::translate("Ok"));
    setFittingText(cancelButton, ZRLocalize::translate("Cancel"));
    messageLabel->setAlignment(Qt::AlignCenter);
    connect(okButton, &QPushButton::clicked, this, [this] { accept(); });
    connect(cancelButton, &QPushButton::clicked, this, [this] { reject(); });
}

ZRAlertDialog::~ZRAlertDialog() = default;

int ZRAlertDialog::alert(QString message)
{
    ZRAlertDialog dialog(nullptr);
    dialog.setMessage(message);
    return dialog.exec();
}

int ZRAlertDialog::alert(QString message, QString okText, QString cancelText)
{
    ZRAlertDialog dialog(nullptr);
    dialog.setMessage(message);
    setFittingText(dialog.okButton, okText);
    setFittingText(dialog.cancelButton, cancelText);
    return dialog.exec();
}

void ZRAlertDialog::resizeEvent(QResizeEvent *event)
{
    ZRDialog::resizeEvent(event);

    const int half = width() / 2;
    const int buttonWidth = okButton->width(); // of both, however long the second one's text
    const int inset = (half - buttonWidth) / 2;
    okButton->setGeometry(inset, height() - 60, buttonWidth, 30);
    cancelButton->setGeometry(half + inset, height() - 60, buttonWidth, 30);
    messageLabel->setGeometry(20, 10, width() - 40, height() - 70);
}

void ZRAlertDialog::setMessage(const QString &message)
{
    messageLabel->setText(message);
    messageLabel->adjustSize();
    resize(messageLabel->size().expandedTo(smallestMessage) + aroundMessage);
}
