#pragma once

#include <QString>

// Base, beside the widget's own, of every class whose texts follow the language, and the table
// that the texts come from. The key of a text is its English form; lookup ignores case.
// Thread: the GUI thread makes, destroys and switches; translate() may come from any thread as
// long as no switch runs.
class ZRLocalize
{
public:
    ZRLocalize();
    virtual ~ZRLocalize();

    // Sets every text anew. Constructors of derived classes call their own.
    virtual void onLanguageChanged();

    static void setLanguageFolder(const QString &folder);
    // Reads a file of the language folder, given with or without ".txt". False when it can't be
    // read; the table is then empty and texts show as their keys.
    static bool loadLanguage(const QString &fileName);
    // The same, and then tells every living object in the order of their making.
    static bool switchLanguage(const QString &fileName);
    // The name as it was last given.
    static QString languageFileName();
    // The text for a key, or the key itself, case kept.
    static QString translate(const QString &key);

private:
    Q_DISABLE_COPY(ZRLocalize)
};
