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

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace velk_test {

// Understands what the editor writes: ESC[2J, ESC[row;colH, text, bell, CR,
// LF (and backspace, which line inputs use). Anything else is counted in
// `unknown` so a test can insist there was none.
class Screen {
 public:
  static constexpr int kLines = 24;
  static constexpr int kColumns = 80;

  Screen() { Clear(); }

  void Clear() {
    for (auto &line : cells_) line.assign(kColumns, ' ');
    line_ = column_ = 0;
    wrap_ = false;
  }

  void Feed(const char *data, size_t n) {
    for (size_t k = 0; k < n; k++) Byte(static_cast<unsigned char>(data[k]));
  }

  const std::string &Line(int line) const { return cells_[line]; }
  // The line without its trailing blanks.
  std::string Trimmed(int line) const {
    std::string s = cells_[line];
    s.erase(s.find_last_not_of(' ') + 1);
    return s;
  }
  std::string Text(int line, int column, int length) const {
    return cells_[line].substr(static_cast<size_t>(column), static_cast<size_t>(length));
  }
  std::string All() const {
    std::string s;
    for (int k = 0; k < kLines; k++) s += Trimmed(k) + "\n";
    return s;
  }

  int cursor_line() const { return line_; }
  int cursor_column() const { return column_ == kColumns ? kColumns - 1 : column_; }

  int bells = 0;
  int clears = 0;
  int unknown = 0;

 private:
  void Byte(unsigned char c) {
    switch (state_) {
      case State::kText: Text(c); return;
      case State::kEscape:
        if (c == '[') {
          state_ = State::kControl;
          params_.clear();
        } else {
          unknown++;
          state_ = State::kText;
        }
        return;
      case State::kControl:
        if ((c >= '0' && c <= '9') || c == ';') {
          params_.push_back(static_cast<char>(c));
          return;
        }
        Control(c);
        state_ = State::kText;
        return;
    }
  }

  void Control(unsigned char final) {
    if (final == 'J' && params_ == "2") {
      for (auto &line : cells_) line.assign(kColumns, ' ');
      clears++;
    } else if (final == 'H') {
      int row = 1, col = 1;
      if (!params_.empty() && sscanf(params_.c_str(), "%d;%d", &row, &col) < 1) unknown++;
      line_ = Clamp(row - 1, kLines);
      column_ = Clamp(col - 1, kColumns);
      wrap_ = false;
    } else {
      unknown++;
    }
  }

  static int Clamp(int v, int n) { return v < 0 ? 0 : v >= n ? n - 1 : v; }

  void NewLine() {
    if (++line_ == kLines) {
      cells_.erase(cells_.begin());
      cells_.emplace_back(kColumns, ' ');
      line_ = kLines - 1;
    }
  }

  void Text(unsigned char c) {
    if (c == 27) {
      state_ = State::kEscape;
    } else if (c == 7) {
      bells++;
    } else if (c == '\r') {
      column_ = 0;
      wrap_ = false;
    } else if (c == '\n') {
      NewLine();
      wrap_ = false;
    } else if (c == 8) {
      if (column_ > 0) column_--;
      wrap_ = false;
    } else if (c >= 32 && c < 127) {
      if (wrap_) {
        column_ = 0;
        NewLine();
        wrap_ = false;
      }
      cells_[line_][static_cast<size_t>(column_)] = static_cast<char>(c);
      if (column_ == kColumns - 1)
        wrap_ = true;  // the next character wraps (deferred, as terminals do)
      else
        column_++;
    } else {
      unknown++;
    }
  }

  enum class State { kText, kEscape, kControl };
  State state_ = State::kText;
  std::string params_;
  std::vector<std::string> cells_ = std::vector<std::string>(kLines);
  int line_ = 0;
  int column_ = 0;
  bool wrap_ = false;
};

using Clock = std::chrono::steady_clock;

inline long long MillisSince(Clock::time_point t) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count();
}

class PtySession {
 public:
  PtySession() = default;
  PtySession(const PtySession &) = delete;
  PtySession &operator=(const PtySession &) = delete;
  ~PtySession() {
    if (pid_ > 0 && !exited_) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (master_ >= 0) close(master_);
    if (slave_ >= 0) close(slave_);
  }

  // Starts `program args...` in directory `cwd` on a new 24 x 80 terminal.
  bool Start(const std::string &program, const std::string &cwd,
             const std::vector<std::string> &args) {
    winsize ws = {};
    ws.ws_row = Screen::kLines;
    ws.ws_col = Screen::kColumns;
    pid_ = forkpty(&master_, nullptr, nullptr, &ws);
    if (pid_ < 0) return false;
    if (pid_ == 0) {
      if (chdir(cwd.c_str()) != 0) _exit(126);
      std::vector<char *> argv;
      argv.push_back(const_cast<char *>(program.c_str()));
      for (const std::string &a : args) argv.push_back(const_cast<char *>(a.c_str()));
      argv.push_back(nullptr);
      execv(program.c_str(), argv.data());
      _exit(127);
    }
    // Our own descriptor of the terminal: its modes and input queue tell when
    // the program waits for a key, and it keeps the modes readable after exit.
    slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
    fcntl(master_, F_SETFL, fcntl(master_, F_GETFL) | O_NONBLOCK);
    return slave_ >= 0;
  }

