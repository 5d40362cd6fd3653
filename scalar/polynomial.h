// Polynomial objects: coefficients in a one-row matrix, ascending powers.
#ifndef VELK_SCALAR_POLYNOMIAL_H
#define VELK_SCALAR_POLYNOMIAL_H

#include "core/matrix.h"
#include "core/report.h"

struct Polynomial {
  char *name;      // empty for temporaries
  char *variable;  // null: the default variable "s"
  int status;      // 0 temporary, 1 mark, anything else kept
  int kind;        // 0 real coefficients, 1 complex
  int degree;      // -1: undefined
  Matrix *coef;    // 1 x (degree + 1), owned (matrix status 2)
  Polynomial *prev;
  Polynomial *next;
};

extern char PolyMessageBuffer[kMessageSize];
#define PolySetMessage(...) FormatMessage(PolyMessageBuffer, __VA_ARGS__)
VELK_DECLARE_REPORTERS(Poly, Polynomial)

void PolyInit();
Polynomial *PolyDef(const char *name, int degree, const char *variable);
Polynomial *C_PolyDef(const char *name, int degree, const char *variable);
Polynomial *PolySetName(Polynomial *p, const char *name);
Polynomial *PolySetVariable(Polynomial *p, const char *variable);
Polynomial *PolySetStatus(Polynomial *p, int status);
void PolyUndef(Polynomial *p);
void PolyDestroy(Polynomial *p);
void PolyUndefChain(Polynomial *p);
void PolySweep();
void PolyUnmark(Polynomial *p);
Polynomial *PolyAssign(Polynomial *dst, Polynomial *src);
Polynomial *PolyCopy(Polynomial *dst, Polynomial *src);
Polynomial *PolyDup(Polynomial *p);
Polynomial *PolySwap(Polynomial *a, Polynomial *b);

// Ownership by a containing object (a matrix element, a rational, a list).
Polynomial *PolyOwn(Polynomial *p, int status);
void PolyRelease(Polynomial *p);

int PolyDegreeMax();
long PolyRegistryCheck();
int PolyPoolCount(int degree, int kind);

#endif
