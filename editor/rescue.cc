#include "editor/rescue.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "io/text_format.h"

namespace {

// Past this many numbered copies a folder counts as full.
constexpr int kMaxCopies = 100;

// Writes m to a new file at path; false (and no file) when it cannot.
bool WriteNew(Matrix *m, const std::string &path, bool *taken) {
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  *taken = fd < 0 && errno == EEXIST;
  if (fd < 0) return false;
  FILE *fp = fdopen(fd, "w");
  if (fp == nullptr) {
    close(fd);
    unlink(path.c_str());
    return false;
  }
  MatWriteText(fp, m);
  bool ok = fflush(fp) == 0 && ferror(fp) == 0 && fsync(fd) == 0;
  ok = fclose(fp) == 0 && ok;
  if (!ok) unlink(path.c_str());
  return ok;
}

}  // namespace

std::string RescueMatrix(Matrix *m, const char *name) {
  std::string file = name != nullptr && name[0] != '\0' ? name : "velk-edit";
  size_t slash = file.rfind('/');
  std::string base = slash == std::string::npos ? file : file.substr(slash + 1);
  if (base.empty()) base = "velk-edit";
  // Beside the file first ("a.mat" stays "a.mat.save", no "./" before it).
  std::string beside = slash == std::string::npos ? "" : file.substr(0, slash + 1);
  std::string folders[3] = {beside, "", "/tmp/"};
  const char *home = getenv("HOME");
  if (home != nullptr && home[0] != '\0') folders[1] = std::string(home) + "/";
  for (int f = 0; f < 3; f++) {
    if (f > 0 && folders[f].empty()) continue;
    for (int k = 0; k < kMaxCopies; k++) {
      std::string path = folders[f] + base + ".save";
      if (k > 0) path += "." + std::to_string(k);
      bool taken = false;
      if (WriteNew(m, path, &taken)) {
        fprintf(stderr, "velk-edit: %s: changes saved in %s\n", file.c_str(), path.c_str());
        return path;
      }
      if (!taken) break;  // not writable here: the next folder
    }
  }
  fprintf(stderr, "velk-edit: %s: changes could not be saved\n", file.c_str());
  return "";
}
