#pragma once

#include "Painting.h"
#include "VorlynDeviceVideoView.h"
#include "ZRDirectVideoView.h"
#include "ZRLabel.h"
#include "ZRPixmapsButton.h"
#include "ZRPlayer.h"
#include "ZRProgress.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <QPointer>

// A look into a preview pane: what it shows, and what it has told its player. GUI thread.
class PreviewProbe
{
public:
    PreviewProbe() = default;
    explicit PreviewProbe(VorlynDeviceVideoView *panel) : panel(panel) { }

    template <class Widget> Widget *child(const char *name) const
    {
        return panel->findChild<Widget *>(name, Qt::FindDirectChildrenOnly);
    }
    ZRDirectVideoView *view() const { return child<ZRDirectVideoView>("videoView"); }
    ZRPixmapsButton *playButton() const { return child<ZRPixmapsButton>("playButton"); }
    ZRPixmapsButton *audioButton() const { return child<ZRPixmapsButton>("audioButton"); }
    ZRPixmapsButton *extraButton() const { return child<ZRPixmapsButton>("extraButton"); }
    ZRLabel *timeLabel() const { return child<ZRLabel>("timeLabel"); }
    ZRProgress *spinner() const { return child<ZRProgress>("progress"); }

    bool isChecked() const { return playButton()->isChecked(); }
    QString time() const { return timeLabel()->text(); }
    // It was told to show itself, and it paints, which it does only while it turns.
    bool isSpinning() const
    {
        return !spinner()->isHidden() && !paintedArea(painted(*spinner())).isNull();
    }
    bool holdsPicture() const { return (view()->*(&View::frame))->width > 0; }

    QString url() const { return panel->*(&Panel::url); }
    ZRPlayer *player() const { return panel->*(&Panel::player); }
    std::string playedUrl() const { return player()->*(&Player::url); }
    double volume() const { return player()->*(&Player::volume); }
    int hardwareType() const { return player()->*(&Player::hardwareType); }
    bool isRealtime() const { return player()->*(&Player::realtime); }
    const ZRPlayerObserver *observer() const { return player()->*(&Player::observer); }
    const ZRVideoView *playersView() const { return player()->*(&Player::videoView); }

private:
    // Never made: they name the fields for the pointers to members above.
    struct Panel : VorlynDeviceVideoView {
        using VorlynDeviceVideoView::player;
        using VorlynDeviceVideoView::url;
    };
    struct Player : ZRPlayer {
        using ZRPlayer::hardwareType;
        using ZRPlayer::observer;
        using ZRPlayer::realtime;
        using ZRPlayer::url;
        using ZRPlayer::videoView;
        using ZRPlayer::volume;
    };
    struct View : ZRDirectVideoView {
        using ZRDirectVideoView::frame;
    };

    QPointer<VorlynDeviceVideoView> panel;
};
