#pragma once

#include "ZRLocalize.h"

#include <QStringList>
#include <QTranslator>

// Texts of Qt's own dialogs and menus in the program's language, and again after each change of it:
// English as Qt has them, Chinese by Qt's file of them. Where that file is missing, and in the
// dialogs that belong to the system, nothing changes. GUI thread, while the application object
// lives.
class QtTexts : public ZRLocalize
{
public:
    explicit QtTexts(const QStringList &folders = usualFolders());

    void onLanguageChanged() override;
    // Qt's own, and the one beside the program.
    static QStringList usualFolders();

private:
    const QStringList folders; // the first one that has the file counts
    QTranslator translator;
};
