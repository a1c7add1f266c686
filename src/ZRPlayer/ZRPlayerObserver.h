#pragma once

class ZRPlayer;
class ZRPlayerReader;
class ZRPlayerRender;

// How events travel upward in the player. A callback runs on the thread of the stage that raised
// it and must return soon; what the types mean stands at the class that raises them.

class ZRPlayerReaderObserver
{
public:
    virtual ~ZRPlayerReaderObserver() = default;
    virtual void onReaderNotify(ZRPlayerReader * /*reader*/, int /*type*/) { }
};

class ZRPlayerRenderObserver
{
public:
    virtual ~ZRPlayerRenderObserver() = default;
    virtual void onRenderNotify(ZRPlayerRender * /*render*/, int /*type*/) { }
};

class ZRPlayerObserver
{
public:
    virtual ~ZRPlayerObserver() = default;
    // `current` and `total` are seconds.
    virtual void onPlayerNotify(
        ZRPlayer * /*player*/, int /*type*/, double /*current*/, double /*total*/)
    { }
};
