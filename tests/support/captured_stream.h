// Catches what a debug stream writes while the object lives, by adding a
// writer of its own and removing it again. Any thread may write to the
// stream meanwhile: the text is read under the stream's lock, which feeds
// the writer.
#pragma once

#include <qz/logging/debug_stream.h>
#include <qz/logging/stream_writer.h>

#include <string>

namespace qz_test {

class CapturedStream {
 public:
  explicit CapturedStream(TDebugStream& stream) : stream_(stream), writer_(new Writer) {
    stream_.AddWriter(writer_);
  }
  ~CapturedStream() { stream_.RemoveWriter(writer_); }
  CapturedStream(const CapturedStream&) = delete;
  CapturedStream& operator=(const CapturedStream&) = delete;

  std::string text() const {
    TDebugStreamSession hold(stream_);
    return writer_->text;
  }

 private:
  struct Writer : TStreamWriter {
    void StreamWriteString(const char* data, size_t length) override { text.append(data, length); }
    std::string text;
  };

  TDebugStream& stream_;
  SmartPtr<Writer> writer_;
};

}  // namespace qz_test
