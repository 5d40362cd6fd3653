#include "sys/sockets.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "core/alloc.h"
#include "sys/stream_table.h"

namespace {

constexpr int kDatagramMax = 1024;

// The address for host:port. An empty host is the any-address; otherwise a
// dotted address, or else a name looked up as IPv4.
bool FormAddress(int port, const char *host, sockaddr_in *address) {
  *address = {};
  address->sin_family = AF_INET;
  address->sin_port = htons(static_cast<uint16_t>(port));
  if (host == nullptr || host[0] == '\0') {
    address->sin_addr.s_addr = htonl(INADDR_ANY);
    return true;
  }
  if (inet_aton(host, &address->sin_addr) != 0) return true;
  addrinfo hints = {};
  hints.ai_family = AF_INET;
  addrinfo *found = nullptr;
  if (getaddrinfo(host, nullptr, &hints, &found) != 0 || found == nullptr) {
    fputs("Can't get host entry\n", stderr);
    return false;
  }
  address->sin_addr = reinterpret_cast<sockaddr_in *>(found->ai_addr)->sin_addr;
  freeaddrinfo(found);
  return true;
}

const sockaddr *AsGeneric(const sockaddr_in *address) {
  return reinterpret_cast<const sockaddr *>(address);
}

// Both directions of a connected socket as unbuffered streams, so what is
// written through them is on the wire at once.
bool AttachStreams(int fd) {
  if (fd < 0 || fd >= kStreamTableSize) return false;
  FILE *read = fdopen(fd, "rb");
  if (read == nullptr) return false;
  FILE *write = fdopen(fd, "wb");
  if (write == nullptr) return false;  // read is left open: closing it would close fd
  setvbuf(read, nullptr, _IONBF, 0);
  setvbuf(write, nullptr, _IONBF, 0);
  StreamTableSet(fd, read, write);
  return true;
}

}  // namespace

int socket_open(const char *type) {
  int kind;
  if (strcmp(type, "TCP") == 0 || strcmp(type, "tcp") == 0) {
    kind = SOCK_STREAM;
  } else if (strcmp(type, "UDP") == 0 || strcmp(type, "udp") == 0) {
    kind = SOCK_DGRAM;
  } else {
    fputs("Incorrect socket type\n", stderr);
    return -1;
  }
  int fd = socket(AF_INET, kind, 0);
  if (fd < 0) {
    fputs(kind == SOCK_STREAM ? "Can't open stream socket\n" : "Can't open datagram socket\n", stderr);
    perror("socket_open()");
    return -1;
  }
  if (fd > 0) {
    // A server restarted on its port must not wait out TIME_WAIT.
    int on = 1;
    if (setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) < 0) {
      fputs("Can't set socket option\n", stderr);
      perror("socket_open()");
    }
  }
  if (fd >= kStreamTableSize) {
    close(fd);
    fputs("socket_open() : Too many sockets are opened.\n", stderr);
    return -1;
  }
  return fd;
}

int socket_close(int fd) { return FileClose(fd); }

int socket_shutdown(int fd, int how) {
  if (how != 0 && how != 1 && how != 2) {
    fputs("Incorrect shutdown type(how)\n", stderr);
    return -1;
  }
  int result = shutdown(fd, how);
  if (result < 0) fputs("Can't shutdown\n", stderr);
  return result;
}

int socket_listen(int fd, int backlog) {
  int result = listen(fd, backlog);
  if (result < 0) fputs("Can't listen\n", stderr);
  return result;
}

int socket_accept(int fd) {
  int peer = accept(fd, nullptr, nullptr);
  if (peer < 0) {
    fputs("Can't accept\n", stderr);
    perror("socket_accept()");
    return peer;
  }
  if (peer >= kStreamTableSize) {
    close(peer);
    fputs("accept() : Too may sockets are opened.\n", stderr);
    return -1;
  }
  if (!AttachStreams(peer)) {
    // The connection was never handed out, so it is ours to drop.
    close(peer);
    return -1;
  }
  return peer;
}

