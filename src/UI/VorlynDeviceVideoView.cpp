#include "VorlynDeviceVideoView.h"

VorlynDeviceVideoView::VorlynDeviceVideoView(QWidget *parent) : ZRWidget(parent)
{
    setBackgroundColor(Qt::black);
}

void VorlynDeviceVideoView::play(const QString &url)
{
    url_ = url;
}

void VorlynDeviceVideoView::stop()
{
    url_.clear();
}

bool VorlynDeviceVideoView::isPlaying() const
{
    return false;
}

QString VorlynDeviceVideoView::url() const
{
    return url_;
}
