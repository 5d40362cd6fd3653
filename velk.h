// Velk: the umbrella header of the runtime library.
#ifndef VELK_H
#define VELK_H

#include "core/alloc.h"
#include "core/constructors.h"
#include "core/matrix.h"
#include "core/registry.h"
#include "core/report.h"
#include "core/scope.h"
#include "editor/editor.h"
#include "editor/entry.h"
#include "editor/terminal.h"
#include "io/text_format.h"
#include "matrix/block.h"
#include "matrix/operations.h"
#include "sys/process.h"
#include "sys/sockets.h"
#include "sys/stream_table.h"

#endif
