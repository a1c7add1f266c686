#include "ZRLocalize.h"

#include <QFile>
#include <QList>
#include <QMap>
#include <QStringList>
#include <QTextCodec>
#include <QTextStream>

namespace {

QString languageFolder;
QString languageFile;
QList<ZRLocalize *> objects; // in the order of their making
QMap<QString, QString> table; // keys in lower case

QString path()
{
    const QString name = languageFile.endsWith(QLatin1String(".txt"))
        ? languageFile
        : QStringLiteral("%1.txt").arg(languageFile);
    const bool closed = languageFolder.endsWith(QLatin1Char('/'));
    return (closed ? QStringLiteral("%1%2") : QStringLiteral("%1/%2")).arg(languageFolder, name);
}

// Spaces around, semicolons behind and then one quotation mark at each end go; tabs stay.
QString cleaned(const QString &text)
{
    constexpr QLatin1Char space(' ');
    constexpr QLatin1Char quote('"');
    int begin = 0;
    int end = text.size();
    while (begin < end && text[begin] == space)
        ++begin;
    while (begin < end && (text[end - 1] == space || text[end - 1] == QLatin1Char(';')))
        --end;
    if (begin < end && text[begin] == quote)
        ++begin;
    if (begin < end && text[end - 1] == quote)
        --end;
    return text.mid(begin, end - begin);
}

void addLine(const QString &line)
{
    const QStringList parts = line.split(QLatin1Char('='));
    if (parts.size() == 2)
        table.insert(cleaned(parts[0]).toLower(), cleaned(parts[1]));
}

}

ZRLocalize::ZRLocalize()
{
    objects.removeAll(this);
    objects.append(this);
}

ZRLocalize::~ZRLocalize()
{
    objects.removeAll(this);
}

void ZRLocalize::onLanguageChanged() { }

void ZRLocalize::setLanguageFolder(const QString &folder)
{
    languageFolder = folder;
}

bool ZRLocalize::loadLanguage(const QString &fileName)
{
    languageFile = fileName;
    table.clear();
    QFile file(path());
    if (!file.exists() || !file.open(QIODevice::ReadOnly))
        return false;
    QTextStream stream(&file);
    stream.setCodec(QTextCodec::codecForName("UTF-8"));
    // The first empty line ends the file; so does its end, which reads as one.
    for (QString line = stream.readLine(); !line.isEmpty(); line = stream.readLine())
        addLine(line);
    return true;
}

bool ZRLocalize::switchLanguage(const QString &fileName)
{
    const bool loaded = loadLanguage(fileName);
    // A copy is walked: an object that a hook makes is not told, and one that a hook destroys is
    // still called, so no hook destroys any.
    const QList<ZRLocalize *> told = objects;
    for (ZRLocalize *object : told)
        object->onLanguageChanged();
    return loaded;
}

QString ZRLocalize::languageFileName()
{
    return languageFile;
}

QString ZRLocalize::translate(const QString &key)
{
    return table.value(key.toLower(), key);
}
