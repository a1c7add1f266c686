#include "QtTexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>

#include <algorithm>

QtTexts::QtTexts(const QStringList &folders) : folders(folders)
{
    QtTexts::onLanguageChanged();
}

void QtTexts::onLanguageChanged()
{
    QCoreApplication::removeTranslator(&translator);
    const auto load = [this](const QString &folder) {
        return translator.load(QStringLiteral("qtbase_zh_CN"), folder);
    };
    if (languageFileName().startsWith(QLatin1String("cn"))
        && std::any_of(folders.begin(), folders.end(), load))
        QCoreApplication::installTranslator(&translator);
}

QStringList QtTexts::usualFolders()
{
    return {QLibraryInfo::location(QLibraryInfo::TranslationsPath),
        QStringLiteral("%1/translations").arg(QCoreApplication::applicationDirPath())};
}
