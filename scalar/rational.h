// Rational objects: a numerator and a denominator polynomial.
#ifndef VELK_SCALAR_RATIONAL_H
#define VELK_SCALAR_RATIONAL_H

#include "core/report.h"
#include "scalar/polynomial.h"

struct Rational {
  char *name;    // empty for temporaries
  int status;    // 0 temporary, 1 mark, anything else kept
  int kind;      // 0 real coefficients, 1 complex
  int nume_degree;  // degrees recorded at definition (shown by reports)
  int deno_degree;
  Polynomial *nume;  // owned (polynomial status 2)
  Polynomial *deno;
  Rational *prev;
  Rational *next;
};

extern char RatMessageBuffer[kMessageSize];
#define RatSetMessage(...) FormatMessage(RatMessageBuffer, __VA_ARGS__)
VELK_DECLARE_REPORTERS(Rat, Rational)

void RatInit();
Rational *RatDef(const char *name, int nume_degree, int deno_degree);
Rational *C_RatDef(const char *name, int nume_degree, int deno_degree);
Rational *RatSetName(Rational *r, const char *name);
Rational *RatSetStatus(Rational *r, int status);
void RatUndef(Rational *r);
void RatDestroy(Rational *r);
void RatUndefChain(Rational *r);
void RatSweep();
void RatUnmark(Rational *r);
Rational *RatAssign(Rational *dst, Rational *src);
Rational *RatCopy(Rational *dst, Rational *src);
Rational *RatDup(Rational *r);
Rational *RatSwap(Rational *a, Rational *b);

Rational *RatOwn(Rational *r, int status);
void RatRelease(Rational *r);

long RatRegistryCheck();
int RatPoolCount();

#endif
