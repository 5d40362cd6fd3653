// Helpers shared by the stream table, process and socket tests.
#ifndef VELK_TESTS_SYS_SYS_TEST_UTIL_H
#define VELK_TESTS_SYS_SYS_TEST_UTIL_H

#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace velk_test {

inline bool IsOpenDescriptor(int fd) { return fcntl(fd, F_GETFD) != -1; }

// Holds every free descriptor below floor, so that the next one the system
// hands out is floor or above; lets the table bounds be met without opening
// thousands of real files. Releases them all when it goes.
class DescriptorFloor {
 public:
  explicit DescriptorFloor(int floor) {
    rlimit limit;
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    const rlim_t wanted = static_cast<rlim_t>(floor) + 64;
    if (limit.rlim_cur < wanted) {
      if (limit.rlim_max < wanted) return;
      limit.rlim_cur = wanted;
      if (setrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    }
    int base = open("/dev/null", O_RDONLY);
    if (base < 0) return;
    held_.push_back(base);
    if (base >= floor - 1) {
      ok_ = true;
      return;
    }
    for (int i = 0; i < floor; ++i) {
      int fd = dup(base);
      if (fd < 0) return;
      if (fd >= floor) {
        close(fd);
        ok_ = true;
        return;
      }
      held_.push_back(fd);
      if (fd == floor - 1) {
        ok_ = true;
        return;
      }
    }
  }
  ~DescriptorFloor() {
    for (int fd : held_) close(fd);
  }
  DescriptorFloor(const DescriptorFloor &) = delete;
  DescriptorFloor &operator=(const DescriptorFloor &) = delete;
  bool ok() const { return ok_; }

 private:
  std::vector<int> held_;
  bool ok_ = false;
};

// The local port a socket was bound to (bind to port 0 lets the system pick).
inline int PortOf(int fd) {
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  if (getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size) != 0) return -1;
  return ntohs(address.sin_port);
}

// Every blocking receive or send on fd gives up after the given time, so a
// lost peer fails a test instead of hanging it.
inline void SetTimeouts(int fd, int seconds = 5) {
  timeval limit = {seconds, 0};
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

// The child reaper's SIGCHLD interrupts poll, which no handler flag restarts,
// so the wait goes on until its deadline.
inline bool WaitReadable(int fd, int milliseconds = 5000) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  for (;;) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() < 0) return false;
    pollfd p = {fd, POLLIN, 0};
    int ready = poll(&p, 1, static_cast<int>(left.count()));
    if (ready >= 0) return ready == 1;
    if (errno != EINTR) return false;
  }
}

inline std::string ReadWholeFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteWholeFile(const std::string &path, const std::string &text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
}

// A fresh directory under the test temporary directory.
inline std::string MakeTempDir() {
  std::string pattern = "/tmp/velk_sys_XXXXXX";
  if (const char *dir = getenv("TMPDIR"); dir != nullptr && dir[0] != '\0')
    pattern = std::string(dir) + "/velk_sys_XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  return mkdtemp(buffer.data()) != nullptr ? std::string(buffer.data()) : std::string();
}

// Children of this process, counted from /proc: all of them, and the zombies
// among them (ended but not yet waited for).
struct ChildCount {
  int live = 0;
  int zombies = 0;
};

inline ChildCount CountChildren() {
  ChildCount count;
  DIR *proc = opendir("/proc");
  if (proc == nullptr) return count;
  const int self = getpid();
  while (dirent *entry = readdir(proc)) {
    if (entry->d_name[0] < '0' || entry->d_name[0] > '9') continue;
    std::ifstream stat(std::string("/proc/") + entry->d_name + "/stat");
    std::string line;
    if (!std::getline(stat, line)) continue;
    // The command name may hold blanks; the fields after its ')' do not.
    size_t close_paren = line.rfind(')');
    if (close_paren == std::string::npos) continue;
    char state = 0;
    int parent = 0;
    if (sscanf(line.c_str() + close_paren + 1, " %c %d", &state, &parent) != 2) continue;
    if (parent != self) continue;
    if (state == 'Z')
      ++count.zombies;
    else
      ++count.live;
  }
  closedir(proc);
  return count;
}

// Polls until CountChildren() matches, for at most five seconds.
inline bool ChildrenBecome(int live, int zombies) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (std::chrono::steady_clock::now() < deadline) {
    ChildCount now = CountChildren();
    if (now.live == live && now.zombies == zombies) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

}  // namespace velk_test

#endif
