// CComStringStream: narrow text in memory handed to COM as an IStream.
//
//   std::stringstream text;
//   text << "<doc/>";
//   IStreamPtr stream = CComStringStream::OpenStringStream(text);
//
// The text lives in a std::stringstream with separate read and write
// positions: Write puts bytes at the write position, Read takes them from
// the read position.
//
//   Read      *read (if given) gets the count; S_FALSE when the read hit the
//             end of the text, else S_OK. The stream is usable again after
//             a short read.
//   Write     *written (if given) gets `size`; always S_OK
//   Seek      STREAM_SEEK_SET, _CUR and _END move the read and the write
//             position alike (_CUR each from where it is); *position (if
//             given) gets the read position. Any other origin moves nothing
//             and still answers S_OK. A position outside the text (before its
//             start or past its end) is refused with STG_E_INVALIDFUNCTION
//             and moves nothing.
//   Commit    S_OK for flags 0, else E_NOTIMPL
//   others    as CComStreamBase: E_NOTIMPL
//
// Two quirks, kept on purpose because callers rely on them:
// - Release never deletes the object, whatever the count it leaves: a
//   stream from OpenStringStream is never freed, and one on the stack or in
//   a member may be handed to COM without COM ending it.
// - Stat's cbSize is the write position minus the read position, what is
//   left to read, not the length of the text: after writing 5 bytes and
//   reading 2 it is 3. A stream fresh from OpenStringStream has both
//   positions at the start and so reports 0.
//
// Thread safety: the count is interlocked; the text is not locked, so the
// stream is used by one thread at a time.
#pragma once

#include <qz/core/com_types.h>
#include <qz/export.h>
#include <qz/services/internal/com_stream_base.h>

#include <sstream>
#include <string>

class QZ_API CComStringStream : public CComStreamBase {
 public:
  CComStringStream();
  CComStringStream(const CComStringStream&) = delete;
  CComStringStream& operator=(const CComStringStream&) = delete;
  ~CComStringStream() override;

  // A new stream holding a copy of `source`'s text, both positions at the
  // start (so writing overwrites from the start). Throws EComException should
  // the new object refuse its own interface.
  static IStreamPtr OpenStringStream(const std::stringstream& source);

  // The whole text, whatever the positions.
  std::string str() const;

  ULONG STDMETHODCALLTYPE Release() override;
  using SmartPtrObj::Release;

  HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override;
  HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG size, ULONG* written) override;
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override;

 protected:
  std::stringstream text;
};
