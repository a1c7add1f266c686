#pragma once

#include "ZRWidget.h"

// The preview pane. There is no player behind it yet: it stays black and only keeps the address.
class VorlynDeviceVideoView : public ZRWidget
{
public:
    explicit VorlynDeviceVideoView(QWidget *parent);

    void play(const QString &url);
    void stop();
    bool isPlaying() const; // false, as nothing plays
    // What play() was last given; empty after stop().
    QString url() const;

private:
    QString url_;
};
