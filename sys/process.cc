#include "sys/process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>

#include "sys/stream_table.h"

namespace {

// Nobody waits for a child: its pipes are the only handle the caller has, so
// each one that ends is collected here before it lingers as a zombie.
void ReapChildren(int) {
  int saved = errno;
  while (waitpid(-1, nullptr, WNOHANG) > 0) {
  }
  errno = saved;
}

void InstallReaper() {
  struct sigaction action = {};
  action.sa_handler = ReapChildren;
  sigemptyset(&action.sa_mask);
  // Reads and writes of the caller must not fail with EINTR because a child ended.
  action.sa_flags = SA_RESTART;
  sigaction(SIGCHLD, &action, nullptr);
}

std::vector<std::string> SplitWords(const char *line) {
  std::vector<std::string> words;
  std::string word;
  for (const char *p = line;; ++p) {
    if (*p == '\0' || *p == ' ' || *p == '\t') {
      if (!word.empty()) words.push_back(word);
      word.clear();
      if (*p == '\0') break;
    } else {
      word += *p;
    }
  }
  return words;
}

void ClosePair(const int ends[2]) {
  close(ends[0]);
  close(ends[1]);
}

// Only async-signal-safe calls from here on: the caller may have threads.
[[noreturn]] void RunChild(const int to_child[2], const int from_child[2], char *const argv[]) {
  dup2(to_child[0], STDIN_FILENO);
  dup2(from_child[1], STDOUT_FILENO);
  close(to_child[1]);
  close(from_child[0]);
  if (to_child[0] != STDIN_FILENO) close(to_child[0]);
  if (from_child[1] != STDOUT_FILENO) close(from_child[1]);
  if (argv[0] != nullptr) {
    if (argv[0][0] == '/')
      execv(argv[0], argv);
    else
      execvp(argv[0], argv);
  }
  // _exit, not exit: the parent's atexit work and stdio buffers are not ours.
  _exit(1);
}

}  // namespace

int ProcessOpen(const char *command) {
  // Words and argv are built before the fork so the child allocates nothing.
  std::vector<std::string> words = SplitWords(command);
  std::vector<char *> argv;
  for (std::string &w : words) argv.push_back(w.data());
  argv.push_back(nullptr);

  int to_child[2];
  if (pipe(to_child) < 0) return -1;
  // The bound is meant for the read end, the lower number of the pair. The
  // entry is the write end's, though, so it is checked too: with only 4095
  // free, the write end would be 4096 and its entry past the table.
  if (to_child[0] >= kStreamTableSize || to_child[1] >= kStreamTableSize) {
    fprintf(stderr, "ProcessOpen(\"%s\"): Too many processes are opened.\n", command);
    ClosePair(to_child);
    return -1;
  }
  int from_child[2];
  if (pipe(from_child) < 0) {
    ClosePair(to_child);
    return -1;
  }
  InstallReaper();
  pid_t pid = fork();
  if (pid < 0) {
    ClosePair(to_child);
    ClosePair(from_child);
    return -1;
  }
  if (pid == 0) RunChild(to_child, from_child, argv.data());

  close(to_child[0]);
  close(from_child[1]);
  // A later child must not inherit these ends, or this child would never
  // see the end of its input.
  fcntl(to_child[1], F_SETFD, FD_CLOEXEC);
  fcntl(from_child[0], F_SETFD, FD_CLOEXEC);
  FILE *read = fdopen(from_child[0], "rb");
  FILE *write = read != nullptr ? fdopen(to_child[1], "wb") : nullptr;
  if (write == nullptr) {
    if (read != nullptr)
      fclose(read);
    else
      close(from_child[0]);
    close(to_child[1]);
    return -1;
  }
  setvbuf(read, nullptr, _IONBF, 0);
  setvbuf(write, nullptr, _IONBF, 0);
  StreamTableSet(to_child[1], read, write);
  return to_child[1];
}

int ProcessClose(int fd) { return FileClose(fd); }
