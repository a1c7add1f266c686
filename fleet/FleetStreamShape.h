#pragma once

#include <QJsonObject>
#include <QSize>

// What a camera's stream carries.
struct FleetStreamShape {
    enum Video { NoVideo, H264, H265 };
    enum Audio { NoAudio, Aac, Pcma };

    Video video = H264;
    Audio audio = Aac;
    QSize size{1280, 720};
    int fps = 25; // a key frame comes each second
    QSize nextSize; // invalid: the size never changes
    double nextSizeAfter = 5; // seconds that the stream has run
    bool always = false; // runs without viewers too
    bool closed = false; // connections are refused

    // The stream of a camera about which nothing was said; positions count from 1.
    static FleetStreamShape usual(int position);

    // Changes what the object of a scenario tells. Returns what is wrong with it, or an empty text.
    QString read(const QJsonObject &object);
    bool isEmpty() const { return video == NoVideo && audio == NoAudio; }
    // What it is for the journal.
    QJsonObject description() const;
};
