#pragma once

// Keeps OpenGL drivers loaded to the very end once they are there: what they hold for the life of
// the process would otherwise be taken for lost.
void keepGraphicsDriver();
