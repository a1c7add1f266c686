#pragma once

#include "VorlynDeviceSettingsDialog.h"

#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

// Waits until a dialog whose job runs has ended by itself, which is with acceptance.
inline void finish(QDialog &dialog)
{
    QSignalSpy finished(&dialog, &QDialog::finished);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 30000);
    QCOMPARE(finished.first().first().toInt(), int(QDialog::Accepted));
}

// Runs a filled dialog to its end; the talk with the camera happens meanwhile. No such dialog shows
// more than that it is busy.
inline void runToEnd(
    VorlynDeviceSettingsDialog &dialog, const std::function<void()> &talk = [] {})
{
    dialog.start();
    dialog.show();
    talk();
    finish(dialog);
    QCOMPARE(dialog.findChild<QLabel *>("messageLabel")->text(), QString());
    QCOMPARE(dialog.findChild<QProgressBar *>("progressBar")->maximum(), 0);
}
