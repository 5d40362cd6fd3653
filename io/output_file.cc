#include "io/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

OutputTemporaryHook temporary_hook = nullptr;

// The file a write to `file` lands in: the final target of a symbolic link
// when it exists, otherwise the name itself.
std::string Resolve(const char *file) {
  struct stat st;
  if (lstat(file, &st) == 0 && S_ISLNK(st.st_mode)) {
    char *real = realpath(file, nullptr);
    if (real != nullptr) {
      std::string r(real);
      free(real);
      return r;
    }
  }
  return file;
}

std::string FolderOf(const std::string &path) {
  size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

std::string BaseOf(const std::string &path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

mode_t CurrentUmask() {
  mode_t mask = umask(0);
  umask(mask);
  return mask;
}

// A new temporary beside target with target's permission bits (or those a
// new file would get), open for writing; -1 when none can be made.
int MakeTemporary(const std::string &target, std::string *name) {
  std::string pattern = FolderOf(target) + "/." + BaseOf(target) + ".XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  int fd = mkstemp(buffer.data());
  if (fd < 0) return -1;
  struct stat st;
  const bool exists = stat(target.c_str(), &st) == 0;
  if (exists && fchown(fd, st.st_uid, st.st_gid) != 0) {
    // An ordinary user may not give a file away; the permission bits are kept all the same.
  }
  mode_t mode = exists ? (st.st_mode & 07777) : (0666 & ~CurrentUmask());
  if (fchmod(fd, mode) != 0) {
    close(fd);
    unlink(buffer.data());
    return -1;
  }
  *name = buffer.data();
  if (temporary_hook != nullptr) temporary_hook(fd);
  return fd;
}

// Whether writing to target may replace it: absent, or a regular file.
bool Replaceable(const std::string &target) {
  struct stat st;
  if (stat(target.c_str(), &st) != 0) return true;
  return S_ISREG(st.st_mode);
}

}  // namespace

OutputFile::OutputFile(const char *file, bool append) {
  if (strcmp(file, "stdout") == 0) {
    fp_ = stdout;
    clearerr(stdout);
    return;
  }
  if (append) {
    fp_ = fopen(file, "a");
    return;
  }
  target_ = Resolve(file);
  if (Replaceable(target_)) {
    int fd = MakeTemporary(target_, &temporary_);
    if (fd >= 0) {
      fp_ = fdopen(fd, "w");
      if (fp_ == nullptr) {
        close(fd);
        unlink(temporary_.c_str());
        temporary_.clear();
      }
      if (fp_ != nullptr) return;
    }
  }
  // No temporary can be made there: the old way, in place.
  fp_ = fopen(file, "w");
}

OutputFile::~OutputFile() { Abandon(); }

void OutputFile::Abandon() {
  if (fp_ == nullptr) return;
  if (fp_ != stdout) fclose(fp_);
  fp_ = nullptr;
  if (!temporary_.empty()) unlink(temporary_.c_str());
  temporary_.clear();
}

bool OutputFile::Finish() {
  if (fp_ == nullptr) return false;
  bool ok = fflush(fp_) == 0 && ferror(fp_) == 0;
  if (fp_ == stdout) {
    fp_ = nullptr;
    return ok;
  }
  // The data reaches the disk before the name does, so a crash between the
  // two leaves the old file, not an empty new one.
  if (!temporary_.empty()) ok = ok && fsync(fileno(fp_)) == 0;
  ok = fclose(fp_) == 0 && ok;
  fp_ = nullptr;
  if (!temporary_.empty()) {
    ok = ok && rename(temporary_.c_str(), target_.c_str()) == 0;
    if (!ok) unlink(temporary_.c_str());
    temporary_.clear();
  }
  return ok;
}

OutputTemporaryHook OutputFileSetTemporaryHook(OutputTemporaryHook hook) {
  OutputTemporaryHook previous = temporary_hook;
  temporary_hook = hook;
  return previous;
}
