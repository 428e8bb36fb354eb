#include <qz/os/file.h>
#include <qz/os/file_mapping.h>

#include "support/error_code.h"
#include "support/temp_path.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using qz_test::UniqueName;

// Views start at multiples of the allocation granularity.
constexpr DWORD kGranularity = 65536;

// A mapped view, unmapped at the end of the test.
struct View {
  void* address;
  explicit View(void* a) : address(a) {}
  ~View() { UnmapViewOfFile(address); }
  char* text() const { return static_cast<char*>(address); }
};

TEST(TFileMapping, NamedMemoryIsSharedWithAnOpenedMapping) {
  const std::wstring name = UniqueName(L"mapping");
  TFileMapping created;
  created.CreateFileMappingW(PAGE_READWRITE, 2 * kGranularity, name.c_str());
  TFileMapping opened;
  const std::string narrow(name.begin(), name.end());
  opened.OpenFileMappingW(narrow.c_str(), FILE_MAP_ALL_ACCESS);

  View writer(created.MapViewOfFile(FILE_MAP_WRITE, 0, 0));
  View reader(opened.MapViewOfFile(FILE_MAP_READ, kGranularity, 4096));
  std::strcpy(writer.text() + kGranularity, "shared");
  EXPECT_STREQ(reader.text(), "shared");
}

// A read-only mapping of a whole file reads it and cannot be mapped for writing.
TEST(TFileMapping, MapsTheWholeFileAndFailuresThrowTheSystemError) {
  qz_test::TempPath path;
  TFile file(path.wide(), GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS);
  file.WriteFile("mapped content", 15);
  TFileMapping mapping;
  mapping.CreateFileMappingW(PAGE_READONLY, static_cast<void*>(file));
  View view(mapping.MapViewOfFile(FILE_MAP_READ, 0, 0));
  EXPECT_STREQ(view.text(), "mapped content");
  EXPECT_THROW(mapping.MapViewOfFile(FILE_MAP_WRITE, 0, 0), ESystemException);
  TFileMapping missing;
  EXPECT_EQ(qz_test::CodeThrownBy([&] { missing.OpenFileMappingW(UniqueName(L"missing").c_str(), FILE_MAP_READ); }),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(static_cast<void*>(missing), nullptr);
}

}  // namespace
