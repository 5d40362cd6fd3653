#include "sys/sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "core/alloc.h"
#include "sys/stream_table.h"
#include "sys_test_util.h"

namespace {

using velk_test::IsOpenDescriptor;
using velk_test::PortOf;
using velk_test::SetTimeouts;

// A connected loopback pair, built with the calls under test.
struct TcpLink {
  int listener = -1;
  int client = -1;
  int server = -1;
  bool ok() const { return listener >= 0 && client >= 0 && server >= 0; }
};

TcpLink OpenLink(const char *bind_host = "127.0.0.1", const char *connect_host = "127.0.0.1") {
  TcpLink link;
  link.listener = socket_open("tcp");
  if (link.listener < 0) return link;
  SetTimeouts(link.listener);
  if (socket_bind(link.listener, 0, bind_host) != 0 || socket_listen(link.listener, 4) != 0) return link;
  link.client = socket_open("TCP");
  if (link.client < 0) return link;
  SetTimeouts(link.client);
  if (socket_connect(link.client, PortOf(link.listener), connect_host) != 0) return link;
  link.server = socket_accept(link.listener);
  if (link.server >= 0) SetTimeouts(link.server);
  return link;
}

void CloseLink(TcpLink &link) {
  for (int *fd : {&link.server, &link.client, &link.listener}) {
    if (*fd >= 0) socket_close(*fd);
    *fd = -1;
  }
}

// The name a reverse lookup of 127.0.0.1 gives, through the older call.
std::string LoopbackName() {
  in_addr loopback;
  inet_aton("127.0.0.1", &loopback);
  hostent *entry = gethostbyaddr(&loopback, sizeof loopback, AF_INET);
  return entry != nullptr ? entry->h_name : "";
}

std::string SystemError(const char *prefix, int error) {
  return std::string(prefix) + ": " + strerror(error) + "\n";
}

int SocketOption(int fd, int option) {
  int value = 0;
  socklen_t size = sizeof value;
  getsockopt(fd, SOL_SOCKET, option, &value, &size);
  return value;
}

TEST(Socket, OpenAcceptsExactlyFourSpellings) {
  struct Case {
    const char *type;
    int kind;
  };
  for (Case c : {Case{"TCP", SOCK_STREAM}, Case{"tcp", SOCK_STREAM}, Case{"UDP", SOCK_DGRAM},
                 Case{"udp", SOCK_DGRAM}}) {
    SCOPED_TRACE(c.type);
    int fd = socket_open(c.type);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(SocketOption(fd, SO_TYPE), c.kind);
    EXPECT_NE(SocketOption(fd, SO_REUSEADDR), 0);
    EXPECT_FALSE(FileIsOpen(fd));  // no streams before a connection
    EXPECT_EQ(socket_close(fd), 0);
    EXPECT_FALSE(IsOpenDescriptor(fd));
  }
  testing::internal::CaptureStderr();
  for (const char *type : {"Tcp", "uDP", "", "tcp ", "TCPX", "sctp"}) EXPECT_EQ(socket_open(type), -1) << type;
  std::string expected;
  for (int i = 0; i < 6; ++i) expected += "Incorrect socket type\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
}

TEST(Socket, DescriptorsPastTheTableAreRefusedAndClosed) {
  int listener = socket_open("tcp");
  ASSERT_GE(listener, 0);
  SetTimeouts(listener);
  ASSERT_EQ(socket_bind(listener, 0, "127.0.0.1"), 0);
  ASSERT_EQ(socket_listen(listener, 4), 0);
  std::string err;
  {
    testing::internal::CaptureStderr();
    velk_test::DescriptorFloor floor(kStreamTableSize);
    if (!floor.ok()) {
      testing::internal::GetCapturedStderr();
      socket_close(listener);
      GTEST_SKIP() << "cannot hold 4096 descriptors here";
    }
    EXPECT_EQ(socket_open("udp"), -1);
    EXPECT_FALSE(IsOpenDescriptor(kStreamTableSize));

    // The peer takes 4096 itself, so the accepted socket would be 4097.
    int peer = socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(peer, kStreamTableSize);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(PortOf(listener)));
    inet_aton("127.0.0.1", &address.sin_addr);
    ASSERT_EQ(connect(peer, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    EXPECT_EQ(socket_accept(listener), -1);
    EXPECT_FALSE(IsOpenDescriptor(kStreamTableSize + 1));
    close(peer);
    err = testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(err,
            "socket_open() : Too many sockets are opened.\n"
            "accept() : Too may sockets are opened.\n");
  socket_close(listener);
}

TEST(Socket, ConnectedSocketsGetUnbufferedStreams) {
  TcpLink link = OpenLink();
  ASSERT_TRUE(link.ok());
  for (int fd : {link.client, link.server}) {
    EXPECT_TRUE(FileIsOpen(fd));
    FILE *read = FilePointer(fd, 0);
    FILE *write = FilePointer(fd, 1);
    ASSERT_NE(read, nullptr);
    ASSERT_NE(write, nullptr);
    EXPECT_NE(read, write);
    EXPECT_EQ(fileno(read), fd);
    EXPECT_EQ(fileno(write), fd);
  }

  // Without a flush the bytes must already be on the wire.
  ASSERT_GE(fputs("to server\n", FilePointer(link.client, 1)), 0);
  char buffer[64] = {};
  ASSERT_EQ(socket_readn(link.server, buffer, 10), 10);
  EXPECT_STREQ(buffer, "to server\n");

  ASSERT_EQ(FilePrintf(link.server, "%d %s\n", 7, "back"), 0);
  ASSERT_NE(fgets(buffer, sizeof buffer, FilePointer(link.client, 0)), nullptr);
  EXPECT_STREQ(buffer, "7 back\n");

  int client = link.client;
  EXPECT_EQ(socket_close(client), 0);
  link.client = -1;
  EXPECT_FALSE(FileIsOpen(client));
  EXPECT_FALSE(IsOpenDescriptor(client));
  EXPECT_EQ(socket_readline(link.server, buffer, sizeof buffer), 0);  // the peer has gone
  CloseLink(link);
}

TEST(Socket, HostNamesAndTheAnyAddress) {
  // Bound to the any-address, reached by a name from the hosts table.
  TcpLink link = OpenLink("", "localhost");
  ASSERT_TRUE(link.ok());
  sockaddr_in bound = {};
  socklen_t size = sizeof bound;
  ASSERT_EQ(getsockname(link.listener, reinterpret_cast<sockaddr *>(&bound), &size), 0);
  EXPECT_EQ(bound.sin_addr.s_addr, htonl(INADDR_ANY));
  EXPECT_EQ(socket_write_string(link.client, "via name"), 8);
  char buffer[16] = {};
  EXPECT_EQ(socket_readn(link.server, buffer, 8), 8);
  EXPECT_STREQ(buffer, "via name");
  CloseLink(link);
}

TEST(Socket, ReadlineStopsAtLineFeedSizeOrEnd) {
  TcpLink link = OpenLink();
  ASSERT_TRUE(link.ok());
  char buffer[16];

  ASSERT_EQ(socket_write_string(link.client, "abc\n"), 4);
  EXPECT_EQ(socket_readline(link.server, buffer, 10), 4);
  EXPECT_STREQ(buffer, "abc\n");

  // Cut at size-1 bytes: the count runs one past what was stored.
  ASSERT_EQ(socket_write_string(link.client, "defghij\n"), 8);
  EXPECT_EQ(socket_readline(link.server, buffer, 4), 4);
  EXPECT_STREQ(buffer, "def");
  EXPECT_EQ(socket_readline(link.server, buffer, 10), 5);
  EXPECT_STREQ(buffer, "ghij\n");

  // Sizes of 1 or less read nothing.
  ASSERT_EQ(socket_write_string(link.client, "k\n"), 2);
  memset(buffer, 'Z', sizeof buffer);
  EXPECT_EQ(socket_readline(link.server, buffer, 1), 1);
  EXPECT_EQ(buffer[0], '\0');
  buffer[0] = 'Z';
  EXPECT_EQ(socket_readline(link.server, buffer, 0), 1);
  EXPECT_EQ(buffer[0], 'Z');
  EXPECT_EQ(socket_readline(link.server, buffer, 10), 2);
  EXPECT_STREQ(buffer, "k\n");

  // The end of the connection ends a line, then reads as 0.
  ASSERT_EQ(socket_write_string(link.client, "xy"), 2);
  ASSERT_EQ(socket_shutdown(link.client, 1), 0);
  EXPECT_EQ(socket_readline(link.server, buffer, 10), 3);
  EXPECT_STREQ(buffer, "xy");
  memset(buffer, 'Z', sizeof buffer);
  EXPECT_EQ(socket_readline(link.server, buffer, 10), 0);
  EXPECT_STREQ(buffer, "");
  CloseLink(link);

  // A receive error: the descriptor is no socket.
  int file = open("/dev/null", O_RDONLY);
  ASSERT_GE(file, 0);
  memset(buffer, 'Z', sizeof buffer);
  EXPECT_EQ(socket_readline(file, buffer, 10), -1);
  EXPECT_STREQ(buffer, "");
  close(file);
}

TEST(Socket, ReadnAndWritenMoveEveryByte) {
  TcpLink link = OpenLink();
  ASSERT_TRUE(link.ok());

  // Far more than the socket buffers hold, so both sides must loop.
  const int size = 1 << 21;
  std::vector<unsigned char> sent(size);
  for (int i = 0; i < size; ++i) sent[i] = static_cast<unsigned char>(i * 7 + i / 251);
  std::vector<unsigned char> received(size);
  int got = -2;
  std::thread reader([&] { got = socket_readn(link.server, received.data(), size); });
  int put = socket_writen(link.client, sent.data(), size);
  reader.join();
  EXPECT_EQ(put, size);
  ASSERT_EQ(got, size);
  EXPECT_TRUE(received == sent);

  // Pieces that arrive apart, then the end: readn returns what came.
  std::thread writer([&] {
    for (const char *piece : {"ab", "cde", "fghij"}) {
      socket_write_string(link.client, piece);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    socket_shutdown(link.client, 1);
  });
  char buffer[100] = {};
  int pieces = socket_readn(link.server, buffer, 99);
  writer.join();
  EXPECT_EQ(pieces, 10);
  EXPECT_STREQ(buffer, "abcdefghij");

  EXPECT_EQ(socket_readn(link.server, buffer, 0), 0);
  EXPECT_EQ(socket_readn(link.server, buffer, -5), 0);
  EXPECT_EQ(socket_writen(link.server, buffer, 0), 0);
  EXPECT_EQ(socket_writen(link.server, buffer, -1), 0);
  EXPECT_EQ(socket_write_string(link.server, ""), 0);
  CloseLink(link);

  int file = open("/dev/null", O_RDWR);
  ASSERT_GE(file, 0);
  EXPECT_EQ(socket_readn(file, buffer, 4), -1);
  EXPECT_EQ(socket_writen(file, "abcd", 4), -1);
  close(file);
}

TEST(Socket, WritingToAVanishedPeerFailsInsteadOfEndingTheProgram) {
  TcpLink link = OpenLink();
  ASSERT_TRUE(link.ok());
  socket_close(link.server);
  link.server = -1;
  std::vector<char> block(4096, 'q');
  int result = 1;
  int error = 0;
  // The first sends may still be taken before the reset arrives.
  for (int i = 0; i < 200 && result >= 1; ++i) {
    result = socket_writen(link.client, block.data(), static_cast<int>(block.size()));
    error = errno;
    if (result >= 1) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_EQ(result, -1);
  EXPECT_TRUE(error == EPIPE || error == ECONNRESET) << strerror(error);
  // Once the connection is known dead, every send meets EPIPE, the case that
  // would otherwise raise SIGPIPE.
  errno = 0;
  EXPECT_EQ(socket_writen(link.client, block.data(), 1), -1);
  EXPECT_EQ(errno, EPIPE) << strerror(errno);
  CloseLink(link);
}

TEST(Socket, DatagramsOverLoopback) {
  int receiver = socket_open("udp");
  ASSERT_GE(receiver, 0);
  SetTimeouts(receiver);
  ASSERT_EQ(socket_bind(receiver, 0, "127.0.0.1"), 0);
  const int port = PortOf(receiver);
  int sender = socket_open("UDP");
  ASSERT_GE(sender, 0);
  const std::string loopback_name = LoopbackName();

  char *from = nullptr;
  char *message = nullptr;
  auto release = [&] {
    if (from != nullptr) efree(from);
    if (message != nullptr) efree(message);
    from = message = nullptr;
  };

  EXPECT_EQ(socket_sendto(sender, port, "127.0.0.1", "hello"), 5);
  EXPECT_EQ(socket_recvfrom(receiver, &from, &message), 5);
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message, "hello");
  if (loopback_name.empty())
    EXPECT_EQ(from, nullptr);
  else
    EXPECT_STREQ(from, loopback_name.c_str());
  release();

  // Only the first 1024 bytes of a longer datagram are kept; the rest is lost,
  // not left for the next receive.
  std::string long_text(2000, ' ');
  for (int i = 0; i < 2000; ++i) long_text[i] = static_cast<char>('a' + (i * 11 + i / 26) % 26);
  EXPECT_EQ(socket_sendto(sender, port, "127.0.0.1", long_text.c_str()), 2000);
  EXPECT_EQ(socket_recvfrom(receiver, &from, &message), 1024);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(std::string(message), long_text.substr(0, 1024));
  release();

  EXPECT_EQ(socket_sendto(sender, port, "localhost", "after"), 5);
  EXPECT_EQ(socket_recvfrom(receiver, &from, &message), 5);
  EXPECT_STREQ(message, "after");
  release();

  // An empty datagram still gives a message: the empty string.
  EXPECT_EQ(socket_sendto(sender, port, "127.0.0.1", ""), 0);
  EXPECT_EQ(socket_recvfrom(receiver, &from, &message), 0);
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message, "");
  release();

  socket_close(sender);
  socket_close(receiver);
}

// Runs call with stderr captured; returns what it printed. saved_errno gets
// errno as the call left it, for the system error text.
template <class Call>
std::string StderrOf(Call call, int *result, int *saved_errno = nullptr) {
  testing::internal::CaptureStderr();
  errno = 0;
  *result = call();
  int error = errno;
  std::string text = testing::internal::GetCapturedStderr();
  if (saved_errno != nullptr) *saved_errno = error;
  return text;
}

TEST(Socket, FailuresPrintTheirMessagesAndReturnNegative) {
  int tcp = socket_open("tcp");
  int udp = socket_open("udp");
  ASSERT_GE(tcp, 0);
  ASSERT_GE(udp, 0);
  int result = 0;
  int error = 0;

  EXPECT_EQ(StderrOf([&] { return socket_sendto(udp, 9, "", "x"); }, &result),
            "Hostname must be specified\n");
  EXPECT_EQ(result, -1);
  EXPECT_EQ(StderrOf([&] { return socket_sendto(udp, 9, nullptr, "x"); }, &result),
            "Hostname must be specified\n");
  EXPECT_EQ(result, -1);

  for (int how : {3, -1}) {
    EXPECT_EQ(StderrOf([&] { return socket_shutdown(tcp, how); }, &result), "Incorrect shutdown type(how)\n");
    EXPECT_EQ(result, -1);
  }
  EXPECT_EQ(StderrOf([&] { return socket_shutdown(tcp, 2); }, &result), "Can't shutdown\n");
  EXPECT_EQ(result, -1);

  EXPECT_EQ(StderrOf([&] { return socket_listen(udp, 1); }, &result), "Can't listen\n");
  EXPECT_EQ(result, -1);

  std::string text = StderrOf([&] { return socket_accept(tcp); }, &result, &error);
  EXPECT_EQ(text, "Can't accept\n" + SystemError("socket_accept()", error));
  EXPECT_EQ(result, -1);

  // A port that was just free: nobody listens there.
  int probe = socket_open("tcp");
  ASSERT_EQ(socket_bind(probe, 0, "127.0.0.1"), 0);
  const int closed_port = PortOf(probe);
  socket_close(probe);
  text = StderrOf([&] { return socket_connect(tcp, closed_port, "127.0.0.1"); }, &result, &error);
  EXPECT_EQ(error, ECONNREFUSED);
  EXPECT_EQ(text, "Can't connect host address\n" + SystemError("socket_connect()", error));
  EXPECT_EQ(result, -1);
  EXPECT_FALSE(FileIsOpen(tcp));

  int listener = socket_open("tcp");
  ASSERT_EQ(socket_bind(listener, 0, "127.0.0.1"), 0);
  ASSERT_EQ(socket_listen(listener, 1), 0);
  int second = socket_open("tcp");
  text = StderrOf([&] { return socket_bind(second, PortOf(listener), "127.0.0.1"); }, &result, &error);
  EXPECT_EQ(error, EADDRINUSE);
  EXPECT_EQ(text, "Can't bind host address\n" + SystemError("socket_bind()", error));
  EXPECT_EQ(result, -1);

  int stream = socket_open("tcp");
  text = StderrOf([&] { return socket_sendto(stream, PortOf(listener), "127.0.0.1", "x"); }, &result, &error);
  EXPECT_EQ(text, "Can't send messsage to 127.0.0.1\n" + SystemError("socket_sendto()", error));
  EXPECT_EQ(result, -1);

  int file = open("/dev/null", O_RDONLY);
  ASSERT_GE(file, 0);
  char *from = reinterpret_cast<char *>(1);
  char *message = reinterpret_cast<char *>(1);
  text = StderrOf([&] { return socket_recvfrom(file, &from, &message); }, &result, &error);
  EXPECT_EQ(text, "Can't receive message\n" + SystemError("socket_recvfrom()", error));
  EXPECT_EQ(result, -1);
  EXPECT_EQ(from, nullptr);
  EXPECT_EQ(message, nullptr);
  close(file);

  // A label longer than 63 characters fails the lookup before any query is sent.
  const std::string bad_host = std::string(70, 'a') + ".invalid";
  EXPECT_EQ(StderrOf([&] { return socket_connect(stream, 80, bad_host.c_str()); }, &result),
            "Can't get host entry\n");
  EXPECT_EQ(result, -1);
  EXPECT_EQ(StderrOf([&] { return socket_bind(stream, 0, bad_host.c_str()); }, &result), "Can't get host entry\n");
  EXPECT_EQ(result, -1);
  EXPECT_EQ(StderrOf([&] { return socket_sendto(udp, 9, bad_host.c_str(), "x"); }, &result),
            "Can't get host entry\n");
  EXPECT_EQ(result, -1);

  for (int fd : {tcp, udp, listener, second, stream}) socket_close(fd);
}

}  // namespace
