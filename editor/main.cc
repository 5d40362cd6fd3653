// velk-edit: edits each matrix text file named on the command line.
#include "editor/entry.h"

int main(int argc, char **argv) { return VelkEditMain(argc, argv); }
