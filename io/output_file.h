// Output files of the text writers, written so that a failure never costs the
// user the file that was there.
//
// A named file opened to be replaced is written to a temporary file in the
// same folder, which is renamed over it only when every write, the flush to
// disk and the close have succeeded; the replacement keeps the old file's
// permission bits (and, where allowed, its owner) and writes through a
// symbolic link to the file it names. Where no temporary can be made (a
// read-only folder holding a writable file) or the target is not a regular
// file (a device, a pipe), the file is written in place. "stdout" is the
// standard output, flushed and never closed; appending writes in place and
// never truncates what was there. Either way Finish says whether everything
// written arrived.
#ifndef VELK_IO_OUTPUT_FILE_H
#define VELK_IO_OUTPUT_FILE_H

#include <cstdio>
#include <string>

class OutputFile {
 public:
  OutputFile(const char *file, bool append);
  ~OutputFile();  // an unfinished replacement is abandoned: the temporary goes
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;

  // Null when the file could not be opened.
  FILE *stream() const { return fp_; }
  // Checks the writes and the close, then puts the new file in place. False
  // on any failure; a replaced file is then as it was and the temporary gone.
  bool Finish();
  // Drops what was written: a replaced file is left as it was.
  void Abandon();

 private:
  FILE *fp_ = nullptr;
  std::string target_;     // the file renamed over (a link's final target)
  std::string temporary_;  // empty when writing in place
};

// Writes file through an OutputFile with write(stream). Returns null, or the
// words that begin the failure's message, before the file name: "Can't open
// file " or "Can't write file ".
template <class Write>
const char *OutputFileSave(const char *file, bool append, Write write) {
  OutputFile out(file, append);
  if (out.stream() == nullptr) return "Can't open file ";
  write(out.stream());
  return out.Finish() ? nullptr : "Can't write file ";
}

// Test seam: called with the descriptor of every new temporary before any
// write, so a test can point it at a failing device (/dev/full). Returns the
// previous hook; null restores the plain behaviour.
using OutputTemporaryHook = void (*)(int fd);
OutputTemporaryHook OutputFileSetTemporaryHook(OutputTemporaryHook hook);

#endif
