#include "ZRPixmapCache.h"

#include <QGuiApplication>
#include <QMap>

namespace {
struct Entry {
    QMap<int, QPixmap> pixmaps; // by width
    int originalWidth = 0;
};

// A pixmap, unlike an icon, doesn't look for the file of a dense screen by itself.
QPixmap load(const QString &path)
{
    if (qGuiApp->devicePixelRatio() > 1) {
        QString densePath = path;
        const QPixmap dense(densePath.insert(path.lastIndexOf('.'), "@2x"));
        if (dense.devicePixelRatioF() > 1)
            return dense;
    }
    return QPixmap(path);
}

QPixmap scaledToWidth(const QPixmap &original, int width)
{
    const qreal ratio = original.devicePixelRatioF();
    QPixmap scaled = original.scaledToWidth(qRound(width * ratio), Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(ratio);
    return scaled;
}
}

QPixmap ZRPixmapCache::pixmap(const QString &path, int width)
{
    // Never destroyed, as a pixmap may not outlive the application object's display connection.
    static auto &entries = *new QMap<QString, Entry>;

    if (path.isEmpty())
        return {};
    Entry &entry = entries[path];
    if (entry.pixmaps.isEmpty()) {
        const QPixmap original = load(path);
        entry.originalWidth = size(original).width();
        entry.pixmaps.insert(entry.originalWidth, original);
    }
    const int wanted = width == 0 ? entry.originalWidth : width;
    if (!entry.pixmaps.contains(wanted)) {
        const QPixmap original = entry.pixmaps.value(entry.originalWidth);
        entry.pixmaps.insert(wanted, scaledToWidth(original, wanted));
    }
    return entry.pixmaps.value(wanted);
}

QSize ZRPixmapCache::size(const QPixmap &pixmap)
{
    return pixmap.isNull() ? QSize(0, 0) : pixmap.size() / pixmap.devicePixelRatioF();
}
