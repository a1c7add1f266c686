#include "ZRText.h"

#include <QStringList>

#include <algorithm>

namespace {
bool isInside(int position, const QString &text)
{
    return position >= 0 && position < text.size() - 1;
}
}

QString fileNameOf(const QString &path)
{
    const int separator = std::max(path.lastIndexOf('/'), path.lastIndexOf('\\'));
    return isInside(separator, path) ? path.mid(separator + 1) : path;
}

QString fileBaseNameOf(const QString &path)
{
    const QString name = fileNameOf(path);
    const int dot = name.lastIndexOf('.');
    return isInside(dot, name) ? name.left(dot) : name;
}

QString parseDid(const QString &text)
{
    for (const QString &line : text.split('\n')) {
        const QStringList parts = line.trimmed().split('=');
        if (parts.size() == 2
            && parts[0].trimmed().compare(QLatin1String("did"), Qt::CaseInsensitive) == 0)
            return parts[1].trimmed();
    }
    return QString();
}
