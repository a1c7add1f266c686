#include "VorlynDeviceVideoView.h"

#include "ZRConfigure.h"
#include "ZRDirectVideoView.h"
#include "ZRLabel.h"
#include "ZRNamedChild.h"
#include "ZRPixmapsButton.h"
#include "ZRPlayer.h"
#include "ZRProgress.h"

#include <QThread>

#include <cstdio>
#include <limits>

namespace {
constexpr int noHardware = 0;
constexpr int dxva2 = 4; // AV_HWDEVICE_TYPE_DXVA2
constexpr int barHeight = 30;
constexpr int buttonSide = 20;
constexpr int buttonGap = 10;
constexpr int spinnerSide = 30;

bool takesHardwareFrames(const ZRVideoView *view)
{
    return dynamic_cast<const ZRDirectVideoView *>(view);
}
}

VorlynDeviceVideoView::VorlynDeviceVideoView(QWidget *parent) :
    ZRWidget(parent),
    player(new ZRPlayer),
    videoView(namedChild<ZRDirectVideoView>(this, "videoView")),
    playButton(namedChild<ZRPixmapsButton>(this, "playButton")),
    audioButton(namedChild<ZRPixmapsButton>(this, "audioButton")),
    extraButton(namedChild<ZRPixmapsButton>(this, "extraButton")),
    timeLabel(namedChild<ZRLabel>(this, "timeLabel")),
    progress(namedChild<ZRProgress>(this, "progress"))
{
    setBackgroundColor(Qt::black);
    connectButtons();
    playButton->setPixmaps(QStringLiteral(":/resources/play.png"),
        QStringLiteral(":/resources/pause.png"), buttonSide);
    audioButton->setPixmaps(QStringLiteral(":/resources/audio.png"),
        QStringLiteral(":/resources/audio_mute.png"), buttonSide);
    setUpPlayer();
    extraButton->setHidden(true);
    timeLabel->setTextColor(Qt::white);
    timeLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    progress->setColor(Qt::white);
}

VorlynDeviceVideoView::~VorlynDeviceVideoView()
{
    player->close();
    delete player;
}

void VorlynDeviceVideoView::connectButtons()
{
    const struct {
        ZRPixmapsButton *button;
        void (VorlynDeviceVideoView::*action)();
    } clicks[] = {
        {playButton, &VorlynDeviceVideoView::onClickPlayButton},
        {audioButton, &VorlynDeviceVideoView::onClickAudioButton},
        {extraButton, &VorlynDeviceVideoView::onClickExtraButton},
    };
    for (const auto &click : clicks)
        connect(click.button, &ZRPixmapsButton::clicked, this, click.action);
}

void VorlynDeviceVideoView::setUpPlayer()
{
    player->setVideoView(videoView);
    player->setVolume(1.0);
    player->setObserver(this);
    player->setRealtime(true);
    readHardwareSetting();
}

void VorlynDeviceVideoView::readHardwareSetting()
{
    const bool hardware = takesHardwareFrames(videoView) && ZRConfigure().hardware();
    player->setHardwareType(hardware ? dxva2 : noHardware);
}

void VorlynDeviceVideoView::play(const QString &url)
{
    this->url = url;
    start();
}

void VorlynDeviceVideoView::start()
{
    player->close();
    readHardwareSetting(); // the settings dialog may have changed it since
    player->open(url.toStdString());
    playButton->setChecked(true);
    progress->startAnimation();
}

void VorlynDeviceVideoView::stop()
{
    player->close();
    progress->stopAnimation();
    playButton->setChecked(false);
    videoView->clear();
    timeLabel->setText(QString());
}

bool VorlynDeviceVideoView::isPlaying() const
{
    return player->isOpened();
}

void VorlynDeviceVideoView::setVideoView(ZRVideoView *view)
{
    const bool wasPlaying = isPlaying();
    stop();
    delete videoView;
    videoView = view;
    player->setVideoView(view);
    if (auto *widget = dynamic_cast<QWidget *>(view)) {
        widget->setObjectName(QStringLiteral("videoView"));
        placeVideoView();
        widget->lower(); // the spinner turns over it
        widget->show();
    }
    if (wasPlaying)
        start();
}

// There is no pause: the button ends the stream and opens it anew.
void VorlynDeviceVideoView::onClickPlayButton()
{
    if (playButton->isChecked())
        stop();
    else if (!url.isEmpty())
        start();
}

void VorlynDeviceVideoView::onClickAudioButton()
{
    const bool muted = audioButton->isChecked();
    const double volume = muted ? 1.0 : 0.0;
    audioButton->setChecked(!muted);
    player->setVolume(volume);
}

void VorlynDeviceVideoView::onClickExtraButton() { }

void VorlynDeviceVideoView::onPlayerNotify(ZRPlayer *, int type, double current, double total)
{
    updatePlay(type, current, total);
}

// Events that were under way when the stream was stopped or replaced have their effect all the
// same.
void VorlynDeviceVideoView::updatePlay(int type, double current, double total)
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "updatePlay", Qt::QueuedConnection, Q_ARG(int, type),
            Q_ARG(double, current), Q_ARG(double, total));
        return;
    }
    switch (type) {
    case 0: // opened
        timeLabel->setText(QStringLiteral("00:00:00"));
        break;
    case 1: // opening failed; the spinner goes on
        timeLabel->setText(QString());
        playButton->setChecked(false);
        videoView->clear();
        break;
    case 2: // first picture
        progress->stopAnimation();
        break;
    case 3: // end
        timeLabel->setText(QString());
        progress->stopAnimation();
        break;
    case 4: // further picture
        showTime(current);
        break;
    }
}

void VorlynDeviceVideoView::showTime(double seconds)
{
    // Only what an int can hold may be cut to one.
    if (!(seconds > -1.0 && seconds <= std::numeric_limits<int>::max()))
        return;
    const int t = int(seconds);
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", t / 3600, t % 3600 / 60, t % 60);
    timeLabel->setText(QString::fromLatin1(text));
}

// The bar of controls takes the foot; the spinner turns in the middle of the picture above it.
void VorlynDeviceVideoView::resizeEvent(QResizeEvent *event)
{
    ZRWidget::resizeEvent(event);
    const int w = width();
    const int h = height();
    placeVideoView();
    const int top = h - 25;
    playButton->setGeometry(buttonGap, top, buttonSide, buttonSide);
    const int audioLeft = playButton->geometry().right() + buttonGap;
    audioButton->setGeometry(audioLeft, top, buttonSide, buttonSide);
    extraButton->setGeometry(w - 35, top, buttonSide, buttonSide);
    timeLabel->setGeometry(w - 100, top, 80, buttonSide);
    progress->setGeometry((w - spinnerSide) / 2, (h - 60) / 2, spinnerSide, spinnerSide);
}

void VorlynDeviceVideoView::placeVideoView()
{
    if (auto *view = dynamic_cast<QWidget *>(videoView))
        view->setGeometry(0, 0, width(), height() - barHeight);
}
