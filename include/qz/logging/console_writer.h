// TConsoleWriter: writes log text to the process console.
//
// The text is converted from the ANSI to the OEM code page, which is what a
// console shows, and written with WriteConsoleA to the standard output handle
// taken at construction. Line feeds go out unchanged. When standard output is
// no console (redirected to a file or a pipe) the write fails and the text is
// dropped.
//
// Thread safety: any thread may write (see TStreamWriter); the handle is
// the process's own and is never closed by the writer.
#pragma once

#include <qz/export.h>
#include <qz/logging/stream_writer.h>

class QZ_API TConsoleWriter : public TStreamWriter {
 public:
  // `allocate` first creates a console for the process (AllocConsole; its
  // result is ignored, a process that has one keeps it).
  explicit TConsoleWriter(bool allocate);
  TConsoleWriter(const TConsoleWriter&) = default;
  TConsoleWriter& operator=(const TConsoleWriter&) = default;
  ~TConsoleWriter() override;

  void StreamWriteString(const char* text, size_t length) override;

 protected:
  // The standard output handle; not owned.
  void* console;
};
