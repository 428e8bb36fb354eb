// TPermanentFileWriter: appends log text to a file held open for the
// writer's whole life.
//
// The file is opened once at construction for appending only, with
// write-through so that every write reaches the disk, and shared for reading
// and deleting (others may read the log while it grows, but not write it).
// Each write turns every line feed into carriage return + line feed (one is
// added even before a line feed that already has a carriage return) and goes
// out in one WriteFile call. A file that could not be opened makes every
// write do nothing; a failed write drops the text.
//
// Copies duplicate the handle (THandle). The destructor closes it.
//
// Thread safety: any thread may write (see TStreamWriter); one object is not
// to be assigned while another thread writes through it.
#pragma once

#include <qz/export.h>
#include <qz/logging/stream_writer.h>
#include <qz/os/handle.h>

class QZ_API TPermanentFileWriter : public TStreamWriter {
 public:
  explicit TPermanentFileWriter(const char* name);
  explicit TPermanentFileWriter(const wchar_t* name);
  TPermanentFileWriter(const TPermanentFileWriter&) = default;
  TPermanentFileWriter& operator=(const TPermanentFileWriter&) = default;
  // Closes the file without throwing: a writer never reports a failure.
  ~TPermanentFileWriter() noexcept override;

  void StreamWriteString(const char* text, size_t length) override;

 protected:
  // Null when the file could not be opened.
  THandle file;

 private:
  void Open(void* opened);
};
