// Complex scalar objects: named pairs of doubles with their own registry.
#ifndef VELK_SCALAR_COMPLEX_H
#define VELK_SCALAR_COMPLEX_H

#include "core/matrix.h"
#include "core/report.h"
#include "core/text.h"

struct Complex {
  char *name;  // empty for temporaries
  int status;  // 0 temporary, 1 mark, anything else kept
  double re;
  double im;
  Complex *prev;
  Complex *next;
};

extern char CompMessageBuffer[kMessageSize];
#define CompSetMessage(...) FormatMessage(CompMessageBuffer, __VA_ARGS__)
VELK_DECLARE_REPORTERS(Comp, Complex)

void CompInit();
Complex *CompDef(const char *name, double re, double im);
Complex *CompSetName(Complex *c, const char *name);
Complex *CompSetStatus(Complex *c, int status);
void CompUndef(Complex *c);
void CompDestroy(Complex *c);
void CompUndefChain(Complex *c);
void CompSweep();
void CompUnmark(Complex *c);
Complex *CompDup(Complex *c);
Complex *CompCopyValue(Complex *dst, Complex *src);
Complex *CompCopyAll(Complex *dst, Complex *src);
Complex *CompSwap(Complex *a, Complex *b);
Complex *CompLet(Complex *dst, Complex *src);

// Ownership by a containing object (a list element): off the registry until released.
Complex *CompOwn(Complex *c, int status);
void CompRelease(Complex *c);

long CompRegistryCheck();
int CompPoolCount();

// The text form "(re,im)" of c, as ComplexValueToString (core/text.h) writes it.
char *CompToString(Complex *c, char *buf, const char *format);

#endif
