#include "ZRDirect3D.h"
#include "ZRMemoryDirect3D.h"
#include "ZROpenGLPainter.h"
#include "ZRSoftwarePainter.h"

#include <QDir>

namespace {

// Looks for a driver's device first: loading an OpenGL that runs on the processor costs more memory
// than all the rest of the preview.
bool findGraphicsProcessor()
{
    const bool driver =
        !QDir(QStringLiteral("/dev/dri"), QStringLiteral("renderD*"), QDir::Name, QDir::System)
             .isEmpty()
        || QFile::exists(QStringLiteral("/dev/nvidia0"));
    return driver && ZROpenGLPainter::hasHardware();
}

}

ZRDirect3DModule &ZRDirect3DModule::system()
{
    static ZRMemoryDirect3D module([](QWidget *window) {
        static const bool graphicsProcessor = findGraphicsProcessor();
        std::unique_ptr<ZRVideoPainter> painter;
        if (graphicsProcessor) {
            painter = ZROpenGLPainter::create(window);
        }
        if (!painter) {
            painter = std::make_unique<ZRSoftwarePainter>(window);
        }
        return painter;
    });
    return module;
}
