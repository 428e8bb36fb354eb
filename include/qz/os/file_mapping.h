// TFileMapping: a file-mapping object (a file, or memory backed by the
// paging file, shared between processes by name) owned through THandle.
// The narrow-name overloads call the system's narrow functions.
//
//   TFileMapping shared;
//   shared.CreateFileMappingW(PAGE_READWRITE, 65536ull, L"Local\\qz-demo");
//   void* view = shared.MapViewOfFile(FILE_MAP_WRITE, 0, 0);
//   ...
//   UnmapViewOfFile(view);
//
// Every call throws ESystemException when the system returns null. Create and
// open store the new handle over the old one without closing it.
//
// Thread safety: one object belongs to one thread at a time; views may be
// used on any thread.
#pragma once

#include <qz/export.h>
#include <qz/os/handle.h>

class QZ_API TFileMapping : public THandle {
 public:
  TFileMapping() noexcept = default;

  // A mapping of the whole of `file` (size 0, 0); `name` may be null.
  void CreateFileMappingW(DWORD protect, void* file, const wchar_t* name = nullptr);
  void CreateFileMappingW(DWORD protect, void* file, const char* name);
  // `size` bytes backed by the paging file; `name` may be null.
  void CreateFileMappingW(DWORD protect, unsigned __int64 size, const wchar_t* name = nullptr);
  void CreateFileMappingW(DWORD protect, unsigned __int64 size, const char* name);
  // An existing named mapping, handle not inheritable.
  void OpenFileMappingW(const wchar_t* name, DWORD access);
  void OpenFileMappingW(const char* name, DWORD access);

  // A view at a 32-bit offset (size 0: to the end); the caller unmaps it
  // with UnmapViewOfFile.
  void* MapViewOfFile(DWORD access, DWORD offset, DWORD size);
};
