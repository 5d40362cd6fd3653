// The full-screen matrix editor.
#ifndef VELK_EDITOR_EDITOR_H
#define VELK_EDITOR_EDITOR_H

#include "core/matrix.h"

// Lets the user view and change m on the terminal and returns the matrix as
// it stands when the user quits: m itself, or the matrix that replaced it
// (m is then undefined). The result carries m's name and m's status.
// REQUIRES: m is real or complex.
Matrix *MatEdit(Matrix *m);

// MatEdit with the "C" command (make complex) allowed.
Matrix *MatEditAllowComplex(Matrix *m);

#endif
