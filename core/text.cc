#include "core/text.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "core/alloc.h"

namespace {

MatPolyText poly_text = {nullptr, nullptr};
MatRatText rat_text = {nullptr, nullptr};

// Elements per block of a saved row.
int SaveBlock(int cls) { return cls == kReal ? 4 : cls == kComplex ? 2 : 1; }

void SaveElement(FILE *fp, Matrix *m, long long k, bool last) {
  char text[kRealTextSize];
  if (m->cls == kReal) {
    fprintf(fp, last ? "%16s  " : "%16s,", RealToString(MatReal(m)[k], text, "%16.8E"));
  } else if (m->cls == kComplex) {
    ComplexValue v{MatReal(m)[2 * k], MatReal(m)[2 * k + 1]};
    fprintf(fp, "%16s", ComplexValueToString(&v, text, "%16.8E"));
    if (!last) fputs(",  ", fp);
  } else if (IsPolyClass(m->cls) && poly_text.element != nullptr) {
    char *s = poly_text.element(static_cast<Polynomial **>(m->elements)[k], 3, 73);
    fprintf(fp, last ? " %s " : " %s,  ", s);
    efree(s);
  } else if (IsRatClass(m->cls) && rat_text.element != nullptr) {
    char *nume, *deno;
    rat_text.element(static_cast<Rational **>(m->elements)[k], 3, 70, &nume, &deno);
    fprintf(fp, last ? " (%s)/\n   (%s) " : " (%s)/\n   (%s),  ", nume, deno);
    efree(nume);
    efree(deno);
  }
}

void SaveRows(FILE *fp, Matrix *m, bool function, int terminate) {
  const int block = SaveBlock(m->cls);
  for (int i = 0; i < m->rows; i++) {
    if (i > 0) fputc(' ', fp);
    for (int j0 = 0; j0 < m->cols; j0 += block) {
      fputs(j0 == 0 ? "[" : "  ", fp);
      const int j1 = std::min(m->cols, j0 + block);
      for (int j = j0; j < j1; j++)
        SaveElement(fp, m, static_cast<long long>(i) * m->cols + j, j == m->cols - 1);
      if (j1 < m->cols) {
        fputc('\n', fp);
      } else if (i < m->rows - 1) {
        fputs("]\n", fp);
      } else {
        fputs("]]", fp);
        if (function) fputc(')', fp);
        if (terminate) fputs(";\n\n", fp);
      }
    }
  }
}

}  // namespace

char *RealToString(double value, char *buffer, const char *format) {
  if (buffer == nullptr) buffer = static_cast<char *>(emalloc(kRealTextSize));
  if (std::isnan(value))
    strcpy(buffer, "NaN");
  else if (std::isinf(value))
    strcpy(buffer, value > 0 ? "Inf" : "-Inf");
  else
    snprintf(buffer, kRealTextSize, format != nullptr ? format : "%G", value);
  return buffer;
}

char *ComplexValueToString(ComplexValue *v, char *buf, const char *format) {
  char re_text[kRealTextSize], im_text[kRealTextSize];
  RealToString(v->re, re_text, format);
  RealToString(v->im, im_text, format);
  if (buf == nullptr) buf = static_cast<char *>(emalloc(kComplexTextSize));
  // Texts of very wide formats are cut at the buffer's end.
  std::string text = std::string("(") + re_text + "," + im_text + ")";
  size_t n = std::min(text.size(), static_cast<size_t>(kComplexTextSize - 1));
  memcpy(buf, text.data(), n);
  buf[n] = '\0';
  return buf;
}

void MatWriteSaveForm(FILE *fp, Matrix *m, int terminate, const char *function_name) {
  const char *name = m->name != nullptr ? m->name : "";
  const bool function = function_name != nullptr && function_name[0] != '\0';
  const bool named = name[0] != '\0';
  if (named) fprintf(fp, "%s = ", name);
  if (function) fprintf(fp, "%s(", function_name);
  fputs(named ? "[\n " : "[", fp);
  if (m->rows == 0) {
    fputc(']', fp);
    if (terminate) fputs(";\n\n", fp);
  } else {
    SaveRows(fp, m, function, terminate);
  }
}

void MatSetPolyText(const MatPolyText &text) { poly_text = text; }
void MatSetRatText(const MatRatText &text) { rat_text = text; }
const MatPolyText &MatGetPolyText() { return poly_text; }
const MatRatText &MatGetRatText() { return rat_text; }
