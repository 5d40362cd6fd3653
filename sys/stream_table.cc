#include "sys/stream_table.h"

#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstring>
#include <string_view>

namespace {

// An entry is open when either stream is present. A file opened for reading
// and writing holds the same stream twice; a pipe pair or a socket holds two.
struct StreamPair {
  FILE *read = nullptr;
  FILE *write = nullptr;
};

std::array<StreamPair, kStreamTableSize> table;
bool standard_streams_entered = false;

bool InTable(int fd) { return fd >= 0 && fd < kStreamTableSize; }

// Which streams a mode string gives an entry. Modes are matched whole, so
// "r+" or "w+" give none and the caller gets a descriptor without streams.
struct ModeStreams {
  bool read;
  bool write;
};

ModeStreams StreamsOfMode(std::string_view mode) {
  for (std::string_view m : {"r", "rb"})
    if (mode == m) return {true, false};
  for (std::string_view m : {"w", "wb", "a", "ab"})
    if (mode == m) return {false, true};
  for (std::string_view m : {"rw", "rbw", "rwb", "wr", "wbr", "wrb"})
    if (mode == m) return {true, true};
  return {false, false};
}

}  // namespace

void StreamTableSet(int fd, FILE *read, FILE *write) { table[fd] = {read, write}; }

int FileOpen(const char *name, const char *mode) {
  // Only a warning: fopen has the last word on the mode.
  if (mode[0] != 'r' && mode[0] != 'w')
    fprintf(stderr, "FileOpen(\"%s\", \"%s\"): mode does not start with 'r' nor 'w'\n", name, mode);
  FILE *fp = fopen(name, mode);
  if (fp == nullptr) return -1;
  int fd = fileno(fp);
  if (!InTable(fd)) {
    fprintf(stderr, "FileOpen(\"%s\", \"%s\"): file descriptor is too large.\n", name, mode);
    fclose(fp);
    return -1;
  }
  ModeStreams streams = StreamsOfMode(mode);
  if (streams.read || streams.write)
    table[fd] = {streams.read ? fp : nullptr, streams.write ? fp : nullptr};
  return fd;
}

FILE *FilePointer(int fd, int which) {
  if (!standard_streams_entered) {
    standard_streams_entered = true;
    // A standard stream whose descriptor was closed before start-up has none.
    if (int fd = fileno(stdin); InTable(fd)) table[fd].read = stdin;
    if (int fd = fileno(stdout); InTable(fd)) table[fd].write = stdout;
    if (int fd = fileno(stderr); InTable(fd)) table[fd].write = stderr;
  }
  if (fd >= kStreamTableSize) {
    fprintf(stderr, "FilePointer(%d, %d): file descriptor is too large.\n", fd, which);
    return nullptr;
  }
  if (which != 0 && which != 1) {
    fprintf(stderr, "FilePointer(%d, %d): rw flag is 0 or 1\n", fd, which);
    return nullptr;
  }
  // A negative number is what a failed open returned: there is nothing to find.
  if (fd < 0) return nullptr;
  return which == 0 ? table[fd].read : table[fd].write;
}

bool FileIsOpen(int fd) {
  return InTable(fd) && (table[fd].read != nullptr || table[fd].write != nullptr);
}

int FileClose(int fd) {
  if (!FileIsOpen(fd)) return close(fd);
  StreamPair &entry = table[fd];
  if (entry.read != nullptr) fclose(entry.read);
  if (entry.write != nullptr && entry.write != entry.read) fclose(entry.write);
  entry = {};
  return 0;
}

void FileFlush(int fd) {
  if (!InTable(fd)) return;
  if (table[fd].read != nullptr) fflush(table[fd].read);
  if (table[fd].write != nullptr) fflush(table[fd].write);
}

int FileEof(int fd) {
  if (!InTable(fd) || table[fd].read == nullptr) return 0;
  return feof(table[fd].read);
}

int FilePrintf(int fd, const char *format, ...) {
  FILE *out = FilePointer(fd, 1);
  if (out == nullptr) {
    fprintf(stderr, "FilePrintf(%d, \"%s\", ...): file is not opened.\n", fd, format);
    return -1;
  }
  va_list args;
  va_start(args, format);
  vfprintf(out, format, args);
  va_end(args);
  fflush(out);
  return 0;
}

int FileModeBits(const char *mode) {
  if (mode == nullptr || mode[0] == '\0') return 4;
  int bits = 0;
  if (strchr(mode, 'r') != nullptr) bits |= 4;
  if (strchr(mode, 'w') != nullptr) bits |= 2;
  if (strchr(mode, 'x') != nullptr) bits |= 1;
  return bits;
}
