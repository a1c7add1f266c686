#pragma once

#include <QIcon>

// The steps of main() that can be taken one by one. Thread: the main thread.

// Major version of the OpenGL that the system offers, found with an application object of its own:
// the attributes that choose an OpenGL implementation count only before the real one exists. A
// context that can't be made counts by its default format.
int probeOpenGLMajorVersion(int argc, char **argv);
// Desktop OpenGL from version 4 on, software OpenGL below.
void setOpenGLAttributes(int majorVersion);
// What window lists show. After the application object exists.
QIcon applicationIcon();
// Default settings, the language and the VorlynSDK instance, in this order. The log is open.
void initGolbals();
