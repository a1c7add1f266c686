#pragma once

#include "Frames.h"

#include <QObject>
#include <QWidget>

#include <memory>

class ZRVideoView;

// What every view has to show, on the screen; a test program is this with one kind of view.
class PictureTest : public QObject
{
    Q_OBJECT

protected:
    struct View {
        QWidget *widget;
        ZRVideoView *video;
    };
    virtual View createView(QWidget *parent) = 0;

    // A window with the view in its middle, on a ground that isn't black.
    void open(const QSize &viewSize);

    std::unique_ptr<QWidget> window;
    View view = {};

private slots:
    void cleanup();
    void isBlackWithoutAFrame();
    void showsThePicture_data();
    void showsThePicture();
    void namedMatrixIsUsed_data();
    void namedMatrixIsUsed();
    void tellsRangesApart();
    void streamMayChangeItsSize();
    void windowMayChangeItsSize();
    void lastFrameStands();
    void comesBackAfterBeingHidden();
    void clearMakesBlack();
    void nullMakesBlack();
    void oddFramesDoNoHarm_data();
    void oddFramesDoNoHarm();
    void sizeMayChangeWithEveryFrame();
    void framesComeFromAnotherThread();

private:
    bool shows(const AVFrame &frame);
};
