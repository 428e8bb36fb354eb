#include <qz/core/throw.h>
#include <qz/os/file.h>

TFile::TFile(const wchar_t* name, DWORD access, DWORD share, DWORD disposition) {
  CreateFileW(name, access, share, disposition);
}

TFile::TFile(const char* name, DWORD access, DWORD share, DWORD disposition) {
  CreateFileW(name, access, share, disposition);
}

void TFile::CreateFileW(const wchar_t* name, DWORD access, DWORD share, DWORD disposition) {
  handle = ::CreateFileW(name, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) ThrowSystemException();
}

void TFile::CreateFileW(const char* name, DWORD access, DWORD share, DWORD disposition) {
  handle = ::CreateFileA(name, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) ThrowSystemException();
}

void TFile::OpenFile(const wchar_t* name, DWORD access, DWORD share, DWORD disposition) {
  CreateFileW(name, access, share, disposition);
}

void TFile::OpenFile(const char* name, DWORD access, DWORD share, DWORD disposition) {
  CreateFileW(name, access, share, disposition);
}

DWORD TFile::ReadFile(void* buffer, DWORD size) {
  DWORD done = 0;
  ReadFile(buffer, size, done);
  return done;
}

void TFile::ReadFile(void* buffer, DWORD size, DWORD& done) {
  if (!::ReadFile(handle, buffer, size, &done, nullptr)) ThrowSystemException();
}

DWORD TFile::WriteFile(const void* buffer, DWORD size) {
  DWORD done = 0;
  WriteFile(buffer, size, done);
  return done;
}

void TFile::WriteFile(const void* buffer, DWORD size, DWORD& done) {
  if (!::WriteFile(handle, buffer, size, &done, nullptr)) ThrowSystemException();
}

unsigned __int64 TFile::SetFilePointerEx(__int64 distance, DWORD method) {
  LARGE_INTEGER move;
  move.QuadPart = distance;
  LARGE_INTEGER position;
  if (!::SetFilePointerEx(handle, move, &position, method)) ThrowSystemException();
  return static_cast<unsigned __int64>(position.QuadPart);
}

unsigned int TFile::SetFilePointer(long distance, DWORD method) {
  return ::SetFilePointer(handle, distance, nullptr, method);
}

unsigned __int64 TFile::GetFileSize() {
  DWORD high = 0;
  const DWORD low = ::GetFileSize(handle, &high);
  return (static_cast<unsigned __int64>(high) << 32) | low;
}

void TFile::GetFileInformation(BY_HANDLE_FILE_INFORMATION& information) {
  if (!GetFileInformationByHandle(handle, &information)) ThrowSystemException();
}

_FILETIME TFile::GetLastWriteTime() {
  BY_HANDLE_FILE_INFORMATION information;
  GetFileInformation(information);
  return information.ftLastWriteTime;
}

void TFile::FlushFile() {
  if (!FlushFileBuffers(handle)) ThrowSystemException();
}
