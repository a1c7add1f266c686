#pragma once

#include "VorlynDevice.h"

#include <QString>

class VorlynDevicesWidget;
class ZRWaitDialog;

// What the panels' slots have in common: calls that block, handling events, until a dialog ends.
// GUI thread.

// Runs a dialog's job to its end. Returns the dialog's result.
int startAndExec(ZRWaitDialog &dialog);

// A write of one value a device, by a dialog of that class, which hands the records to `table`.
template <class Dialog>
int writeDevices(VorlynDevicesWidget *table, const QVector<VorlynDevice> &devices,
    const QVector<QString> &values)
{
    Dialog dialog(nullptr);
    dialog.setDevicesWidget(table);
    dialog.setDevices(devices, values);
    return startAndExec(dialog);
}

// Path of an existing file that the user chooses; empty when there is no choice.
QString chooseFile();
