#include "DialogCalls.h"

#include "ZRWaitDialog.h"

#include <QFileDialog>

int startAndExec(ZRWaitDialog &dialog)
{
    dialog.start();
    return dialog.exec();
}

QString chooseFile()
{
    QFileDialog files(nullptr, QString(), QString(), QString());
    files.setFileMode(QFileDialog::ExistingFile);
    if (files.exec() != QDialog::Accepted)
        return QString();
    return files.selectedFiles().value(0);
}
