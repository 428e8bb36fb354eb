// A file name in the temporary folder, unique to this process and object;
// the file is deleted when the object ends.
#pragma once

#include "support/unique_name.h"

#include <windows.h>

#include <fstream>
#include <iterator>
#include <string>

namespace qz_test {

class TempPath {
 public:
  // `folder_part` goes between the temporary folder and the file name (a
  // missing folder there makes a path that cannot be created).
  explicit TempPath(const wchar_t* folder_part = L"", const wchar_t* extension = L".tmp") {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    wide_ = std::wstring(folder) + folder_part + UniqueName(L"file") + extension;
    narrow_.assign(wide_.begin(), wide_.end());  // the temporary folder is ASCII
  }
  ~TempPath() { DeleteFileW(wide_.c_str()); }
  TempPath(const TempPath&) = delete;
  TempPath& operator=(const TempPath&) = delete;

  const wchar_t* wide() const { return wide_.c_str(); }
  const char* narrow() const { return narrow_.c_str(); }
  bool Exists() const { return GetFileAttributesW(wide_.c_str()) != INVALID_FILE_ATTRIBUTES; }

  // The whole file, byte for byte; readable while a writer holds it open.
  std::string Contents() const {
    std::ifstream in(narrow_, std::ios::binary);
    return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "<cannot open>";
  }
  void Put(const std::string& bytes) const { std::ofstream(narrow_, std::ios::binary) << bytes; }

 private:
  std::wstring wide_;
  std::string narrow_;
};

}  // namespace qz_test
