// The program entry of velk-edit: each file named on the command line is read,
// edited and written back when it changed.
#ifndef VELK_EDITOR_ENTRY_H
#define VELK_EDITOR_ENTRY_H

#include "core/matrix.h"

constexpr const char *kVelkEditVersion = "0.1.0";

// Runs the program on the command line; returns the exit status: 0, or 1
// when a name was skipped as no regular file (fatal reports and Ctrl-C end
// the process themselves).
int VelkEditMain(int argc, char **argv);

// True when a and b have the same class and size and every element of a - b
// is exactly zero (a NaN never is).
bool MatEqualExact(Matrix *a, Matrix *b);

#endif
