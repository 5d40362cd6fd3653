// Guarded allocation, the plain reporter and the process's one fatal exit.
#ifndef VELK_CORE_ALLOC_H
#define VELK_CORE_ALLOC_H

#include <cstddef>

// Size 0 gives a null pointer without allocating; failure is a fatal report.
void *emalloc(int size);
// REQUIRES: p is not null (a null p is a fatal report, never a malloc).
void *erealloc(void *p, int size);
// REQUIRES: p is not null.
void efree(void *p);
// A copy of text in a new emalloc'd buffer; null for a null text.
char *StringDup(const char *text);

// Writes "\n<location> : <message>\n" on stderr; ends the process when fatal.
void RuntimeError(const char *location, const char *message, int fatal);

// Every fatal report ends here. By default the process exits with status 0;
// a test or fuzz harness may install a handler that takes over (it must not
// return, e.g. it throws or longjmps). Returns the previous handler.
using FatalHandler = void (*)();
FatalHandler SetFatalHandler(FatalHandler handler);
[[noreturn]] void VelkFatalExit();

// Allocation of count elements of size bytes each; a product that an int
// cannot hold is reported like any failed allocation instead of wrapping.
void *emalloc_array(long long count, int size);

#endif
