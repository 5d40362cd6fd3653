// The text form of a complex scalar: the pair form its values share with
// complex matrix elements.
#include "core/text.h"
#include "scalar/complex.h"

char *CompToString(Complex *c, char *buf, const char *format) {
  ComplexValue v{c->re, c->im};
  return ComplexValueToString(&v, buf, format);
}
