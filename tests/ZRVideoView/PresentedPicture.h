#pragma once

#include <QImage>

// What the program presents through the system's Direct3D 9, read back from the render target each
// time; where Direct3DCreate9 is wrapped. Null before the first time.
namespace PresentedPicture {

QImage last();
// Whether the program's own call stretched it. False where Wine would have cut it.
bool isUnaided();
// What was read, and reads from then on, which takes its time.
void forget();

}
