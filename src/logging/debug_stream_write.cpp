// Writing: WriteString with its line stamps, printf, WriteDouble and Dump.
#include <qz/logging/debug_stream.h>
#include <qz/time/log_stamps.h>

#include "logging/debug_stream_hold.h"

#include <stdarg.h>
#include <stdio.h>

#include <cstring>

namespace {

// printf's buffer: 4095 characters and the terminating zero.
const size_t kPrintfBuffer = 4096;

}  // namespace

// Every line gets the time in front. A line feed that ends the text leaves
// the next prefix to the next write, so that no prefix dangles at the end of
// a log that then stays quiet.
void TDebugStream::Stamp(const char* text, size_t length, std::string& stamped) {
  stamped.reserve(length + 32);
  if (at_line_start) {
    stamped = now2(last_day);
    at_line_start = false;
  }
  const char* const end = text + length;
  while (text < end) {
    const char* feed = static_cast<const char*>(std::memchr(text, '\n', end - text));
    if (!feed) {
      stamped.append(text, end);
      break;
    }
    stamped.append(text, feed + 1);
    text = feed + 1;
    if (text == end)
      at_line_start = true;
    else
      stamped += now2(last_day);
  }
}

// The stamping state changes under the lock too, so that lines written by
// several threads each get their own prefix.
TDebugStream& TDebugStream::WriteString(const char* text, size_t length) {
  if (!text || length == 0) return *this;
  Hold hold(*this);
  std::string stamped;
  if (stamp_lines) {
    Stamp(text, length, stamped);
    text = stamped.data();
    length = stamped.size();
  }
  // By index: a writer may add writers to this stream while it is called.
  // The list takes null writers unchecked; a logging call must not crash.
  for (size_t i = 0; i < writers.size(); ++i)
    if (TStreamWriter* writer = writers[i]) writer->StreamWriteString(text, length);
  return *this;
}

TDebugStream& TDebugStream::printf(const char* format, ...) {
  if (!format) return *this;
  char buffer[kPrintfBuffer];
  va_list args;
  va_start(args, format);
  const int count = _vsnprintf_s(buffer, kPrintfBuffer, kPrintfBuffer - 1, format, args);
  va_end(args);
  // A cut text goes out with its terminating zero as the last byte.
  return WriteString(buffer, count < 0 ? kPrintfBuffer : static_cast<size_t>(count));
}

// The stream is held from the number on, so the statement the session goes
// on with follows it without another thread's text between.
TDebugStreamSession TDebugStream::WriteDouble(double v) {
  Hold hold(*this);
  printf("%g", v);
  return TDebugStreamSession(*this);
}

TDebugStreamSession TDebugStream::Dump(const void* data, int size) {
  static const char kDigits[] = "0123456789ABCDEF";
  Hold hold(*this);
  if (data && size > 0) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::string text(static_cast<size_t>(size) * 3 - 1, ' ');
    for (int i = 0; i < size; ++i) {
      text[i * 3] = kDigits[bytes[i] >> 4];
      text[i * 3 + 1] = kDigits[bytes[i] & 0x0F];
    }
    WriteString(text.data(), text.size());
  }
  return TDebugStreamSession(*this);
}
