#include "container/string.h"

#include <cstring>
#include <utility>

#include "core/alloc.h"
#include "core/registry.h"
#include "core/scope.h"

char vkStringMessageBuffer[kMessageSize];

namespace {

Registry<String> reg;
int length_max = 1000;  // longer strings are never pooled

int Slot(int length) { return (length < -1 || length > length_max) ? -1 : length + 1; }

void Describe(FILE *out, const void *object, bool second) {
  const String *s = static_cast<const String *>(object);
  const char *word = second ? " and" : " for";
  if (s->name != nullptr && s->name[0] != '\0')
    fprintf(out, "%s '%s(length=%d)'", word, s->name, s->length);
  else
    fprintf(out, "%s '(length=%d)'", word, s->length);
}

// The log receives each defined operand in its save form. Opened here rather
// than through vkStringFileSave, whose own failure would report again.
void LogAppend(const void *object) {
  String *s = static_cast<String *>(const_cast<void *>(object));
  if (s->length == -1) return;
  FILE *log = LogOpenAppend(nullptr);
  if (log == nullptr) return;
  vkStringSaveText(log, s, 1);
  fclose(log);
}

const ReportKind kReport = {vkStringMessageBuffer, Describe, "Can't open logfile.\n", LogAppend,
                            false};

void FreeText(String *s) {
  if (s->text != nullptr) efree(s->text);
  s->text = nullptr;
}

}  // namespace

VELK_DEFINE_REPORTERS(vkString, String, kReport)

void vkStringInit() {
  if (reg.Ready()) return;
  String *head = Registry<String>::NewRecord();
  head->name = StringDup("TOP_VKSTRING");
  head->status = kMark;
  head->length = 12;
  head->text = StringDup("TOP_VKSTRING");
  reg.limit = EnvLimit("STRING_TABLE_MAX", 0, 0);
  length_max = EnvLimit("STRING_LENGTH_MAX", 1000, 1000);
  reg.Start(head, length_max + 2);
  vkStringMessageBuffer[0] = '\0';
}

String *vkStringDef(const char *name, int length) {
  vkStringInit();
  if (length < -1) length = -1;
  String *s = reg.Take(Slot(length));
  if (s == nullptr) {
    s = Registry<String>::NewRecord();
    if (length >= 0) {
      s->text = static_cast<char *>(emalloc_array(static_cast<long long>(length) + 1, 1));
      memset(s->text, 0, static_cast<size_t>(length) + 1);
    }
  } else if (s->text != nullptr) {
    memset(s->text, 0, static_cast<size_t>(length) + 1);
  }
  reg.Append(s);
  s->status = kTemporary;
  s->length = length;
  SetRecordName(&s->name, name);
  return s;
}

String *vkStringFromText(const char *text) {
  return vkStringSetText(vkStringDef("", static_cast<int>(strlen(text))), text);
}

String *vkStringSetText(String *s, const char *text) {
  int n = static_cast<int>(strlen(text));
  if (s->text == nullptr || s->length != n) {
    FreeText(s);
    s->text = StringDup(text);
  } else {
    memcpy(s->text, text, static_cast<size_t>(n) + 1);
  }
  s->length = n;
  return s;
}

void vkStringDestroy(String *s) {
  reg.Destroy(s, FreeText, [] {
    vkStringError("vkStringDestroy()", "Duplicate destroying", nullptr);
  });
}

void vkStringUndef(String *s) {
  reg.Undef(s, Slot(s->length), vkStringDestroy, [](String *) {}, [] {
    vkStringError("vkStringUndef()", "Duplicate undefing", nullptr);
  });
}


String *vkStringCopyAll(String *dst, String *src) {
  if (dst->text != nullptr && dst->length == src->length) {
    memcpy(dst->text, src->text, static_cast<size_t>(src->length) + 1);
  } else {
    FreeText(dst);
    dst->text = StringDup(src->text);
  }
  dst->length = src->length;
  dst->status = src->status;
  return dst;
}

String *vkStringDup(String *s) {
  String *d = vkStringDef("", s->length);
  if (s->text != nullptr) memcpy(d->text, s->text, static_cast<size_t>(s->length) + 1);
  return d;
}

String *vkStringLet(String *dst, String *src) {
  if (dst == src) return dst;
  int status = dst->status;
  if (src->status == kTemporary) {
    std::swap(dst->length, src->length);
    std::swap(dst->text, src->text);
    src->status = kTemporary;
  } else {
    vkStringCopyAll(dst, src);
  }
  dst->status = status;
  SweepInOrder({ObjectKind::kList, ObjectKind::kRational, ObjectKind::kPolynomial,
                ObjectKind::kMatrix, ObjectKind::kComplex, ObjectKind::kString});
  return dst;
}


int vkStringPoolCount(int length) {
  int slot = Slot(length);
  return reg.Ready() && slot >= 0 ? reg.pool_count[slot] : 0;
}

const char *set_string(const char *text) {
  constexpr size_t kMax = 8192;
  static char previous[kMax];
  static char joined[2 * kMax];
  size_t n = strlen(text);
  if (n + 1 > kMax) {
    RuntimeError("set_string(...)", "String is too long", 1);
    return joined;
  }
  size_t p = strlen(previous);
  memcpy(joined, previous, p);
  memcpy(joined + p, text, n + 1);
  memcpy(previous, text, n + 1);
  return joined;
}

VELK_DEFINE_REGISTRY_ENTRIES(vkString, String, reg)
VELK_REGISTER_KIND(ObjectKind::kString, vkString, String, vkStringDef("", -1))
