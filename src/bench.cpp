#include "BenchWindow.h"
#include "ProgramRun.h"

int main(int argc, char *argv[])
{
    return runProgram<BenchWindow>(argc, argv);
}
