#pragma once

class QWidget;
class ZRVideoView;
struct AVFrame;

// Frames from another thread, two in a turn of this one, where the view's size changes with each
// turn and the view is cleared now and then: the card and grey frames of changing sizes.
void passFrameStorm(QWidget &widget, ZRVideoView &video, AVFrame *card, int turns);
