// A velk-edit process on a pseudo-terminal, and the 24 x 80 screen that its
// output paints. Shared by the editor tests and the editor benchmark.
//
// Synchronisation: the program is in raw mode only while it waits for a key.
// After keys are sent we wait until it waits again: it has read as many bytes
// as were sent (the pty hands them over asynchronously), the terminal is raw,
// its input queue is empty and the process sleeps. Its output may still be on
// its way through the pty, so we also wait until we have read as many bytes
// as it has written since the last settle (the terminal only ever adds bytes,
// turning LF into CR LF). Bytes written to files show as a shortfall that
// never fills; a longer quiet period ends that wait.
#ifndef VELK_TESTS_EDITOR_PTY_SESSION_H
#define VELK_TESTS_EDITOR_PTY_SESSION_H

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace velk_test {

inline std::string ReadText(const std::string &path) {
  std::ifstream in(path);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// Understands what the editor writes: ESC[2J, ESC[row;colH, text (UTF-8, a
// character to a cell), bell, CR, LF (and backspace, which line inputs use).
// Anything else is counted in `unknown` so a test can insist there was none.
// The editor never writes past the last line, so there is no scrolling; a
// position or a character past the last line or column is counted in
// `overflow`.
class Screen {
 public:
  static constexpr int kLines = 24;
  static constexpr int kColumns = 80;

  explicit Screen(int lines = kLines, int columns = kColumns) : lines_(lines), columns_(columns) {
    Clear();
  }
  void Clear() { cells_.assign(lines_, std::u32string(columns_, U' ')); }
  int lines() const { return lines_; }
  int columns() const { return columns_; }

  // The line without its trailing blanks.
  std::string Trimmed(int line) const {
    std::string s;
    for (char32_t c : cells_[line].substr(0, cells_[line].find_last_not_of(U' ') + 1)) {
      if (c < 0x80) {
        s.push_back(static_cast<char>(c));
      } else if (c < 0x800) {
        s.push_back(static_cast<char>(0xC0 | (c >> 6)));
        s.push_back(static_cast<char>(0x80 | (c & 0x3F)));
      } else {
        s.push_back(static_cast<char>(0xE0 | (c >> 12)));
        s.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        s.push_back(static_cast<char>(0x80 | (c & 0x3F)));
      }
    }
    return s;
  }
  std::string All() const {
    std::string s;
    for (int k = 0; k < lines_; k++) s += Trimmed(k) + "\n";
    return s;
  }

  // The cursor; column is columns() once the last column has been written.
  int line = 0;
  int column = 0;
  int unknown = 0;
  int overflow = 0;

  // One byte of output.
  void Feed(char c) {
    if ((c & 0xC0) == 0x80 && pending_ > 0) {  // UTF-8 continuation
      code_ = (code_ << 6) | (c & 0x3F);
      if (--pending_ == 0) Put(code_);
      return;
    }
    pending_ = 0;  // a character cut short is dropped
    if (!escape_.empty()) {
      escape_.push_back(c);
      // ESC [, then digits and ';' up to the final byte.
      if (escape_.size() == 2 ? c == '[' : (c >= '0' && c <= '9') || c == ';') return;
      int row = 0, col = 0;
      char final = 0;
      if (escape_ == "\x1b[2J") {
        Clear();
      } else if (sscanf(escape_.c_str(), "\x1b[%d;%d%c", &row, &col, &final) == 3 && final == 'H') {
        if (row > lines_ || col > columns_) overflow++;
        line = std::clamp(row - 1, 0, lines_ - 1);
        column = std::clamp(col - 1, 0, columns_ - 1);
      } else {
        unknown++;
      }
      escape_.clear();
    } else if (c == 27) {
      escape_.push_back(c);
    } else if (c == '\r') {
      column = 0;
    } else if (c == '\n') {
      line = std::min(line + 1, lines_ - 1);
    } else if (c == '\b') {
      column = std::max(column - 1, 0);
    } else if ((c & 0xE0) == 0xC0 || (c & 0xF0) == 0xE0) {  // UTF-8 lead byte
      pending_ = (c & 0xE0) == 0xC0 ? 1 : 2;
      code_ = c & (pending_ == 1 ? 0x1F : 0x0F);
    } else if (c >= 32 && c < 127) {
      Put(static_cast<char32_t>(c));
    } else if (c == 7) {  // the bell
      bells++;
    } else {
      unknown++;
    }
  }

  int bells = 0;

 private:
  void Put(char32_t c) {
    if (column == columns_) {  // the deferred wrap of a terminal
      overflow++;
      column = 0;
      line = std::min(line + 1, lines_ - 1);
    }
    cells_[line][column++] = c;
  }

  int lines_;
  int columns_;
  std::string escape_;  // an escape sequence not yet ended
  int pending_ = 0;     // continuation bytes still due
  char32_t code_ = 0;
  std::vector<std::u32string> cells_;
};

class PtySession {
 public:
  ~PtySession() {
    if (pid_ > 0 && !Reap()) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (master_ >= 0) close(master_);
    if (slave_ >= 0) close(slave_);
  }

  // Starts `program args...` in directory `cwd` on a new terminal of 24 x 80
  // (or the given size).
  bool Start(const std::string &program, const std::string &cwd,
             const std::vector<std::string> &args, int lines = Screen::kLines,
             int columns = Screen::kColumns) {
    screen = Screen(lines, columns);
    winsize ws = {static_cast<unsigned short>(lines), static_cast<unsigned short>(columns), 0, 0};
    pid_ = forkpty(&master_, nullptr, nullptr, &ws);
    if (pid_ == 0) {
      std::vector<char *> argv = {const_cast<char *>(program.c_str())};
      for (const std::string &a : args) argv.push_back(const_cast<char *>(a.c_str()));
      argv.push_back(nullptr);
      if (chdir(cwd.c_str()) == 0) execv(program.c_str(), argv.data());
      _exit(127);
    }
    if (pid_ < 0) return false;
    // Our own descriptor of the terminal: its modes and input queue tell when
    // the program waits for a key, and it keeps the modes readable after exit.
    slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
    fcntl(master_, F_SETFL, fcntl(master_, F_GETFL) | O_NONBLOCK);
    return slave_ >= 0;
  }

  // Waits until the program waits for a key, or has ended. False on time-out.
  bool Settle(int timeout_ms = 10000) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (std::chrono::steady_clock::now() < deadline && !Reap()) {
      Pump(1);
      // Without /proc counts, or with bytes gone to files, only a long quiet
      // period is left to go by.
      long long consumed = IoCount("rchar:");
      if ((consumed >= 0 && consumed - sent_ < read_lag_) || !WaitingForKey()) continue;
      bool arrived =
          consumed >= 0 && static_cast<long long>(output.size()) + write_lag_ >= IoCount("wchar:");
      if (!Pump(arrived ? quiet_ms : 300) && WaitingForKey()) {
        read_lag_ = IoCount("rchar:") - sent_;
        write_lag_ = IoCount("wchar:") - static_cast<long long>(output.size());
        return true;
      }
    }
    while (Reap() && Pump(20)) continue;  // what an ended program wrote last
    return Reap();
  }

  // Writes bytes as one piece (an arrow key's sequence arrives whole).
  bool Send(const std::string &bytes, int timeout_ms = 10000) {
    if (write(master_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
      return false;
    sent_ += static_cast<long long>(bytes.size());
    return Settle(timeout_ms);
  }

  // Gives the terminal a new size (the program gets SIGWINCH) and a blank
  // screen model of that size; waits until the program has painted again.
  bool Resize(int lines, int columns) {
    long long before = IoCount("wchar:");
    screen = Screen(lines, columns);
    winsize ws = {static_cast<unsigned short>(lines), static_cast<unsigned short>(columns), 0, 0};
    if (ioctl(master_, TIOCSWINSZ, &ws) != 0) return false;
    return WaitForOutput(before);
  }

  // Sends a signal that makes the program paint (SIGCONT after SIGSTOP) and
  // waits until it has.
  bool Signal(int sig) {
    long long before = IoCount("wchar:");
    kill(pid_, sig);
    return WaitForOutput(before);
  }

  // Each byte as its own key, waiting for the program after each.
  bool Keys(const std::string &keys) {
    for (char c : keys)
      if (!Send(std::string(1, c))) return false;
    return true;
  }

  // Waits for the end of the program: its exit status, or -1 (killed on
  // time-out, or ended by a signal).
  int Finish(int timeout_ms = 10000) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (!Reap() && std::chrono::steady_clock::now() < deadline) Pump(10);
    while (Reap() && Pump(20)) continue;
    return Reap() && WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;  // else killed at the end
  }

  pid_t pid() const { return pid_; }
  // Termination by a signal (after Finish gave -1), or 0.
  int signaled() const { return exited_ && WIFSIGNALED(status_) ? WTERMSIG(status_) : 0; }
  // Our descriptor of the program's terminal: its modes stay readable after exit.
  int terminal() const { return slave_; }

  Screen screen;
  std::string output;  // every byte the program wrote
  // How long the output must stay quiet once the program waits for a key and
  // every byte it wrote has arrived.
  int quiet_ms = 2;

 private:
  // Reads what is there within wait_ms; true when something was read.
  bool Pump(int wait_ms) {
    pollfd p = {master_, POLLIN, 0};
    char buffer[65536];
    if (poll(&p, 1, wait_ms) <= 0) return false;
    ssize_t n = read(master_, buffer, sizeof buffer);
    if (n <= 0) return false;
    for (ssize_t k = 0; k < n; k++) screen.Feed(buffer[k]);
    output.append(buffer, static_cast<size_t>(n));
    return true;
  }

  // Waits until the program has written something after `before` bytes,
  // then for it to wait for a key again.
  bool WaitForOutput(long long before) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (IoCount("wchar:") <= before && std::chrono::steady_clock::now() < deadline) Pump(5);
    return Settle();
  }

  bool Reap() {
    if (!exited_ && waitpid(pid_, &status_, WNOHANG) == pid_) exited_ = true;
    return exited_;
  }

  // Raw mode, nothing queued for the program, and the program asleep: it is
  // blocked reading a key (it writes only while cooked).
  bool WaitingForKey() const {
    termios t;
    int queued = 0;
    if (tcgetattr(slave_, &t) != 0 || (t.c_lflag & ICANON)) return false;
    if (ioctl(slave_, FIONREAD, &queued) != 0 || queued != 0) return false;
    std::string stat = ReadText("/proc/" + std::to_string(pid_) + "/stat");
    size_t close = stat.rfind(')');
    return close != std::string::npos && close + 2 < stat.size() && stat[close + 2] == 'S';
  }

  // The program's byte counts: "rchar:" read (keys and files), "wchar:"
  // written (terminal and files); -1 where they cannot be read.
  long long IoCount(const char *which) const {
    std::ifstream in("/proc/" + std::to_string(pid_) + "/io");
    std::string key;
    long long value = 0;
    while (in >> key >> value)
      if (key == which) return value;
    return -1;
  }

  long long sent_ = 0;  // bytes sent to the program
  // At the last settle: bytes read beyond those sent (files), and bytes
  // written beyond those that reached us (files, again).
  long long read_lag_ = 0;
  long long write_lag_ = 0;
  pid_t pid_ = -1;
  int master_ = -1;
  int slave_ = -1;
  int status_ = 0;
  bool exited_ = false;
};

}  // namespace velk_test

#endif
