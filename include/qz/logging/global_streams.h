// The three process-wide log streams, built while qz.dll loads and alive
// until it unloads:
//
//   Console  the process console (one TConsoleWriter(false))
//   Debug    diagnostics, the library's own included (one TDebugWriter)
//   Error    errors: the debugger, the console and the file "c:\error.log"
//            (TDebugWriter, TConsoleWriter(false), TFileWriter)
//
//   TDebugStreamSession(Error) << e << '\n';
//
// Building them opens nothing: the error log is opened by each write, and a
// write that cannot reach its sink drops the text.
//
// Thread safety: like any TDebugStream, each has its own mutex; any thread
// may write to them and change their writers.
#pragma once

#include <qz/export.h>
#include <qz/logging/debug_stream.h>

extern QZ_API TDebugStream Console;
extern QZ_API TDebugStream Debug;
extern QZ_API TDebugStream Error;
