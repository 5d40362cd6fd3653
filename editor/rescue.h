// The emergency save: a matrix the user changed, kept when the session ends
// without its normal write (a hang-up, a termination signal, a fatal report).
#ifndef VELK_EDITOR_RESCUE_H
#define VELK_EDITOR_RESCUE_H

#include <string>

#include "core/matrix.h"

// Writes m in the text format to NAME.save beside the file NAME (or
// NAME.save.1, .2, ... when that is taken), else in $HOME, else in /tmp,
// never over an existing file, and says where in one line on standard error:
// "velk-edit: NAME: changes saved in PATH" (or "velk-edit: NAME: changes
// could not be saved"). Returns the path, empty on failure.
std::string RescueMatrix(Matrix *m, const char *name);

#endif
