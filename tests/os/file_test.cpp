#include <qz/os/file.h>

#include "support/error_code.h"
#include "support/temp_path.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qz_test::TempPath;

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

std::string ReadAll(TFile& file, DWORD size) {
  std::string text(size, '\0');
  text.resize(file.ReadFile(&text[0], size));
  return text;
}

TEST(TFile, CopiesShareOneFilePointer) {
  TempPath path;
  {
    TFile file(path.wide(), kReadWrite, 0, CREATE_ALWAYS);
    TFile copy(file);
    TFile from_handle{THandle(static_cast<void*>(file))};
    EXPECT_NE(static_cast<void*>(copy), static_cast<void*>(file));
    EXPECT_EQ(file.WriteFile("abc", 3), 3u);
    EXPECT_EQ(copy.SetFilePointerEx(0, FILE_CURRENT), 3u);
    copy.WriteFile("def", 3);
    file.FlushFile();
    EXPECT_EQ(file.GetFileSize(), 6u);
    EXPECT_EQ(from_handle.SetFilePointerEx(-6, FILE_CURRENT), 0u);
    EXPECT_EQ(ReadAll(from_handle, 16), "abcdef");
    EXPECT_EQ(ReadAll(from_handle, 16), "");  // end of file
  }
}

TEST(TFile, FailuresThrowTheSystemErrorAndOpenFillsAnEmptyObject) {
  TempPath path;  // never created
  try {
    TFile(path.wide(), GENERIC_READ, 0, OPEN_EXISTING);
    FAIL() << "opened a missing file";
  } catch (const ESystemException& e) {
    EXPECT_EQ(qz_test::CodeOf(e), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(std::string(e.get_value("Text")).empty());
  }
  TFile file(DoNotInitialize);
  char byte;
  EXPECT_THROW(file.ReadFile(&byte, 1), ESystemException);  // nothing open
  file.OpenFile(path.narrow(), GENERIC_READ, 0, CREATE_NEW);  // fills the empty object
  EXPECT_EQ(qz_test::CodeThrownBy([&] { file.WriteFile("x", 1); }), ERROR_ACCESS_DENIED);
  file.CloseHandle();
  EXPECT_THROW(file.OpenFile(path.wide(), GENERIC_READ, 0, CREATE_NEW), ESystemException);
}

}  // namespace
