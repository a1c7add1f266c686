#pragma once

#include "VorlynDevice.h"
#include "ZRDialog.h"

#include <QGenericArgument>

class QPushButton;

// What the dialogs of the line test have in common, each of which is for one function of a device:
// two answers of the operator, and slots that a report of the device calls. The dialogs are modal
// and take their texts in the language at their making.
// Keys: Enter is the answer that passes while it is enabled, Esc the one that fails. Neither has
// the focus at first, and a key that is still held answers nothing: it is pressed for each answer.
// Thread: the GUI's, but the update slots may be called from any: elsewhere they return at once and
// act when the GUI thread's event loop next runs.
class FactoryDialog : public ZRDialog
{
public:
    FactoryDialog(QWidget *parent, const char *titleKey);
    ~FactoryDialog() override;

    // The device on the line, for the dialogs that send it something.
    virtual void setDevice(const VorlynDevice &device);

protected:
    // New children with their captions; passing accepts the dialog, failing rejects it.
    QPushButton *makePassButton();
    QPushButton *makeFailButton();
    // For who stands at arm's length.
    static void setPointSize(QWidget *widget, int pointSize);
    // The head of an update slot, with its own name: true when another thread called it, and the
    // dialog's own will call it again.
    bool crossed(const char *slot, QGenericArgument first = QGenericArgument(),
        QGenericArgument second = QGenericArgument());
};
