#include "ProgramRun.h"

#include "QtTexts.h"
#include "SocketLayer.h"
#include "Startup.h"
#include "VorlynSDK.h"
#include "ZRLog.h"

#include <QApplication>
#include <QWidget>

#include <memory>

namespace {

// Deleting the window stops the network. Qt's texts go after it, as the log is still open.
int runWindow(QWidget *(*makeWindow)())
{
    const QtTexts qtTexts;
    QApplication::setWindowIcon(applicationIcon());
    const std::unique_ptr<QWidget> window(makeWindow());
    window->show();
    return QApplication::exec();
}

}

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

    const int result = runWindow(makeWindow);
    // The SDK can still log, and the socket layer ends after the last socket.
    VorlynSDK::destroyInstance();
    ZRLog::shutdown();
    SocketLayer::stop();
    return result;
}
