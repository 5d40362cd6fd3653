// Text files of single values: integers, reals and strings ("stdout" is the
// standard output, never closed). Each returns 0, or -1 after a message on
// standard error: the open failure's, or "<function>(): Can't write file
// <name>." when a write or the close failed (the old file is then kept).
#ifndef VELK_IO_SCALAR_FILE_H
#define VELK_IO_SCALAR_FILE_H

// "%s = %d" (or "%d" without a name), then ";\n\n" when terminated.
int IntegerFileSave(int value, const char *file, const char *name, int append, int terminate);
// "%s = " then the value as "%16s" of "%16.8E", then ";\n\n" when terminated.
int RealFileSave(double value, const char *file, const char *name, int append, int terminate);
// Writes text into file (mode "w"). `name` is the text object's name.
int StringFileWrite(const char *name, const char *text, const char *file);

#endif
