// Complex scalar objects: named pairs of doubles with their own registry.
#ifndef VELK_SCALAR_COMPLEX_H
#define VELK_SCALAR_COMPLEX_H

#include "core/report.h"

struct Complex {
  char *name;  // empty for temporaries
  int status;  // 0 temporary, 1 mark, anything else kept
  double re;
  double im;
  Complex *prev;
  Complex *next;
};

// The bare pair stored by complex matrices.
struct ComplexValue {
  double re;
  double im;
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

// Text forms "(re,im)", each part through RealToString with format (null:
// its default). With a null buf a new 64-character buffer is allocated and
// returned; a caller's buf must hold 64 characters.
char *CompToString(Complex *c, char *buf, const char *format);
char *ComplexValueToString(ComplexValue *v, char *buf, const char *format);

#endif
