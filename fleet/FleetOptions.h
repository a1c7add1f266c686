#pragma once

#include <QHostAddress>
#include <QString>

// What a fleet is made of. docs/fleet.md tells each as an option of the program.
struct FleetOptions {
    QString interface;
    int count = 1;
    QHostAddress firstAddress; // null: the interface's own plus 10
    quint64 firstMac = 0x02564C000001;
    bool ownAddresses = true;
    int httpPort = 80; // 0: no web servers
    int rtspPort = -1; // 0: no streams; below 0: 8554 where cameras have their own addresses
    double spreadSeconds = 0;
    bool randomSpread = false;
    double restartSeconds = 3;
    QHostAddress poolFirst; // null: no DHCP pool
    QHostAddress poolLast;
    QString scenario; // path, empty for none
    QString journal; // path, "-" for standard output, empty for none
    bool sha256 = false;
    quint32 seed = 1;

    // Port of one camera's web server; cameras count from 0.
    int httpPortOf(int camera) const
    {
        return ownAddresses || httpPort == 0 ? httpPort : httpPort + camera;
    }
    // The same of its RTSP server, 0 for none.
    int rtspPortOf(int camera) const
    {
        if (rtspPort < 0)
            return ownAddresses ? usualRtspPort : 0;
        return ownAddresses || rtspPort == 0 ? rtspPort : rtspPort + camera;
    }

    static constexpr int usualRtspPort = 8554;
};
