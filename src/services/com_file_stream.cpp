#include <qz/errors/generic.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/global_streams.h>
#include <qz/services/com_file_stream.h>

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

namespace {

// A read or write through the file: S_OK when all of `size` moved, S_FALSE
// when less did, E_FAIL when the file call threw. The count moved is
// reported in every case.
template <class Transfer>
HRESULT transfer(ULONG size, ULONG* moved, Transfer call) {
  DWORD done = 0;
  HRESULT result = E_FAIL;
  try {
    call(done);
    result = done < size ? S_FALSE : S_OK;
  } catch (const EGeneric&) {
  }
  if (moved) *moved = done;
  return result;
}

}  // namespace

HRESULT CComFileStream::Read(void* buffer, ULONG size, ULONG* read) {
  return transfer(size, read, [&](DWORD& done) { file.ReadFile(buffer, size, done); });
}

HRESULT CComFileStream::Write(const void* buffer, ULONG size, ULONG* written) {
  return transfer(size, written, [&](DWORD& done) { file.WriteFile(buffer, size, done); });
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
