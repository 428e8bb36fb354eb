#include <qz/errors/generic.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/global_streams.h>
#include <qz/os/com_file_stream.h>

CComFileStream::CComFileStream(const TFile& f) : file(f) {}

CComFileStream::CComFileStream(const wchar_t* name, DWORD access, DWORD share, DWORD disposition)
    : file(name, access, share, disposition) {}

CComFileStream::~CComFileStream() noexcept {
  void* h = file.DetachHandle();
  if (THandle::IsValidHandle(h)) CloseHandle(h);
}

IStreamPtr CComFileStream::OpenFileStream(const wchar_t* name, DWORD access, DWORD share,
                                          DWORD disposition) {
  HANDLE h = CreateFileW(name, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    if (Debug.GetEnabled())
      TDebugStreamSession(Debug) << "CComFileStream::OpenFileStream( \"" << name
                                 << "\" ) - failed to open, error #" << error << '\n';
    return IStreamPtr();
  }
  TFile opened(DoNotInitialize);
  opened.AttachHandle(h);
  IStream* stream = new CComFileStream(opened);
  return IStreamPtr(stream);  // the one reference
}

ULONG CComFileStream::Release() { return static_cast<ULONG>(SmartPtrObj::Release()); }

HRESULT CComFileStream::Read(void* buffer, ULONG size, ULONG* read) {
  DWORD done = 0;
  HRESULT result = E_FAIL;
  try {
    file.ReadFile(buffer, size, done);
    result = done < size ? S_FALSE : S_OK;
  } catch (const EGeneric&) {
  }
  if (read) *read = done;
  return result;
}

HRESULT CComFileStream::Write(const void* buffer, ULONG size, ULONG* written) {
  DWORD done = 0;
  HRESULT result = E_FAIL;
  try {
    file.WriteFile(buffer, size, done);
    result = done < size ? S_FALSE : S_OK;
  } catch (const EGeneric&) {
  }
  if (written) *written = done;
  return result;
}

// The stream origins have the values of the file pointer's move methods.
static_assert(STREAM_SEEK_SET == FILE_BEGIN && STREAM_SEEK_CUR == FILE_CURRENT &&
              STREAM_SEEK_END == FILE_END);

HRESULT CComFileStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) {
  try {
    const unsigned __int64 now = file.SetFilePointerEx(move.QuadPart, origin);
    if (position) position->QuadPart = now;
    return S_OK;
  } catch (const EGeneric&) {
    return E_FAIL;
  }
}

HRESULT CComFileStream::Commit(DWORD) { return E_NOTIMPL; }

HRESULT CComFileStream::Stat(STATSTG* stat, DWORD) {
  if (!stat) return STG_E_INVALIDPOINTER;
  BY_HANDLE_FILE_INFORMATION information;
  file.GetFileInformation(information);  // throws: see the header
  *stat = STATSTG();
  stat->type = STGTY_STREAM;
  stat->cbSize.HighPart = information.nFileSizeHigh;
  stat->cbSize.LowPart = information.nFileSizeLow;
  return S_OK;
}
