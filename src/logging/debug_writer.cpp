#include <qz/logging/debug_writer.h>

#include <windows.h>

TDebugWriter::~TDebugWriter() = default;

// The system's call knows no length: it reads up to the first zero byte.
void TDebugWriter::StreamWriteString(const char* text, size_t /*length*/) {
  if (text) OutputDebugStringA(text);
}
