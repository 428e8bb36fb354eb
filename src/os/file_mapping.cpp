#include <qz/core/throw.h>
#include <qz/os/file_mapping.h>

namespace {

DWORD high_part(unsigned __int64 size) { return static_cast<DWORD>(size >> 32); }
DWORD low_part(unsigned __int64 size) { return static_cast<DWORD>(size); }

}  // namespace

void TFileMapping::CreateFileMappingW(DWORD protect, void* file, const wchar_t* name) {
  StoreCreated(::CreateFileMappingW(file, nullptr, protect, 0, 0, name));
}

void TFileMapping::CreateFileMappingW(DWORD protect, void* file, const char* name) {
  StoreCreated(::CreateFileMappingA(file, nullptr, protect, 0, 0, name));
}

void TFileMapping::CreateFileMappingW(DWORD protect, unsigned __int64 size, const wchar_t* name) {
  StoreCreated(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, protect, high_part(size),
                               low_part(size), name));
}

void TFileMapping::CreateFileMappingW(DWORD protect, unsigned __int64 size, const char* name) {
  StoreCreated(::CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, protect, high_part(size),
                               low_part(size), name));
}

void TFileMapping::OpenFileMappingW(const wchar_t* name, DWORD access) {
  StoreCreated(::OpenFileMappingW(access, FALSE, name));
}

void TFileMapping::OpenFileMappingW(const char* name, DWORD access) {
  StoreCreated(::OpenFileMappingA(access, FALSE, name));
}

void* TFileMapping::MapViewOfFile(DWORD access, DWORD offset, DWORD size) {
  void* view = ::MapViewOfFile(handle, access, 0, offset, size);
  if (view == nullptr) ThrowSystemException();
  return view;
}
