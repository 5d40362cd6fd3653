// String objects: named, counted character strings with their own registry.
#ifndef VELK_CONTAINER_STRING_H
#define VELK_CONTAINER_STRING_H

#include "core/report.h"

struct String {
  char *name;  // empty for temporaries
  int status;  // 0 temporary, 1 mark, 2 owned by a list, anything else kept
  int length;  // -1: undefined
  char *text;  // length + 1 bytes, zero-terminated; null when undefined
  String *prev;
  String *next;
};

extern char vkStringMessageBuffer[kMessageSize];
#define vkStringSetMessage(...) FormatMessage(vkStringMessageBuffer, __VA_ARGS__)
VELK_DECLARE_REPORTERS(vkString, String)

void vkStringInit();
String *vkStringDef(const char *name, int length);
String *vkStringFromText(const char *text);
String *vkStringSetText(String *s, const char *text);
String *vkStringSetName(String *s, const char *name);
String *vkStringSetStatus(String *s, int status);
void vkStringUndef(String *s);
void vkStringDestroy(String *s);
void vkStringUndefChain(String *s);
void vkStringSweep();
void vkStringUnmark(String *s);
String *vkStringLet(String *dst, String *src);
String *vkStringCopyAll(String *dst, String *src);
String *vkStringDup(String *s);

String *vkStringOwn(String *s, int status);
void vkStringRelease(String *s);

// Returns the previous argument followed by this one, and keeps this one as
// the previous argument of the next call. Valid until the next call.
const char *set_string(const char *text);

long vkStringRegistryCheck();
int vkStringPoolCount(int length);

#endif
