#pragma once

#include <functional>

#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QtTest>

// Goes to the file's folder and types its name there, which holds whatever the folder's list does
// meanwhile. Returns the edit.
inline QLineEdit *typeFile(QFileDialog &dialog, const QString &path)
{
    dialog.setDirectory(QFileInfo(path).path());
    auto *name = dialog.findChild<QLineEdit *>("fileNameEdit");
    name->setText(QFileInfo(path).fileName());
    return name;
}

// What an operator does in a file dialog, for a ModalDriver.
inline std::function<void(QFileDialog &)> chooses(const QString &path)
{
    return [path](QFileDialog &dialog) { QTest::keyClick(typeFile(dialog, path), Qt::Key_Return); };
}
