#include "FactoryDialog.h"

#include "FactoryKeys.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"

#include <QPushButton>
#include <QThread>

FactoryDialog::FactoryDialog(QWidget *parent, const char *titleKey) : ZRDialog(parent)
{
    setWindowTitle(ZRLocalize::translate(titleKey));
    setFocusPolicy(Qt::ClickFocus);
    setFocus();
    ignoreHeldKeys(this);
}

FactoryDialog::~FactoryDialog() = default;

void FactoryDialog::setDevice(const VorlynDevice &) { }

QPushButton *FactoryDialog::makePassButton()
{
    auto *button = namedChild<QPushButton>(this, "passButton");
    button->setText(ZRLocalize::translate("Pass"));
    button->setDefault(true);
    ignoreHeldKeys(button);
    connect(button, &QPushButton::clicked, this, &QDialog::accept);
    return button;
}

QPushButton *FactoryDialog::makeFailButton()
{
    auto *button = namedChild<QPushButton>(this, "failButton");
    button->setText(ZRLocalize::translate("Failure"));
    ignoreHeldKeys(button);
    connect(button, &QPushButton::clicked, this, &QDialog::reject);
    return button;
}

void FactoryDialog::setPointSize(QWidget *widget, int pointSize)
{
    QFont font = widget->font();
    font.setPointSize(pointSize);
    widget->setFont(font);
}

bool FactoryDialog::crossed(const char *slot, QGenericArgument first, QGenericArgument second)
{
    if (QThread::currentThread() == thread())
        return false;
    QMetaObject::invokeMethod(this, slot, Qt::QueuedConnection, first, second);
    return true;
}
