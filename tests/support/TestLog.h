#pragma once

#include "LogPane.h"
#include "ZRLocalize.h"

#include <QListWidget>

// The lines of a test log as linesOf() tells them, in the language that is loaded.
namespace TestLog {

inline const char blue[] = "#2020e0"; // banners
inline const char black[] = "#000000";
inline const char red[] = "#ff0000"; // failures

inline QString text(const char *key)
{
    return ZRLocalize::translate(key);
}

inline QString bannerLine(const char *key)
{
    return QString(blue) + " ************************" + text(key) + "***********************";
}

inline QString infoLine(const char *key, const QString &value)
{
    return QString(black) + ' ' + text(key) + " : " + value;
}

inline QString result(const char *title, bool passed, const QString &value = QString())
{
    const QString line = QString(passed ? black : red) + ' ' + text(title) + " : "
        + text(passed ? "Pass" : "Failure");
    return value.isNull() ? line : line + ' ' + value;
}

// What a list of networks shows.
inline QStringList networksOf(const QWidget &wifiInfoWidget)
{
    QStringList texts;
    const auto *list = wifiInfoWidget.findChild<QListWidget *>("wifiList");
    for (int row = 0; row < list->count(); ++row)
        texts.append(list->item(row)->text());
    return texts;
}

}
