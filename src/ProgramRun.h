#pragma once

class QWidget;

// main() of a program with one window, from the probe of OpenGL to the end of the socket layer.
// The window is made once everything it builds on stands, and shown. Returns what the event loop
// does.
int runProgram(int argc, char *argv[], QWidget *(*makeWindow)());

template <class Window> int runProgram(int argc, char *argv[])
{
    return runProgram(argc, argv, []() -> QWidget * { return new Window; });
}
