#pragma once

#include "HostProcess.h"
#include "ThisProcess.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcessEnvironment>

// The environment of a program that is to find no OpenGL. The X11 plugin knows a variable for it,
// the Windows plugin a list of drivers to leave alone, which here are all.
inline QProcessEnvironment environmentWithoutOpenGL()
{
    QFile list(QCoreApplication::applicationDirPath() + "/no-opengl.json");
    if (!list.open(QIODevice::WriteOnly))
        qFatal("can't write %s", qPrintable(list.fileName()));
    list.write(R"({"entries": [{"id": 1, "features": ["disable_desktopgl"]}]})");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_XCB_GL_INTEGRATION", "none");
    environment.insert("QT_OPENGL_BUGLIST", list.fileName());
    return environment;
}

// What this test program prints when it starts anew with that argument, and the driver offers that
// version of OpenGL. The driver is the system's, which has its environment from outside.
inline QByteArray outputWithOpenGL(const QString &version, const QString &argument)
{
    QStringList command = {"MESA_GL_VERSION_OVERRIDE=" + version,
        HostProcess::path(QCoreApplication::applicationFilePath()), argument};
    if (ThisProcess::inWine())
        command.insert(1, "wine");
    return HostProcess::output("env", command).trimmed();
}
