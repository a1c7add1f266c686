#pragma once

#include <QStringList>
#include <QTextBlock>
#include <QTextEdit>

// What stands in a coloured log, a line each: "#ff0000 text". A line of several colours has them
// all in front.
inline QStringList linesOf(const QTextEdit &log)
{
    QStringList lines;
    for (QTextBlock block = log.document()->begin(); block.isValid(); block = block.next()) {
        QStringList words;
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QString color = part.fragment().charFormat().foreground().color().name();
            if (!words.contains(color))
                words.append(color);
        }
        lines.append((words << block.text()).join(' '));
    }
    return log.document()->isEmpty() ? QStringList() : lines;
}
