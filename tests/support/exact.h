// Helpers for tests that compare a whole stderr text in a death test.
#ifndef VELK_TESTS_SUPPORT_EXACT_H
#define VELK_TESTS_SUPPORT_EXACT_H

#include <string>

// A regular expression that matches exactly `text` and nothing around it.
inline std::string Exact(const std::string &text) {
  std::string re = "^";
  for (char c : text) {
    if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) re += '\\';
    re += c;
  }
  return re + "$";
}

#endif
