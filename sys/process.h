// Child processes behind a pipe pair in the stream table.
#ifndef VELK_SYS_PROCESS_H
#define VELK_SYS_PROCESS_H

// Runs a program with its standard input and output on pipes and returns the
// descriptor whose entry holds them: reading gets the child's output, writing
// feeds its input (both streams unbuffered). The command line is split into
// words at blanks and tabs; a first word starting with '/' is run as given,
// any other is searched for on PATH. A program that cannot be run still gives
// a descriptor: the child exits with status 1 and the read stream meets EOF.
// Returns -1 when a pipe, the fork or a stream cannot be made, or the
// descriptors do not fit the table. Finished children are reaped by a SIGCHLD
// handler installed on the first call and kept for the rest of the run, so a
// caller that forks children of its own cannot rely on waiting for them.
int ProcessOpen(const char *command);

// Closes both pipes (the same as FileClose); the child sees end of input.
int ProcessClose(int fd);

#endif
