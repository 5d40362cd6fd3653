// Strings from and to text, files, sockets and typed binary records.
#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstring>
#include <string>

#include "container/string.h"
#include "core/alloc.h"
#include "io/binary.h"
#include "io/output_file.h"
#include "io/scalar_file.h"
#include "sys/sockets.h"
#include "sys/stream_table.h"

namespace {

constexpr int kSprintfMax = 4096;

String *FromStdString(const std::string &text) {
  String *r = vkStringDef("", static_cast<int>(text.size()));
  memcpy(r->text, text.data(), text.size());
  r->text[text.size()] = '\0';
  return r;
}

}  // namespace

String *vkStringSprintf(const char *format, ...) {
  // Formatted into a buffer longer than the limit, so that an overlong result
  // is measured whole and refused rather than cut.
  static char work[2 * kSprintfMax + 2];
  va_list ap;
  va_start(ap, format);
  int n = vsnprintf(work, sizeof work, format, ap);
  va_end(ap);
  if (n < 0) vkStringError("vkStringSprintf()", "Not complete", nullptr);
  if (n > kSprintfMax) vkStringError("vkStringSprintf()", "Not enough buffer size", nullptr);
  return vkStringFromText(work);
}

String *vkStringFgets(int file, int n) {
  FILE *fp = FilePointer(file, 0);
  if (fp == nullptr) vkStringError("vkStringFgets()", "File is not opened", nullptr);
  if (n < 0) n = 0;
  std::string buffer(static_cast<size_t>(n) + 1, '\0');
  if (n == 0 || fgets(buffer.data(), n + 1, fp) == nullptr) return vkStringFromText("");
  return vkStringFromText(buffer.c_str());
}

String *vkStringSocketGets(int socket, int n) {
  if (n < 0) n = 0;
  std::string buffer(static_cast<size_t>(n) + 1, '\0');
  // The reader's count is one more than the bytes stored when the line is
  // cut by the size, so the text's length comes from the buffer.
  if (socket_readline(socket, buffer.data(), n + 1) < 0)
    vkStringError("vkStringSocketGets()", "Can't read message", nullptr);
  return vkStringFromText(buffer.c_str());
}

void vkStringPrint(String *s) {
  if (s->length < 0) vkStringError("vkStringPrint()", "Undefined string", s);
  printf("%s = %s\n", s->name[0] != '\0' ? s->name : "ans", s->text);
  fflush(stdout);
}

String *vkStringFileRead(const char *file) {
  bool standard = strcmp(file, "stdin") == 0;
  FILE *fp = standard ? stdin : fopen(file, "r");
  if (fp == nullptr) vkStringError("vkStringFileRead()", "Can't open file", nullptr);
  // One word as "%s" reads it, without a bound on its length.
  std::string word;
  int c;
  while ((c = getc(fp)) != EOF && isspace(c)) continue;
  for (; c != EOF && !isspace(c); c = getc(fp)) word.push_back(static_cast<char>(c));
  if (c != EOF) ungetc(c, fp);
  if (!standard) fclose(fp);
  return FromStdString(word);
}

int vkStringFileWrite(String *s, const char *file) {
  if (s->length < 0) vkStringError("vkStringFileWrite()", "Undefined string", s);
  return StringFileWrite(s->name, s->text, file);
}

void vkStringSaveText(FILE *stream, String *s, int terminate) {
  if (s->name != nullptr && s->name[0] != '\0')
    fprintf(stream, "%s = \"%s\"", s->name, s->text != nullptr ? s->text : "");
  else
    fprintf(stream, "\"%s\"", s->text != nullptr ? s->text : "");
  if (terminate) fputs(";\n\n", stream);
}

String *vkStringFileSave(String *s, const char *file, int append, int terminate) {
  if (s->length < 0) vkStringError("vkStringFileSave()", "Undefined string", s);
  const char *failure =
      OutputFileSave(file, append != 0, [s, terminate](FILE *out) { vkStringSaveText(out, s, terminate); });
  if (failure != nullptr) {
    std::string message = std::string(failure) + file;
    vkStringSetMessage("save %s(#%d), %s", s->name, s->length, file);
    vkStringError("vkStringFileSave()", message.c_str(), s);
  }
  return s;
}

String *vkStringWrite(String *s, FILE *stream) {
  if (s->length < 0) vkStringError("vkStringWrite()", "Undefined string", s);
  DataRecordBegin(stream, 1, kDataDouble, s->length + 1, 0, 0, s->name);
  fwrite(s->text, 1, static_cast<size_t>(s->length) + 1, stream);
  return s;
}

String *vkStringRead(String *s, FILE *stream) {
  static DataRecord record;  // a 1 KiB name buffer off the stack
  const char *failure = DataRecordOpen(&record, stream, 1);
  std::string text;
  if (failure == nullptr) {
    // The length word is not trusted for allocation: the text grows only as
    // far as the stream really holds it.
    long long want = record.header[kDataRows];
    char chunk[4096];
    while (want > 0 && static_cast<long long>(text.size()) < want) {
      size_t n = static_cast<size_t>(std::min<long long>(want - static_cast<long long>(text.size()),
                                                         static_cast<long long>(sizeof chunk)));
      size_t got = fread(chunk, 1, n, stream);
      text.append(chunk, got);
      if (got < n) break;
    }
    if (want < 1 || static_cast<long long>(text.size()) != want || text.back() != '\0' ||
        want - 1 > 0x7ffffffeLL)
      failure = "Data is broken or too few";
  }
  if (failure != nullptr) {
    vkStringSetMessage("read <- \"\"");
    vkStringError("vkStringRead()", failure, s);
    return s;
  }
  text.pop_back();
  // A NUL inside the text ends it, as it would any C string the text is used as.
  vkStringSetText(s, text.c_str());
  vkStringSetName(s, record.name[0] == '\0' ? "ANS_STR" : record.name);
  return s;
}
