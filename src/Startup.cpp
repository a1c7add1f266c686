#include "Startup.h"

#include "VorlynSDK.h"
#include "ZRConfigure.h"
#include "ZRLocalize.h"

#include <QApplication>
#include <QOpenGLContext>
#include <QSurfaceFormat>

int probeOpenGLMajorVersion(int argc, char **argv)
{
    QApplication application(argc, argv);
    QOpenGLContext context;
    context.create();
    const QSurfaceFormat format = context.format();
    (void)format.minorVersion(); // read and thrown away: the major number alone decides
    return format.majorVersion();
}

void setOpenGLAttributes(int majorVersion)
{
    const bool desktop = majorVersion >= 4;
    // Thrice each, desktop before software, as this start-up has always done.
    for (int i = 0; i < 3; ++i)
        QCoreApplication::setAttribute(Qt::AA_UseDesktopOpenGL, desktop);
    for (int i = 0; i < 3; ++i)
        QCoreApplication::setAttribute(Qt::AA_UseSoftwareOpenGL, !desktop);
}

QIcon applicationIcon()
{
    QIcon icon;
    for (int size : {16, 32, 48, 256})
        icon.addFile(QStringLiteral(":/resources/app_%1.png").arg(size));
    return icon;
}

void initGolbals()
{
    ZRConfigure configure;
    configure.initDefaults();

    ZRLocalize::setLanguageFolder(
        QStringLiteral("%1/language").arg(QCoreApplication::applicationDirPath()));
    // The log lines name the other language than the one that is loaded; readers of logs know
    // them so.
    if (configure.language().compare(QLatin1String("en"), Qt::CaseInsensitive) == 0) {
        ZRLocalize::loadLanguage(QStringLiteral("en.txt"));
        qDebug("install cn language");
    } else {
        ZRLocalize::loadLanguage(QStringLiteral("cn.txt"));
        qDebug("install en language");
    }

    VorlynSDK::createInstance();
}
