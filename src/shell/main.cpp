#include "shell/program.h"

int main(int argc, char** argv) {
    return kvn::shell::runProgram(argc, argv);
}
