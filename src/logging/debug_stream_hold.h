// One hold of a debug stream's mutex for the length of a block.
#pragma once

#include <qz/logging/debug_stream.h>

class TDebugStream::Hold {
 public:
  explicit Hold(const TDebugStream& s) : stream(s) { stream.Enter(); }
  ~Hold() noexcept(false) { stream.Leave(); }
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;

 private:
  const TDebugStream& stream;
};
