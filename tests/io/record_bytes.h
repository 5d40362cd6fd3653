// Typed binary records built by hand, for the readers' tests.
#ifndef VELK_TESTS_IO_RECORD_BYTES_H
#define VELK_TESTS_IO_RECORD_BYTES_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

// The bytes of a record, in this machine's order or the other.
// A name goes in as a character array with its NUL; in the other order it is
// reversed too, so foreign records here have empty names.
struct Bytes {
  std::vector<unsigned char> data;
  bool big = false;
  template <class T>
  Bytes &Put(const T &v) {
    unsigned char b[sizeof(T)];
    memcpy(b, &v, sizeof(T));
    if (big) std::reverse(b, b + sizeof(T));
    data.insert(data.end(), b, b + sizeof(T));
    return *this;
  }
  // The version 5 prefix and the five header words.
  Bytes &Head(uint32_t type, uint32_t rows, uint32_t cols, uint32_t cls, uint32_t name_length) {
    for (uint32_t w : {0xFFFFFFFFu, 5u, 0u, type, rows, cols, cls, name_length}) Put(w);
    return *this;
  }
};

#endif
