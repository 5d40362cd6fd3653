// The text form of a complex scalar: the pair form its values share with
// complex matrix elements.
#include "core/text.h"
#include "scalar/complex.h"

char *CompToString(Complex *c, char *buf, const char *format) {
  ComplexValue v{c->re, c->im};
  return ComplexValueToString(&v, buf, format);
}

void CompPrint(Complex *c) {
  char text[kComplexTextSize];
  CompToString(c, text, nullptr);
  if (c->name != nullptr && c->name[0] != '\0')
    printf("%s = %s\n", c->name, text);
  else
    printf("ans = %s\n", text);
}

void CompSaveText(FILE *stream, Complex *c, int terminate) {
  char text[kComplexTextSize];
  CompToString(c, text, nullptr);
  if (c->name != nullptr && c->name[0] != '\0')
    fprintf(stream, "%s = \"%s\"", c->name, text);
  else
    fprintf(stream, "\"%s\"", text);
  if (terminate) fputs(";\n\n", stream);
}
