// TStreamWriter: the sink at the end of a debug stream.
//
// A writer receives finished text from TDebugStream and puts it somewhere:
// the debugger (TDebugWriter), the console (TConsoleWriter), a file opened
// for every write (TFileWriter) or a file held open (TPermanentFileWriter).
// Writers are counted objects held by SmartPtr<TStreamWriter>; one writer may
// feed several streams.
//
// A writer never reports a failure: text that cannot be written is dropped,
// so that logging cannot raise an error inside error handling. Writers made
// elsewhere may throw; the stream passes that on to whoever wrote.
//
// Thread safety: writers have no lock of their own. A stream calls its
// writers under its mutex, so a writer used by one stream sees one call at a
// time; a writer shared by two streams is called under two different locks
// and must cope with that itself.
#pragma once

#include <qz/core/smart_ptr.h>
#include <qz/export.h>

#include <cstddef>

class QZ_API TStreamWriter : public virtual SmartPtrObj {
 public:
  TStreamWriter() = default;
  TStreamWriter(const TStreamWriter&) = default;
  TStreamWriter& operator=(const TStreamWriter&) = default;
  ~TStreamWriter() override;

  // Puts `length` bytes of `text` wherever this writer writes.
  virtual void StreamWriteString(const char* text, size_t length) = 0;
};
