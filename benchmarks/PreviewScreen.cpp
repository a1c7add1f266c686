#include "PreviewScreen.h"

#include "FleetTimeCode.h"

#include <QVector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XShm.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/socket.h>

#include <vector>

namespace {

// Windows come and go while they are looked at. A request that came too late gives no result, and
// that is all there is to say.
int ignoreError(Display *, XErrorEvent *)
{
    return 0;
}

QVector<unsigned long> clientWindows(Display *display)
{
    const Atom list = XInternAtom(display, "_NET_CLIENT_LIST", False);
    Atom type;
    int format;
    unsigned long count = 0, left;
    unsigned char *data = nullptr;
    XGetWindowProperty(display, DefaultRootWindow(display), list, 0, 1024, False, XA_WINDOW, &type,
        &format, &count, &left, &data);
    QVector<unsigned long> windows;
    for (unsigned long i = 0; i < count; ++i)
        windows << reinterpret_cast<unsigned long *>(data)[i];
    if (data)
        XFree(data);
    return windows;
}

} // namespace

// An image in memory that the X server writes into.
struct PreviewScreen::Image {
    Image(Display *display, QSize size) : display(display)
    {
        const int screen = DefaultScreen(display);
        ximage = XShmCreateImage(display, DefaultVisual(display, screen),
            DefaultDepth(display, screen), ZPixmap, nullptr, &segment, size.width(), size.height());
        if (!ximage || ximage->bits_per_pixel != 32)
            qFatal("The screen has no 32 bits a pixel.");
        segment.shmid =
            shmget(IPC_PRIVATE, ximage->bytes_per_line * ximage->height, IPC_CREAT | 0600);
        segment.shmaddr = ximage->data = static_cast<char *>(shmat(segment.shmid, nullptr, 0));
        segment.readOnly = False;
        XShmAttach(display, &segment);
        XSync(display, False);
        shmctl(segment.shmid, IPC_RMID, nullptr); // gone with its last user
        luma.resize(ximage->width * ximage->height);
    }

    ~Image()
    {
        XShmDetach(display, &segment);
        XDestroyImage(ximage);
        shmdt(segment.shmaddr);
    }

    // The strip is black and white, so green is as good as luma.
    void readLuma()
    {
        uint8_t *out = luma.data();
        for (int y = 0; y < ximage->height; ++y) {
            const char *row = ximage->data + y * ximage->bytes_per_line;
            for (int x = 0; x < ximage->width; ++x)
                *out++ = row[x * 4 + 1];
        }
    }

    Display *display;
    XShmSegmentInfo segment = {};
    XImage *ximage;
    std::vector<uint8_t> luma;
};

PreviewScreen::PreviewScreen() : display(XOpenDisplay(nullptr))
{
    if (!display || !XShmQueryExtension(display))
        qFatal("There is no display with shared memory.");
    XSetErrorHandler(ignoreError);
    XSetScreenSaver(display, 0, 0, DontPreferBlanking, DontAllowExposures);
}

PreviewScreen::~PreviewScreen()
{
    unwatch();
    XCloseDisplay(display);
}

int PreviewScreen::windowCount() const
{
    return clientWindows(display).size();
}

unsigned long PreviewScreen::lastWindow() const
{
    const QVector<unsigned long> windows = clientWindows(display);
    return windows.isEmpty() ? 0 : windows.last();
}

QSize PreviewScreen::sizeOf(unsigned long window) const
{
    XWindowAttributes attributes;
    if (!XGetWindowAttributes(display, window, &attributes))
        return QSize();
    return QSize(attributes.width, attributes.height);
}

void PreviewScreen::watch(unsigned long window, const QRect &picture)
{
    unwatch();
    this->window = window;
    this->picture = picture;
    const FleetTimeCode::Strip strip = FleetTimeCode::strip(picture.width(), picture.height());
    image = new Image(display, QSize(strip.width, strip.height));
}

void PreviewScreen::unwatch()
{
    delete image;
    image = nullptr;
    window = 0;
}

// The strip begins in the picture's upper left corner.
qint64 PreviewScreen::readTimeCode()
{
    if (!window
        || !XShmGetImage(display, window, image->ximage, picture.x(), picture.y(), AllPlanes))
        return -1;
    image->readLuma();
    return FleetTimeCode::read(
        image->luma.data(), image->ximage->width, picture.width(), picture.height());
}

qint64 PreviewScreen::serverProcess() const
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    getsockopt(ConnectionNumber(display), SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return peer.pid;
}
