// The stream table: one pair of buffered streams per descriptor number.
//
// Files, child-process pipes and sockets are all named by the descriptor the
// system gave them, so every call here that takes a number works on all three.
// Failures print one line on stderr and return -1 (or nothing); none of them
// ends the program.
#ifndef VELK_SYS_STREAM_TABLE_H
#define VELK_SYS_STREAM_TABLE_H

#include <cstdio>

// Descriptors 0 .. kStreamTableSize-1 have an entry; larger ones are refused.
constexpr int kStreamTableSize = 4096;

// Opens name with fopen(mode) and returns its descriptor, or -1 when the open
// fails or the descriptor does not fit the table. The entry is set from the
// whole mode string: "r", "rb" read; "w", "wb", "a", "ab" write; "rw", "rbw",
// "rwb", "wr", "wbr", "wrb" both (one stream). Any other mode ("r+") leaves the
// entry alone, yet the descriptor is still returned. A mode that starts with
// neither 'r' nor 'w' (so "a" too) draws a warning before the open.
int FileOpen(const char *name, const char *mode);

// which 0: the read stream, 1: the write stream; null when absent or when an
// argument is out of range. The first call enters stdin, stdout and stderr
// under descriptors 0, 1 and 2.
FILE *FilePointer(int fd, int which);

// True when the entry holds either stream.
bool FileIsOpen(int fd);

// Closes the entry's streams (one fclose when both are the same stream) and
// clears it; an entry without streams has its bare descriptor closed instead.
// Returns 0, or the result of close for a bare descriptor.
int FileClose(int fd);

// Flushes whichever streams the entry holds.
void FileFlush(int fd);

// The end-of-file state of the read stream; 0 without one.
int FileEof(int fd);

// Formats onto the write stream and flushes it. Returns 0, or -1 (with a
// message) when the descriptor has no write stream.
int FilePrintf(int fd, const char *format, ...) __attribute__((format(printf, 2, 3)));

// Access bits of a mode text: 4 for an 'r', 2 for a 'w', 1 for an 'x'
// anywhere in it; the empty text reads as 4.
int FileModeBits(const char *mode);

// Stores a stream pair under fd for the process and socket layers.
// REQUIRES: 0 <= fd < kStreamTableSize.
void StreamTableSet(int fd, FILE *read, FILE *write);

#endif
