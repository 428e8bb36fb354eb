// TDebugWriter: sends log text to the debugger (OutputDebugStringA).
//
// The system call takes a zero-terminated text, so the length is not used:
// the text must be zero-terminated and ends at its first zero byte.
//
// Thread safety: no state; any thread may write (see TStreamWriter).
#pragma once

#include <qz/export.h>
#include <qz/logging/stream_writer.h>

class QZ_API TDebugWriter : public TStreamWriter {
 public:
  TDebugWriter() = default;
  TDebugWriter(const TDebugWriter&) = default;
  TDebugWriter& operator=(const TDebugWriter&) = default;
  ~TDebugWriter() override;

  void StreamWriteString(const char* text, size_t length) override;
};
