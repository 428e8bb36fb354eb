// CComFileStream: a file handed to COM as an IStream.
//
//   IStreamPtr stream = CComFileStream::OpenFileStream(L"c:\\in.xml", GENERIC_READ,
//                                                      FILE_SHARE_READ, OPEN_EXISTING);
//   if (stream) document->Load(stream);  // IStreamPtr converts to IStream*
//
// The COM count is the SmartPtrObj count: SmartPtr and COM references add up,
// and whichever lets go last deletes the object (AddRef and Release return
// the count they leave).
//
//   Read      synchronous ReadFile; *read (if given) gets the count; S_FALSE
//             when fewer than `size` bytes came (the end of the file), else
//             S_OK; a failing read gives E_FAIL
//   Write     WriteFile; the same counts; S_FALSE for a short write; E_FAIL
//   Seek      SetFilePointerEx with the origin passed through (STREAM_SEEK_SET,
//             _CUR and _END are FILE_BEGIN, _CURRENT and _END); *position
//             (if given) gets the new position; E_FAIL when refused
//   Stat      zeroed, type STGTY_STREAM, cbSize the file's size; the flags
//             are ignored. A failing size query throws ESystemException out
//             of the call instead of returning an error.
//   Commit    E_NOTIMPL (writes go straight to the file)
//   others    as CComStreamBase: E_NOTIMPL
//
// Thread safety: the count is interlocked, so references may be taken and
// dropped on any thread; the stream itself is not locked and is used by one
// thread at a time.
#pragma once

#include <qz/core/com_types.h>
#include <qz/export.h>
#include <qz/os/file.h>
#include <qz/services/internal/com_stream_base.h>

class QZ_API CComFileStream : public CComStreamBase {
 public:
  // A duplicate of `file`'s handle; both share one file pointer.
  explicit CComFileStream(const TFile& file);
  // Opens the file as TFile does (ESystemException on failure).
  CComFileStream(const wchar_t* name, DWORD access, DWORD share, DWORD disposition);
  // Copies duplicate the handle and start without holders.
  CComFileStream(const CComFileStream& other) = default;
  CComFileStream& operator=(const CComFileStream& other) = default;
  // Closes the file without throwing: Release cannot report a failure.
  ~CComFileStream() noexcept override;

  // The opened file as a stream with one reference, or null when the file
  // cannot be opened: then, while Debug has writers, it gets the line
  //   CComFileStream::OpenFileStream( "<name>" ) - failed to open, error #<code>
  // and a line feed. Never throws for a file that cannot be opened.
  static IStreamPtr OpenFileStream(const wchar_t* name, DWORD access, DWORD share, DWORD disposition);

  ULONG STDMETHODCALLTYPE Release() override;
  using SmartPtrObj::Release;

  HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override;
  HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG size, ULONG* written) override;
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override;

 protected:
  TFile file;
};
