#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QVariantMap>

// The settings file that a program in `folder` reads; without a folder that of the test itself.
class SettingsFile
{
public:
    explicit SettingsFile(const QString &folder = QCoreApplication::applicationDirPath()) :
        folder(folder)
    { }

    // In place of whatever there was.
    void write(const QVariantMap &values) const
    {
        remove();
        QDir().mkpath(folder + "/configure");
        QSettings settings(path(), QSettings::IniFormat);
        for (auto it = values.begin(); it != values.end(); ++it)
            settings.setValue(it.key(), it.value());
    }

    QVariantMap read() const
    {
        const QSettings settings(path(), QSettings::IniFormat);
        QVariantMap values;
        for (const QString &key : settings.allKeys())
            values[key] = settings.value(key);
        return values;
    }

    void remove() const { QDir(folder + "/configure").removeRecursively(); }

private:
    QString path() const { return folder + "/configure/configure.ini"; }

    QString folder;
};
