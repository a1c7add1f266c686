#pragma once

#include <QSet>
#include <QStringList>

#include <deque>
#include <functional>
#include <utility>
#include <vector>

// Direct3D 9 as the program finds it where Direct3DCreate9 is wrapped: writes down each call with
// all its arguments, as "device.Present(null, null, null, null)", and can have any of them fail.
// Objects go by the names direct3d, device, surface, backBuffer, chain, picture (a hardware
// frame's surface), decoderDevice (the one that made it), ownChain (that one's own), and
// nextPicture and nextDevice of a second decoder. One at a time, on the GUI thread. What is
// presented is red.
class FakeDirect3D9
{
public:
    FakeDirect3D9();
    ~FakeDirect3D9();

    // What was called since the last take.
    QStringList take() { return std::exchange(calls, {}); }

    QStringList calls;
    QSet<QString> failing; // as "device.Present"
    std::function<void(const QString &)> onCall; // gets "device.Present"

    quint32 devCaps = 0x10000;
    int pitch = 2048;
    std::vector<quint8> memory = std::vector<quint8>(4 << 20); // of the surface
    std::function<quintptr()> window; // the handle that goes by "window"

    // The first or second decoder's surface, whose reference it keeps, as that to its device.
    void *picture(int decoder = 0);

    // Objects with references left and how many, as "device 1".
    QStringList alive() const;

    struct Object {
        const void *table; // where COM looks for it
        const char *name;
        int references;
    };
    Object *make(const void *table, const char *name);
    // Notes the call and gives its result.
    long call(const Object *object, const char *operation, const QString &arguments = {});
    long call(const QString &name, const QString &arguments);

private:
    std::deque<Object> objects; // released ones stay, so that a call to one is seen
    Object *lentPictures[2] = {};
};
