#include "editor/complex_key.h"

#include <cstdio>

#include "editor/terminal.h"

namespace {

double ReadPart(double current) {
  fflush(stdout);
  return RealLineInput(current, 1);
}

}  // namespace

Complex *CompKeyRead(Complex *c) {
  const char *name = c->name != nullptr && c->name[0] != '\0' ? c->name : "Complex";
  printf("%s = (%15.8E , %15.8E) ----> ", name, c->re, c->im);
  printf("( ");
  c->re = ReadPart(c->re);
  printf(" , ");
  c->im = ReadPart(c->im);
  printf(" )\n");
  return c;
}
