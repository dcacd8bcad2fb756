#include "qrtProgram.h"

int main(int argc, char** argv) {
    return qrtplay::runProgram(argc, argv);
}
