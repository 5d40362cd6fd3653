// The stream table and the files, child processes and sockets that share it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "core/alloc.h"
#include "sys/process.h"
#include "sys/sockets.h"
#include "sys/stream_table.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

const std::string kPath = testing::TempDir() + "velk_sys_" + std::to_string(getpid()) + ".txt";

std::string ReadPath() {
  std::ifstream in(kPath, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(StreamTable, EntryFollowsTheWholeModeStringAndStandardStreamsNeedNoOpen) {
  const std::tuple<const char *, bool, bool> cases[] = {
      {"r", true, false},   {"rb", true, false},  {"w", false, true},    {"wb", false, true},
      {"a", false, true},   {"ab", false, true},  {"rw", true, true},    {"rbw", true, true},
      {"rwb", true, true},  {"wr", true, true},   {"wbr", true, true},   {"wrb", true, true},
      {"r+", false, false}, {"a+", false, false}, {"rb+", false, false},
  };
  for (auto [mode, has_read, has_write] : cases) {
    SCOPED_TRACE(mode);
    std::ofstream(kPath) << "old\n";
    CaptureStderr();
    const int fd = FileOpen(kPath.c_str(), mode);
    EXPECT_EQ(GetCapturedStderr(), mode[0] != 'a' ? "" : "FileOpen(\"" + kPath + "\", \"" + mode +
                                                         "\"): mode does not start with 'r' nor 'w'\n");
    ASSERT_GE(fd, 0);
    FILE *read = FilePointer(fd, 0), *write = FilePointer(fd, 1);
    ASSERT_EQ(read != nullptr, has_read);
    ASSERT_EQ(write != nullptr, has_write);
    EXPECT_EQ(FileIsOpen(fd), has_read || has_write);
    EXPECT_EQ(read == write && read != nullptr, has_read && has_write);
    if (has_write && !has_read) {
      // FilePrintf flushes at once, FileFlush the rest; 'w' truncates, 'a' appends.
      EXPECT_EQ(FilePrintf(fd, "%s-%d\n", mode, 7), 0);
      ASSERT_GE(fputs("+", write), 0);
      const std::string printed = (mode[0] == 'a' ? "old\n" : "") + std::string(mode) + "-7\n";
      EXPECT_EQ(ReadPath(), printed);
      FileFlush(fd);
      EXPECT_EQ(ReadPath(), printed + "+");
    }
    // The entry is cleared, so a second close is the system's close of a closed number.
    EXPECT_EQ(FileClose(fd), 0);
    EXPECT_EQ(FileClose(fd), -1);
  }
  unlink(kPath.c_str());

  // The standard streams are entered on first use and need no open call.
  EXPECT_EQ(FilePointer(0, 0), stdin);
  EXPECT_EQ(FilePointer(2, 1), stderr);
  EXPECT_EQ(FilePointer(1, 0), nullptr);
  testing::internal::CaptureStdout();
  EXPECT_EQ(FilePrintf(1, "%d-%s|%5.2f\n", 42, "ok", 3.14159), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "42-ok| 3.14\n");
}

TEST(StreamTable, ModeBits) {
  const std::pair<const char *, int> bits[] = {{"", 4},   {"r", 4},  {"w", 2},   {"x", 1},
                                               {"wr", 6}, {"rx", 5}, {"xwr", 7}, {"ab", 0},
                                               {"r+", 4}, {"RWX", 0}};
  for (auto [mode, expected] : bits) EXPECT_EQ(FileModeBits(mode), expected) << mode;
}

// The child's output up to a line feed or its end; "<timeout>" after five idle seconds.
std::string ReadLine(int fd) {
  FILE *in = FilePointer(fd, 0);
  std::string text;
  for (int i = 0; i < 200 && (text.empty() || text.back() != '\n'); ++i) {
    pollfd ready = {fileno(in), POLLIN, 0};
    const int waited = poll(&ready, 1, 5000);
    if (waited == 0) return text + "<timeout>";
    // The reaper's SIGCHLD cuts a wait short; the next pass waits afresh.
    if (waited < 0) continue;
    const int c = fgetc(in);
    if (c == EOF) break;
    text += static_cast<char>(c);
  }
  return text;
}

// Polls up to five seconds until this process has count children, unreaped ones included.
bool ChildrenBecome(int count) {
  const std::string path = "/proc/self/task/" + std::to_string(getpid()) + "/children";
  for (int i = 0; i < 250; ++i, usleep(20000)) {
    std::ifstream in(path);
    int n = 0;
    for (std::string pid; in >> pid;) ++n;
    if (in.is_open() && n == count) return true;
  }
  return false;
}

TEST(Process, ChildrenRunBehindUnbufferedPipesAndAreReaped) {
  const int first = ProcessOpen("cat");
  const int second = ProcessOpen("cat");
  ASSERT_EQ(FilePrintf(first, "line %d\n", 1), 0);
  EXPECT_EQ(ReadLine(first), "line 1\n");
  // Unbuffered both ways: a bare fputs reaches the child, and its answer is not held back.
  ASSERT_GE(fputs("no flush\n", FilePointer(first, 1)), 0);
  EXPECT_EQ(ReadLine(first), "no flush\n");

  // The second child must not inherit the first one's input; only the reaper waits.
  EXPECT_EQ(ProcessClose(first), 0);
  EXPECT_TRUE(ChildrenBecome(1));
  ASSERT_EQ(FilePrintf(second, "still here\n"), 0);
  EXPECT_EQ(ReadLine(second), "still here\n");
  EXPECT_EQ(ProcessClose(second), 0);

  // A program that cannot be run still gives a descriptor, whose output ends at once.
  const std::pair<const char *, const char *> cases[] = {
      {"/bin/echo   one\t\ttwo \t three  ", "one two three\n"},
      {"echo from the path", "from the path\n"},
      {"velk-no-such-program --flag", ""},
      {"/velk/no/such", ""}};
  for (auto [command, output] : cases) {
    SCOPED_TRACE(command);
    const int fd = ProcessOpen(command);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(ReadLine(fd), output);
    EXPECT_EQ(ReadLine(fd), "");
    EXPECT_NE(FileEof(fd), 0);
    EXPECT_EQ(ProcessClose(fd), 0);
  }
  EXPECT_TRUE(ChildrenBecome(0));
}

int PortOf(int fd) {
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size);
  return ntohs(address.sin_port);
}

// Blocking receives give up after five seconds: a lost peer fails instead of hanging.
void SetTimeout(int fd) {
  timeval limit = {5, 0};
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

// A connected loopback pair built with the calls under test; server is -1 on failure.
struct TcpLink {
  explicit TcpLink(const char *connect_host = "127.0.0.1") {
    if (socket_bind(listener, 0, "") == 0 && socket_listen(listener, 4) == 0 &&
        socket_connect(client, PortOf(listener), connect_host) == 0)
      server = socket_accept(listener);
    SetTimeout(server);
  }
  ~TcpLink() {
    for (int fd : {server, client, listener}) socket_close(fd);
  }
  int listener = socket_open("tcp");
  int client = socket_open("TCP");
  int server = -1;
};

TEST(Socket, ConnectedPairCarriesBytesAndLines) {
  TcpLink link("localhost");
  ASSERT_GE(link.server, 0);
  // Unbuffered: without a flush the bytes are already on the wire.
  ASSERT_GE(fputs("to server\n", FilePointer(link.client, 1)), 0);
  char text[100] = {};
  ASSERT_EQ(socket_readn(link.server, text, 10), 10);
  EXPECT_STREQ(text, "to server\n");

  // Pieces that arrive apart: readn waits for all of them.
  std::thread writer([&] {
    for (const char *piece : {"ab", "cde", "fghij"}) {
      const int size = static_cast<int>(strlen(piece));
      EXPECT_EQ(socket_writen(link.client, piece, size), size);
      usleep(20000);
    }
  });
  EXPECT_EQ(socket_readn(link.server, text, 10), 10);
  writer.join();
  EXPECT_EQ(std::string(text, 10), "abcdefghij");

  // A line cut at size-1 bytes or by the end counts one more than it stored; a size of 1 or
  // less reads nothing.
  const std::tuple<const char *, bool, int, int, const char *> cases[] = {
      {"abc\n", false, 10, 4, "abc\n"}, {"defghij\n", false, 4, 4, "def"},
      {"", false, 10, 5, "ghij\n"},     {"k\n", false, 1, 1, ""},
      {"", false, 0, 1, "ZZZZZZZZZZ"},  {"", false, 10, 2, "k\n"},
      {"xy", true, 10, 3, "xy"},        {"", false, 10, 0, ""},
  };
  for (auto [sent, then_end, size, result, stored] : cases) {
    SCOPED_TRACE(testing::Message() << '"' << sent << "\" size " << size);
    char buffer[11] = "ZZZZZZZZZZ";
    ASSERT_EQ(socket_write_string(link.client, sent), static_cast<int>(strlen(sent)));
    ASSERT_EQ(then_end ? socket_shutdown(link.client, 1) : 0, 0);
    EXPECT_EQ(socket_readline(link.server, buffer, size), result);
    EXPECT_STREQ(buffer, stored);
  }
  // At the end readn gets nothing; sending after shutdown is EPIPE, not a SIGPIPE.
  EXPECT_EQ(socket_readn(link.server, text, 10), 0);
  EXPECT_EQ(socket_write_string(link.client, "late"), -1);
  EXPECT_EQ(errno, EPIPE);
}

TEST(Socket, DatagramsOverLoopbackKeepAtMost1024Bytes) {
  const int receiver = socket_open("udp"), sender = socket_open("UDP");
  SetTimeout(receiver);
  ASSERT_EQ(socket_bind(receiver, 0, "127.0.0.1"), 0);
  in_addr loopback = {htonl(INADDR_LOOPBACK)};
  const hostent *entry = gethostbyaddr(&loopback, sizeof loopback, AF_INET);
  const std::string loopback_name = entry != nullptr ? entry->h_name : "";
  const std::string long_text = std::string(1024, 'k') + std::string(976, 'z');
  // The rest of a long datagram is lost, not left for the next receive.
  const std::pair<const char *, std::string> cases[] = {
      {"127.0.0.1", "hello"}, {"127.0.0.1", long_text}, {"localhost", "after"}, {"127.0.0.1", ""}};
  for (const auto &[host, sent] : cases) {
    SCOPED_TRACE(sent.size());
    char *from = nullptr, *message = nullptr;
    const int size = static_cast<int>(sent.size());
    EXPECT_EQ(socket_sendto(sender, PortOf(receiver), host, sent.c_str()), size);
    ASSERT_EQ(socket_recvfrom(receiver, &from, &message), std::min(size, 1024));
    EXPECT_EQ(message, sent.substr(0, 1024));
    EXPECT_EQ(from != nullptr ? from : "", loopback_name);
    efree(message);
    if (from != nullptr) efree(from);
  }
  for (int fd : {sender, receiver}) socket_close(fd);
}

std::string SystemError(const char *call, int error) {
  return std::string(call) + ": " + strerror(error) + "\n";
}

// Each failure prints its fixed line (socket calls mostly add the system's error) and returns -1.
TEST(SysMessages, EveryFailurePrintsItsExactLine) {
  TcpLink link;
  const int tcp = socket_open("tcp"), udp = socket_open("udp"), file = FileOpen("/dev/null", "r");
  char line[16];
  char *from = line, *message = line;
  CaptureStderr();
  // The mode warning comes first; fopen then refuses the mode. A missing file fails quietly.
  EXPECT_EQ(FileOpen("/dev/null", "x"), -1);
  EXPECT_EQ(FileOpen("/velk/no/such", "r"), -1);
  EXPECT_EQ(FilePrintf(file, "x=%d", 1), -1);
  EXPECT_EQ(FilePointer(1, 2), nullptr);
  EXPECT_EQ(FilePointer(-1, 0), nullptr);
  EXPECT_EQ(socket_open("Tcp"), -1);
  EXPECT_EQ(socket_sendto(udp, 9, "", "x"), -1);
  EXPECT_EQ(socket_shutdown(tcp, 3), -1);
  EXPECT_EQ(socket_shutdown(tcp, 2), -1);
  EXPECT_EQ(socket_listen(udp, 1), -1);
  EXPECT_EQ(socket_accept(tcp), -1);
  EXPECT_EQ(socket_bind(tcp, PortOf(link.listener), "127.0.0.1"), -1);
  EXPECT_EQ(socket_sendto(tcp, 9, "127.0.0.1", "x"), -1);
  EXPECT_EQ(socket_recvfrom(file, &from, &message), -1);
  // A label longer than 63 characters fails the lookup before any query is sent.
  EXPECT_EQ(socket_connect(tcp, 80, (std::string(70, 'a') + ".invalid").c_str()), -1);
  EXPECT_EQ(socket_readline(file, line, 10), -1);
  // Nobody listens on the client's own port.
  EXPECT_EQ(socket_connect(tcp, PortOf(link.client), "127.0.0.1"), -1);
  const std::string not_opened =
      "FilePrintf(" + std::to_string(file) + ", \"x=%d\", ...): file is not opened.\n";
  EXPECT_EQ(GetCapturedStderr(),
            "FileOpen(\"/dev/null\", \"x\"): mode does not start with 'r' nor 'w'\n" + not_opened +
                "FilePointer(1, 2): rw flag is 0 or 1\n"
                "Incorrect socket type\n"
                "Hostname must be specified\n"
                "Incorrect shutdown type(how)\n"
                "Can't shutdown\n"
                "Can't listen\n"
                "Can't accept\n" +
                SystemError("socket_accept()", EINVAL) + "Can't bind host address\n" +
                SystemError("socket_bind()", EADDRINUSE) + "Can't send messsage to 127.0.0.1\n" +
                SystemError("socket_sendto()", EPIPE) + "Can't receive message\n" +
                SystemError("socket_recvfrom()", ENOTSOCK) + "Can't get host entry\n" +
                "Can't connect host address\n" + SystemError("socket_connect()", ECONNREFUSED));
  EXPECT_EQ(from, nullptr);
  EXPECT_EQ(message, nullptr);
  for (int fd : {tcp, udp, file}) socket_close(fd);
}

// Holds every free descriptor below floor, so the next one handed out is floor or above.
std::vector<int> HoldBelow(int floor) {
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::max<rlim_t>(limit.rlim_cur, std::min<rlim_t>(limit.rlim_max, 5000));
  setrlimit(RLIMIT_NOFILE, &limit);
  std::vector<int> held;
  int fd = open("/dev/null", O_RDONLY);
  for (; fd >= 0 && fd < floor; fd = dup(fd)) held.push_back(fd);
  close(fd);
  return held;
}

TEST(StreamTable, DescriptorsPastTheTableAreRefusedAndClosed) {
  TcpLink link;
  ASSERT_GE(link.server, 0);
  CaptureStderr();
  std::vector<int> held = HoldBelow(kStreamTableSize);
  EXPECT_EQ(FileOpen("/dev/null", "r"), -1);
  EXPECT_EQ(ProcessOpen("cat"), -1);
  EXPECT_EQ(socket_open("udp"), -1);
  EXPECT_EQ(FilePointer(kStreamTableSize, 0), nullptr);
  EXPECT_EQ(fcntl(kStreamTableSize, F_GETFD), -1);
  for (int fd : held) close(fd);
  // Only 4095 free: a pipe's write end or an accepted connection would be 4096.
  held = HoldBelow(kStreamTableSize - 1);
  EXPECT_EQ(ProcessOpen("cat"), -1);
  const int peer = socket_open("tcp");
  EXPECT_EQ(socket_connect(peer, PortOf(link.listener), "127.0.0.1"), 0);
  EXPECT_EQ(socket_accept(link.listener), -1);
  socket_close(peer);
  for (int fd : held) close(fd);
  EXPECT_EQ(GetCapturedStderr(),
            "FileOpen(\"/dev/null\", \"r\"): file descriptor is too large.\n"
            "ProcessOpen(\"cat\"): Too many processes are opened.\n"
            "socket_open() : Too many sockets are opened.\n"
            "FilePointer(4096, 0): file descriptor is too large.\n"
            "ProcessOpen(\"cat\"): Too many processes are opened.\n"
            "accept() : Too may sockets are opened.\n");
}

}  // namespace
