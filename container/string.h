// String objects: named, counted character strings with their own registry.
#ifndef VELK_CONTAINER_STRING_H
#define VELK_CONTAINER_STRING_H

#include <cstdio>

#include "core/report.h"

struct Matrix;

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

// ---- Whole strings ----
//
// Every operation below reports "Undefined string" for an operand of length -1.

// Copies src's text into dst; the lengths must agree ("Confliction of length").
String *vkStringCopy(String *dst, String *src);
// Copies the first n characters of src over the first n of dst; n must not
// exceed either length ("Confliction of length").
String *vkStringPartCopy(String *dst, String *src, int n);
// Copies t over s from position i on, in place; t must fit
// (1 <= i, i + length(t) - 1 <= length(s)), else "Confliction of length".
String *vkStringPut(String *s, int i, String *t);
// Exchanges the texts of two strings of one length ("Confliction of length").
String *vkStringSwap(String *a, String *b);

// ---- Characters and pieces (positions from 1) ----

// A new string of length 1 holding character i.
String *vkGetStringElem(String *s, int i);
// Stores the first character of c (a string of length 1) at position i.
String *vkStringSetElem(String *s, int i, String *c);
String *vkStringSetChar(String *s, int i, int c);
// Characters i ... j (1 <= i <= j <= length).
String *vkStringCut(String *s, int i, int j);
// s repeated k times (k >= 0).
String *vkStringMul(String *s, int k);
// Position of the first (last) occurrence of key's one character; 0 if none.
int vkStringIndex(String *s, String *key);
int vkStringLastIndex(String *s, String *key);
// One 1 or 0 per position, comparing signed character codes; a string of
// length 1 stands for itself repeated. Operators == != < <= > >=.
Matrix *vkStringCompareElem(String *a, String *b, const char *op);
// The characters at the positions of a real index matrix (any shape, read in
// storage order; every value an integer from 1 to the length, else "Not a
// suitable index"). An empty index gives the empty string.
String *vkStringGetSubString2(String *s, Matrix *index);
// Stores t's characters at the positions of index, in place: t has one
// character per position, or one character for all of them.
String *vkStringSetSubString2(String *s, Matrix *index, String *t);
// A real matrix of character codes as text, one character per element in
// storage order ("Not a real matrix").
String *MatMat2String(Matrix *m);

// ---- Text and files ----

// Formats into a new string; longer than 4096 characters: "Not enough buffer size".
String *vkStringSprintf(const char *format, ...) __attribute__((format(printf, 1, 2)));
// At most n characters of one line from an open file of the stream table;
// at the end of the file the empty string.
String *vkStringFgets(int file, int n);
// One line of at most n characters from a socket (the line feed kept).
String *vkStringSocketGets(int socket, int n);
// "%s = %s\n", or "ans = %s\n" without a name, on stdout.
void vkStringPrint(String *s);
// One whitespace-delimited word of the file ("stdin": standard input).
String *vkStringFileRead(const char *file);
// Writes the bare text into the file (replacing it). Returns 0 or -1.
int vkStringFileWrite(String *s, const char *file);
// name = "text" (or "text" without a name), then ";\n\n" when terminate.
String *vkStringFileSave(String *s, const char *file, int append, int terminate);
// The save form on an open stream.
void vkStringSaveText(FILE *stream, String *s, int terminate);

// Typed binary records of kind 1: rows = text length with its NUL, columns
// and class 0, then the name and the text with their NULs. The reader
// overwrites s (which keeps its status); an empty name reads as "ANS_STR".
String *vkStringWrite(String *s, FILE *stream);
String *vkStringRead(String *s, FILE *stream);

// Returns the previous argument followed by this one, and keeps this one as
// the previous argument of the next call. Valid until the next call.
const char *set_string(const char *text);

long vkStringRegistryCheck();
int vkStringPoolCount(int length);

#endif
