#include "GraphicsDriver.h"

void keepGraphicsDriver() { } // nobody counts there
