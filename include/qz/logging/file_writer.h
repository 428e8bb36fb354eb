// TFileWriter: appends log text to a file that it opens for every write.
//
// Each write opens the file for appending (creating it when absent), writes
// the text as one block with its line feeds unchanged, and closes it again,
// so between writes the file may be moved, deleted or read by others. A file
// that cannot be opened drops the text. Nothing is opened at construction.
//
// Thread safety: any thread may write (see TStreamWriter); two writers on
// one file append whole blocks, as the runtime's append mode does.
#pragma once

#include <qz/export.h>
#include <qz/logging/stream_writer.h>

#include <string>

class QZ_API TFileWriter : public TStreamWriter {
 public:
  explicit TFileWriter(const std::string& name);
  TFileWriter(const TFileWriter&) = default;
  TFileWriter& operator=(const TFileWriter&) = default;
  ~TFileWriter() override;

  void StreamWriteString(const char* text, size_t length) override;

 protected:
  std::string name;
};
