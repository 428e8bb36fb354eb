#include <qz/services/com_string_stream.h>

#include <ios>

CComStringStream::CComStringStream() : text(std::ios::in | std::ios::out | std::ios::binary) {}

CComStringStream::~CComStringStream() = default;

IStreamPtr CComStringStream::OpenStringStream(const std::stringstream& source) {
  auto* stream = new CComStringStream;
  stream->text.str(source.str());
  IStream* result = nullptr;
  const HRESULT hr = stream->QueryInterface(IID_IStream, reinterpret_cast<void**>(&result));
  if (FAILED(hr) && hr != E_NOINTERFACE) _com_issue_error(hr);
  return IStreamPtr(result, false);  // takes the reference QueryInterface gave
}

std::string CComStringStream::str() const { return text.str(); }

// Never deletes: see the header.
ULONG CComStringStream::Release() { return static_cast<ULONG>(ReleaseWithoutDelete()); }

HRESULT CComStringStream::Read(void* buffer, ULONG size, ULONG* read) {
  text.read(static_cast<char*>(buffer), size);
  const bool hit_end = text.fail();
  // A short read leaves the stream failed, which would make every later
  // write and seek do nothing: the end is reported once, then forgotten.
  text.clear();
  if (read) *read = static_cast<ULONG>(text.gcount());
  return hit_end ? S_FALSE : S_OK;
}

HRESULT CComStringStream::Write(const void* buffer, ULONG size, ULONG* written) {
  text.write(static_cast<const char*>(buffer), size);
  text.clear();
  if (written) *written = size;
  return S_OK;
}

HRESULT CComStringStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) {
  std::ios::seekdir from = std::ios::beg;
  switch (origin) {
    case STREAM_SEEK_SET: from = std::ios::beg; break;
    case STREAM_SEEK_CUR: from = std::ios::cur; break;
    case STREAM_SEEK_END: from = std::ios::end; break;
    default: move.QuadPart = 0; from = std::ios::cur; break;  // moves nothing, see the header
  }
  const std::streampos read_before = text.tellg(), write_before = text.tellp();
  text.seekg(move.QuadPart, from);
  text.seekp(move.QuadPart, from);
  if (text.fail()) {  // outside the text: put both back
    text.clear();
    text.seekg(read_before);
    text.seekp(write_before);
    return STG_E_INVALIDFUNCTION;
  }
  if (position) position->QuadPart = static_cast<ULONGLONG>(static_cast<std::streamoff>(text.tellg()));
  return S_OK;
}

HRESULT CComStringStream::Commit(DWORD flags) { return flags == 0 ? S_OK : E_NOTIMPL; }

HRESULT CComStringStream::Stat(STATSTG* stat, DWORD) {
  if (!stat) return STG_E_INVALIDPOINTER;
  *stat = STATSTG();
  stat->type = STGTY_STREAM;
  const std::streamoff left = text.tellp() - text.tellg();  // see the header
  stat->cbSize.QuadPart = static_cast<ULONGLONG>(left);
  return S_OK;
}
