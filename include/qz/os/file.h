// TFile: a file (or any object CreateFile opens: pipe, mailslot client,
// device) owned through THandle. Every failing call throws ESystemException
// with the thread's last error, except where a member says it is unchecked.
//
//   TFile log(L"c:\\temp\\out.txt", GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS);
//   log.SetFilePointerEx(0, FILE_END);
//   log.WriteFile("line\r\n", 6);
//
// Copies duplicate the handle; duplicates share one file pointer, as the
// system's duplicated handles do.
//
// Thread safety: one object belongs to one thread at a time.
#pragma once

#include <qz/export.h>
#include <qz/os/handle.h>

class QZ_API TFile : public THandle {
 public:
  // CreateFileW / CreateFileA: no security attributes, FILE_ATTRIBUTE_NORMAL,
  // no template.
  TFile(const wchar_t* name, DWORD access, DWORD share, DWORD disposition);
  TFile(const char* name, DWORD access, DWORD share, DWORD disposition);
  // A duplicate of `h`.
  explicit TFile(const THandle& h) : THandle(h) {}
  // Holds no file (-1).
  explicit TFile(_DoNotInitialize) noexcept {}

  // The constructor's call; the result is stored over the old handle without
  // closing it, so close first. OpenFile is the same operation.
  void CreateFileW(const wchar_t* name, DWORD access, DWORD share, DWORD disposition);
  void CreateFileW(const char* name, DWORD access, DWORD share, DWORD disposition);
  void OpenFile(const wchar_t* name, DWORD access, DWORD share, DWORD disposition);
  void OpenFile(const char* name, DWORD access, DWORD share, DWORD disposition);

  // Synchronous transfers; they return (or store in `done`) the byte count.
  DWORD ReadFile(void* buffer, DWORD size);
  void ReadFile(void* buffer, DWORD size, DWORD& done);
  DWORD WriteFile(const void* buffer, DWORD size);
  void WriteFile(const void* buffer, DWORD size, DWORD& done);

  // Returns the new position.
  unsigned __int64 SetFilePointerEx(__int64 distance, DWORD method);
  // The 32-bit call without a high part; its result is returned unchecked.
  unsigned int SetFilePointer(long distance, DWORD method);
  // Low and high parts joined; unchecked.
  unsigned __int64 GetFileSize();
  void GetFileInformation(BY_HANDLE_FILE_INFORMATION& information);
  _FILETIME GetLastWriteTime();
  void FlushFile();
};
