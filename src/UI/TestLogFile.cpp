#include "TestLogFile.h"

#include "TestLogColors.h"
#include "ZRLocalize.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStringList>
#include <QTextBlock>
#include <QTextDocument>

namespace {
const char byteOrderMark[] = "\xef\xbb\xbf";
const char lineEnd[] = "\r\n";

// The log writes a line in one colour.
QString kindOf(const QTextBlock &block)
{
    const QColor color = block.begin().atEnd()
        ? passColor
        : block.begin().fragment().charFormat().foreground().color();
    if (color == bannerColor)
        return ZRLocalize::translate(QStringLiteral("Log Heading"));
    if (color == failureColor)
        return ZRLocalize::translate(QStringLiteral("Failure"));
    return ZRLocalize::translate(QStringLiteral("Log Information"));
}

// A break within a line is a character of its own in a document.
QString textOf(const QTextBlock &block)
{
    return block.text().replace(QChar::LineSeparator, QLatin1Char('\n'));
}

// With an apostrophe wherever a spreadsheet would begin to calculate: it may pass over white space
// in front, knows the wide forms of the signs too, and can be set to begin a cell within the text.
QString withoutFormula(QString text)
{
    static const QRegularExpression formula(
        QStringLiteral("(^|[;\\t\\r\\n])(?=\\s*[=+\\-@\uff1d\uff0b\uff0d\uff20])|^(?=[\\t\\r])"),
        QRegularExpression::UseUnicodePropertiesOption);
    return text.replace(formula, QStringLiteral("\\1'"));
}

QString cell(const QString &text)
{
    const QString safe = withoutFormula(text).replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QStringLiteral("\"%1\"").arg(safe);
}

QString row(const QStringList &texts)
{
    QStringList cells;
    for (const QString &text : texts)
        cells.append(cell(text));
    return cells.join(QLatin1Char(','));
}
}

TestLogFile::TestLogFile(const QTextDocument &log)
{
    if (log.isEmpty())
        return; // which has one block all the same
    for (QTextBlock block = log.begin(); block.isValid(); block = block.next())
        lines.append({kindOf(block), textOf(block)});
}

TestLogFile::Format TestLogFile::formatOf(const QString &path)
{
    const bool csv =
        QFileInfo(path).suffix().compare(QLatin1String("csv"), Qt::CaseInsensitive) == 0;
    return csv ? Format::Csv : Format::Text;
}

QByteArray TestLogFile::contents(Format format) const
{
    QStringList rows;
    if (format == Format::Csv) {
        rows.append(row({ZRLocalize::translate(QStringLiteral("No.")),
            ZRLocalize::translate(QStringLiteral("Log Kind")),
            ZRLocalize::translate(QStringLiteral("Test Log"))}));
    }
    for (const Line &line : lines) {
        rows.append(format == Format::Csv
                ? row({QString::number(rows.size()), line.kind, line.text})
                : QString(line.text).replace(QLatin1Char('\n'), QLatin1String(lineEnd)));
    }
    QByteArray bytes = byteOrderMark;
    for (const QString &text : qAsConst(rows))
        bytes += text.toUtf8() + lineEnd;
    return bytes;
}

QString TestLogFile::write(const QString &path) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    // Where room runs out, a write is a short one and no error.
    const QByteArray bytes = contents(formatOf(path));
    const bool complete = file.write(bytes) == bytes.size() && file.flush();
    return complete && file.commit() ? QString() : file.errorString();
}
