#pragma once

#include "MediaButton.h"
#include "ModalDriver.h"

// Clicks a button of a window's header, and turns down the parentless dialog that comes.
template <class Dialog> void opens(MediaButton *button)
{
    const ModalDriver<Dialog> driver([](Dialog &dialog) {
        QVERIFY(!dialog.parentWidget());
        dialog.reject();
    });
    emit button->clicked();
}
