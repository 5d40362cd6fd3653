// Velk: the umbrella header of the runtime library: every public header.
#ifndef VELK_H
#define VELK_H

#include "core/alloc.h"
#include "core/constructors.h"
#include "core/matrix.h"
#include "core/registry.h"
#include "core/report.h"
#include "core/scope.h"
#include "core/text.h"
#include "sys/process.h"
#include "sys/sockets.h"
#include "sys/stream_table.h"
#include "scalar/complex.h"
#include "scalar/fill.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "io/binary.h"
#include "io/output_file.h"
#include "io/scalar_file.h"
#include "io/text_format.h"
#include "matrix/block.h"
#include "matrix/elements.h"
#include "matrix/operations.h"
#include "container/list.h"
#include "container/string.h"
#include "editor/editor.h"
#include "editor/entry.h"
#include "editor/terminal.h"

#endif
