#include "ProgramRun.h"

#include "QtTexts.h"
#include "SocketLayer.h"
#include "Startup.h"
#include "VorlynSDK.h"
#include "ZRLog.h"

#include <QApplication>
#include <QWidget>

int runProgram(int argc, char *argv[], QWidget *(*makeWindow)())
{
    // Each application object gets a copy of argc of its own.
    setOpenGLAttributes(probeOpenGLMajorVersion(argc, argv));
    const SocketLayer::Status sockets = SocketLayer::start();

    int applicationArgc = argc;
    QApplication application(applicationArgc, argv);
    ZRLog::initialize();
    initGolbals();
    qDebug("WSA(%d, %d) = %d", sockets.highVersion, sockets.version, sockets.result);

    const QtTexts qtTexts;
    QApplication::setWindowIcon(applicationIcon());
    QWidget *window = makeWindow();
    window->show();
    const int result = application.exec();

    // Deleting the window stops the network. It and the SDK can still log, and the socket layer
    // ends after the last socket.
    delete window;
    VorlynSDK::destroyInstance();
    ZRLog::shutdown();
    SocketLayer::stop();
    return result;
}
