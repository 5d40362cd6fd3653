// IPv4 sockets in the stream table.
//
// Every failure prints a fixed line on stderr, for most calls followed by the
// system's error text under the call's name, and returns -1 or the system
// call's own negative result. Sending never raises SIGPIPE: a peer that has
// gone shows as a failed send.
#ifndef VELK_SYS_SOCKETS_H
#define VELK_SYS_SOCKETS_H

// type "TCP"/"tcp" for a stream socket, "UDP"/"udp" for a datagram socket
// (no other spelling). Address reuse is set. The entry gets no streams yet.
int socket_open(const char *type);

// The same as FileClose.
int socket_close(int fd);

// how: 0 no more receiving, 1 no more sending, 2 neither.
int socket_shutdown(int fd, int how);

int socket_listen(int fd, int backlog);

// The accepted socket, with unbuffered read and write streams in its entry.
int socket_accept(int fd);

// Host: an empty text is the any-address, otherwise a dotted address or a
// name to look up. On success the entry gets unbuffered read and write streams.
// REQUIRES: fd < kStreamTableSize.
int socket_connect(int fd, int port, const char *host);

int socket_bind(int fd, int port, const char *host);

// Sends text without its terminating zero to host:port (host not empty).
// Returns the bytes sent.
int socket_sendto(int fd, int port, const char *host, const char *text);

// Receives one datagram of at most 1024 bytes (the rest of a longer one is
// lost). On success *message is a zero-terminated copy of the bytes and
// *sender the host name of the sender, or null when it has no name; the
// caller releases both with efree. On failure both are null.
int socket_recvfrom(int fd, char **sender, char **message);

// Reads until count bytes have arrived or the peer closes; returns the bytes
// read, or the failing result of a receive.
int socket_readn(int fd, void *buffer, int count);

// Sends all count bytes; returns count, or the first send result below 1.
int socket_writen(int fd, const void *buffer, int count);

int socket_write_string(int fd, const char *text);

// Reads one line, a byte at a time, into buffer (size bytes, always
// zero-terminated), keeping the line feed. Returns the count of the read
// loop: the bytes stored when the line ends in a line feed, one more than
// stored when it ends at size-1 bytes or at the end of the connection;
// 0 at the end of the connection before any byte, -1 on a receive error.
// A size of 1 or less reads nothing and returns 1.
int socket_readline(int fd, char *buffer, int size);

#endif