int socket_connect(int fd, int port, const char *host) {
  sockaddr_in address;
  if (!FormAddress(port, host, &address)) return -1;
  int result = connect(fd, AsGeneric(&address), sizeof address);
  if (result < 0) {
    fputs("Can't connect host address\n", stderr);
    perror("socket_connect()");
    return result;
  }
  if (!AttachStreams(fd)) {
    fputs("Can't fdopen() socket discriptor\n", stderr);
    return -1;
  }
  return result;
}

int socket_bind(int fd, int port, const char *host) {
  sockaddr_in address;
  if (!FormAddress(port, host, &address)) return -1;
  int result = bind(fd, AsGeneric(&address), sizeof address);
  if (result < 0) {
    fputs("Can't bind host address\n", stderr);
    perror("socket_bind()");
  }
  return result;
}

int socket_sendto(int fd, int port, const char *host, const char *text) {
  if (host == nullptr || host[0] == '\0') {
    fputs("Hostname must be specified\n", stderr);
    return -1;
  }
  sockaddr_in address;
  if (!FormAddress(port, host, &address)) return -1;
  ssize_t sent = sendto(fd, text, strlen(text), MSG_NOSIGNAL, AsGeneric(&address), sizeof address);
  if (sent < 0) {
    fprintf(stderr, "Can't send messsage to %s\n", host);
    perror("socket_sendto()");
  }
  return static_cast<int>(sent);
}

int socket_recvfrom(int fd, char **sender, char **message) {
  *sender = nullptr;
  *message = nullptr;
  char buffer[kDatagramMax];
  sockaddr_in from = {};
  socklen_t from_size = sizeof from;
  ssize_t got = recvfrom(fd, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr *>(&from), &from_size);
  if (got < 0) {
    fputs("Can't receive message\n", stderr);
    perror("socket_recvfrom()");
    return static_cast<int>(got);
  }
  int n = static_cast<int>(got);
  *message = static_cast<char *>(emalloc(n + 1));
  memcpy(*message, buffer, static_cast<size_t>(n));
  (*message)[n] = '\0';
  char name[NI_MAXHOST];
  if (from_size >= sizeof from && from.sin_family == AF_INET &&
      getnameinfo(reinterpret_cast<sockaddr *>(&from), from_size, name, sizeof name, nullptr, 0,
                  NI_NAMEREQD) == 0)
    *sender = StringDup(name);
  return n;
}

int socket_readn(int fd, void *buffer, int count) {
  if (count < 1) return 0;
  char *bytes = static_cast<char *>(buffer);
  int got = 0;
  while (got < count) {
    ssize_t r = recv(fd, bytes + got, static_cast<size_t>(count - got), 0);
    if (r < 0 && errno == EINTR) continue;
    if (r < 0) return static_cast<int>(r);
    if (r == 0) break;
    got += static_cast<int>(r);
  }
  return got;
}

int socket_writen(int fd, const void *buffer, int count) {
  if (count < 1) return 0;
  const char *bytes = static_cast<const char *>(buffer);
  int sent = 0;
  while (sent < count) {
    ssize_t r = send(fd, bytes + sent, static_cast<size_t>(count - sent), MSG_NOSIGNAL);
    if (r < 0 && errno == EINTR) continue;
    if (r < 1) return static_cast<int>(r);
    sent += static_cast<int>(r);
  }
  return sent;
}

int socket_write_string(int fd, const char *text) {
  return socket_writen(fd, text, static_cast<int>(strlen(text)));
}

int socket_readline(int fd, char *buffer, int size) {
  if (size == 1) buffer[0] = '\0';
  // n counts passes of the loop, not bytes: a line cut off by the size or by
  // the end of the connection reports one more than it stored.
  int n;
  char *p = buffer;
  for (n = 1; n < size; ++n) {
    char c;
    ssize_t r = recv(fd, &c, 1, 0);
    if (r < 0 && errno == EINTR) {
      --n;
      continue;
    }
    if (r == 1) {
      *p++ = c;
      if (c == '\n') break;
    } else if (r == 0) {
      if (n == 1) {
        *p = '\0';
        return 0;
      }
      break;
    } else {
      *p = '\0';
      return -1;
    }
  }
  if (size > 1) *p = '\0';
  return n;
}
