#pragma once

#include <functional>

#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QtTest>

// What an operator does in a file dialog, for a ModalDriver: goes to the file's folder, types its
// name and presses Return.
inline std::function<void(QFileDialog &)> chooses(const QString &path)
{
    return [path](QFileDialog &dialog) {
        dialog.setDirectory(QFileInfo(path).path());
        auto *name = dialog.findChild<QLineEdit *>("fileNameEdit");
        name->setText(QFileInfo(path).fileName());
        QTest::keyClick(name, Qt::Key_Return);
    };
}
