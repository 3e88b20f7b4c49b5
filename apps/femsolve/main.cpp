#include "femsolve.h"

int main(int argc, char **argv) {
    return FemsolveMain(argc, argv);
}
