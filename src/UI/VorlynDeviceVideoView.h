#pragma once

#include "ZRLocalize.h"
#include "ZRPlayerObserver.h"
#include "ZRWidget.h"

class ZRLabel;
class ZRPixmapsButton;
class ZRProgress;
class ZRVideoView;

// The preview pane: a picture, under it play, mute and clock, and a spinner while a stream starts.
// It knows nothing of devices, only addresses.
// Thread: the GUI's. play() and stop() wait there until the player's threads have ended. Only the
// player's events come from those threads, and cross to the GUI thread by themselves.
class VorlynDeviceVideoView : public ZRWidget, public ZRLocalize, public ZRPlayerObserver
{
    Q_OBJECT

public:
    explicit VorlynDeviceVideoView(QWidget *parent);
    ~VorlynDeviceVideoView() override;

    // In place of what plays. Success or failure shows later: the spinner turns until there is a
    // picture, and goes on turning when there is none to come.
    void play(const QString &url);
    void stop();
    // From play() to stop(), a stream that failed or was lost included.
    bool isPlaying() const;
    // A child widget of the pane, which owns it, in place of the ZRDirectVideoView that it has from
    // the start. A stream that is open opens anew.
    void setVideoView(ZRVideoView *view);

    void onPlayerNotify(ZRPlayer *player, int type, double current, double total) override;

protected:
    void resizeEvent(QResizeEvent *event) override;

    QString url; // of the last play()
    ZRPlayer *player; // owned
    ZRVideoView *videoView;
    ZRPixmapsButton *playButton; // checked while a stream is wanted: then a click stops it
    ZRPixmapsButton *audioButton; // checked is mute
    ZRPixmapsButton *extraButton; // hidden
    ZRLabel *timeLabel;
    ZRProgress *progress;

private slots:
    // What an event of the player (see ZRPlayer) changes here. `current` is seconds.
    void updatePlay(int type, double current, double total);

private:
    void onClickPlayButton();
    void onClickAudioButton();
    void onClickExtraButton();
    void connectButtons();
    void placeVideoView();
    void setUpPlayer();
    void readHardwareSetting();
    void start(); // the stream at `url`
    void showTime(double seconds);
};
