// The process-wide streams. They are built while the library loads, in this
// order (one file keeps the order of definition). Nothing here can fail for
// want of a file or a console: the writers only remember where to write, the
// error log is opened by each write, and a sink that cannot take the text
// drops it.
#include <qz/logging/console_writer.h>
#include <qz/logging/debug_writer.h>
#include <qz/logging/file_writer.h>
#include <qz/logging/global_streams.h>

TDebugStream Console(new TConsoleWriter(false));
TDebugStream Debug(new TDebugWriter);
TDebugStream Error(new TDebugWriter, new TConsoleWriter(false), new TFileWriter("c:\\error.log"));
