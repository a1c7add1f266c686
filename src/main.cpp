#include "MainWindow.h"
#include "ProgramRun.h"

int main(int argc, char *argv[])
{
    return runProgram<MainWindow>(argc, argv);
}