  // Waits until the program waits for a key, or has ended. False on time-out.
  bool Settle(int timeout_ms = 10000) {
    Clock::time_point start = Clock::now();
    for (int round = 0; round < 100000; round++) {
      Pump(1);
      if (Reap()) {
        while (Pump(20)) {
        }
        return true;
      }
      long long consumed = IoCount("rchar:");
      if ((consumed < 0 || consumed - consumed_mark_ >= sent_ - sent_mark_) && WaitingForKey()) {
        long long written = IoCount("wchar:") - written_mark_;
        long long read = static_cast<long long>(output.size()) - read_mark_;
        int quiet = consumed < 0 ? kFileQuietMs : read >= written ? quiet_ms : kFileQuietMs;
        if (!Pump(quiet) && WaitingForKey()) {
          written_mark_ = IoCount("wchar:");
          consumed_mark_ = IoCount("rchar:");
          read_mark_ = static_cast<long long>(output.size());
          sent_mark_ = sent_;
          return true;
        }
      }
      if (MillisSince(start) > timeout_ms) return false;
    }
    return false;
  }

  // Writes bytes as one piece (an arrow key's sequence arrives whole).
  bool Send(const std::string &bytes, int timeout_ms = 10000) {
    if (write(master_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
      return false;
    sent_ += static_cast<long long>(bytes.size());
    return Settle(timeout_ms);
  }

  // Each byte as its own key, waiting for the program after each.
  bool Keys(const std::string &keys) {
    for (char c : keys)
      if (!Send(std::string(1, c))) return false;
    return true;
  }

  // Waits for the end of the program; its exit status, or -1 (killed on
  // time-out, or ended by a signal).
  int Finish(int timeout_ms = 10000) {
    Clock::time_point start = Clock::now();
    while (!Reap() && MillisSince(start) < timeout_ms) Pump(10);
    if (!exited_) {
      kill(pid_, SIGKILL);
      waitpid(pid_, &status_, 0);
      exited_ = true;
      return -1;
    }
    while (Pump(20)) {
    }
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
  }

  bool exited() { return Reap(); }
  pid_t pid() const { return pid_; }

  // The terminal's modes as the program left them.
  termios Modes() const {
    termios t = {};
    tcgetattr(slave_, &t);
    return t;
  }

  Screen screen;
  std::string output;  // every byte the program wrote
  // How long the output must stay quiet once the program waits for a key and
  // every byte it wrote has arrived.
  int quiet_ms = 2;

 private:
  // Reads what is there within wait_ms; true when something was read.
  bool Pump(int wait_ms) {
    pollfd p = {master_, POLLIN, 0};
    if (poll(&p, 1, wait_ms) <= 0 || !(p.revents & POLLIN)) return false;
    bool any = false;
    char buffer[65536];
    for (int k = 0; k < 1024; k++) {
      ssize_t n = read(master_, buffer, sizeof buffer);
      if (n <= 0) break;
      screen.Feed(buffer, static_cast<size_t>(n));
      output.append(buffer, static_cast<size_t>(n));
      any = true;
    }
    return any;
  }

  bool Reap() {
    if (!exited_ && waitpid(pid_, &status_, WNOHANG) == pid_) exited_ = true;
    return exited_;
  }

  // Raw mode, nothing queued for the program, and the program asleep: it is
  // blocked reading a key (it writes only while cooked).
  bool WaitingForKey() const {
    termios t;
    if (tcgetattr(slave_, &t) != 0 || (t.c_lflag & ICANON)) return false;
    int queued = 0;
    if (ioctl(slave_, FIONREAD, &queued) != 0 || queued != 0) return false;
    return ProcessState() == 'S';
  }

  // The program's byte counts: "rchar:" read (keys and files), "wchar:"
  // written (terminal and files); -1 where they cannot be read, and then
  // only the quiet period is left to go by.
  long long IoCount(const char *which) const {
    std::ifstream in("/proc/" + std::to_string(pid_) + "/io");
    if (!in) return -1;
    std::string key;
    long long value = 0;
    while (in >> key >> value)
      if (key == which) return value;
    return 0;
  }

  char ProcessState() const {
    std::ifstream in("/proc/" + std::to_string(pid_) + "/stat");
    std::string stat((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    size_t close = stat.rfind(')');
    return close == std::string::npos || close + 2 >= stat.size() ? '?' : stat[close + 2];
  }

  static constexpr int kFileQuietMs = 300;

  long long sent_ = 0;  // bytes sent to the program
  // The counts at the last settle.
  long long written_mark_ = 0;
  long long consumed_mark_ = 0;
  long long read_mark_ = 0;
  long long sent_mark_ = 0;
  pid_t pid_ = -1;
  int master_ = -1;
  int slave_ = -1;
  int status_ = 0;
  bool exited_ = false;
};

}  // namespace velk_test

#endif
