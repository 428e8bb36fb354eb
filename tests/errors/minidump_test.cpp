#include <qz/errors/exceptions.h>
#include <qz/errors/minidump.h>
#include <qz/errors/symbols.h>
#include <qz/errors/tuning.h>

#include "errors/minidump_path.h"
#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <regex>
#include <string>

namespace {

using qz_test::ScopedSetting;

TEST(MiniDumpPath, WordsPatternAndDirectory) {
  EXPECT_EQ(minidump_path::file_name_word("a<b>c:d::e"), "abcde");
  EXPECT_EQ(minidump_path::type_word("std::runtime_error"), "runtime_error");
  EXPECT_EQ(minidump_path::type_word("class std::bad_alloc"), "bad_alloc");
  EXPECT_EQ(minidump_path::type_word("app::std::thing"), "app::std::thing");
  EXPECT_EQ(minidump_path::code_word(0xC0000005), "C0000005");
  EXPECT_EQ(minidump_path::code_word(0x80000003), "80000003");

  SYSTEMTIME time = {};
  time.wYear = 2024, time.wMonth = 1, time.wDay = 31, time.wHour = 23, time.wMinute = 59;
  time.wSecond = 58, time.wMilliseconds = 7;
  EXPECT_EQ(minidump_path::compose(MiniDumpFileFormat, "app", "C0000005", time),
            "Dumps\\app_C0000005_2024_01_31_23_59_58_007.dmp");
  EXPECT_EQ(minidump_path::compose(nullptr, "app", "Dump", time), "");

  EXPECT_EQ(minidump_path::directory_of("Dumps\\app.dmp"), "Dumps");
  EXPECT_EQ(minidump_path::directory_of("a\\b\\c.dmp"), "a\\b");
  EXPECT_EQ(minidump_path::directory_of("app.dmp"), "");
}

bool file_starts_with_mdmp(const std::string& path) {
  FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  char signature[4] = {};
  const bool read = std::fread(signature, 1, 4, file) == 4;
  std::fclose(file);
  return read && std::string(signature, 4) == "MDMP";
}

bool file_exists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

// Every test leaves the folder as it found it (removed when it made it).
class MiniDumpTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(SymInitialize()); }
  static void TearDownTestSuite() { SymCleanup(); }
  void SetUp() override { had_dumps_folder_ = file_exists("Dumps"); }
  void TearDown() override {
    if (!had_dumps_folder_) RemoveDirectoryA("Dumps");
  }

  // A thrown EGeneric exposes its "MiniDump" so that cancel_minidump can run.
  struct Carrier : EGeneric {
    explicit Carrier(const std::string& path) { put_value("MiniDump", path); }
  };

  bool had_dumps_folder_ = false;
};

const char* const kTime = "_\\d{4}_\\d\\d_\\d\\d_\\d\\d_\\d\\d_\\d\\d_\\d{3}\\.dmp";

TEST_F(MiniDumpTest, ADumpWithoutAFaultIsNamedAfterTheCaller) {
  const std::string path = EGeneric::SaveMiniDump(nullptr, 0, GetCurrentThreadId());
  EXPECT_TRUE(std::regex_match(path, std::regex(std::string("Dumps\\\\qz_errors_tests_Dump") + kTime)))
      << path;
  EXPECT_TRUE(file_starts_with_mdmp(path));

  Carrier carrier(path);
  carrier.cancel_minidump();
  EXPECT_FALSE(file_exists(path));
  EXPECT_TRUE(carrier.values().empty());
}

TEST_F(MiniDumpTest, AFaultsDumpCarriesItsCodeAndIsTheMiniDumpValue) {
  ScopedSetting<bool> dumps(SaveMiniDumpOnStructuredException, true);
  CONTEXT context;
  RtlCaptureContext(&context);
  EXCEPTION_RECORD record = {};
  record.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
  record.ExceptionAddress = reinterpret_cast<void*>(context.Rip);
  record.NumberParameters = 2;
  record.ExceptionInformation[1] = 0x10;
  EXCEPTION_POINTERS pointers = {&record, &context};
  EStructuredException fault(EXCEPTION_ACCESS_VIOLATION, &pointers, GetCurrentThreadId());

  const std::string path(fault.get_value("MiniDump"));
  EXPECT_TRUE(std::regex_match(path, std::regex(std::string("Dumps\\\\qz_errors_tests_C0000005") + kTime)))
      << path;
  EXPECT_TRUE(file_starts_with_mdmp(path));
  fault.cancel_minidump();
  EXPECT_FALSE(file_exists(path));
  EXPECT_TRUE(fault.get_value("MiniDump").empty());
}

// At a throw, the dump takes the thrown EGeneric's own "ModuleName" and its
// type for the kind word; "<", ">" and ":" are taken out.
std::string thrown_dump;

LONG CALLBACK dump_at_throw(EXCEPTION_POINTERS* pointers) {
  if (pointers->ExceptionRecord->ExceptionCode == 0x20474343 && thrown_dump.empty())
    thrown_dump = EGeneric::SaveMiniDump(pointers, 0, GetCurrentThreadId());
  return EXCEPTION_CONTINUE_SEARCH;
}

TEST_F(MiniDumpTest, AThrownEGenericNamesItsModuleAndType) {
  thrown_dump.clear();
  void* handler = AddVectoredExceptionHandler(1, &dump_at_throw);
  try {
    throw EGeneric({"ModuleName", "plug<in>:x"});
  } catch (const EGeneric&) {
  }
  RemoveVectoredExceptionHandler(handler);
  EXPECT_TRUE(std::regex_match(thrown_dump, std::regex(std::string("Dumps\\\\pluginx_EGeneric") + kTime)))
      << thrown_dump;
  EXPECT_TRUE(file_starts_with_mdmp(thrown_dump));
  DeleteFileA(thrown_dump.c_str());
}

TEST_F(MiniDumpTest, AnUncreatableFolderGivesNoDumpAndNoValue) {
  ScopedSetting<const char*> nested(MiniDumpFileFormat,
                                    "NoSuchFolder\\Deeper\\%s_%s_%04hd_%02hd_%02hd_%02hd_%02hd_%02hd_%03hd.dmp");
  EXPECT_EQ(EGeneric::SaveMiniDump(nullptr, 0, GetCurrentThreadId()), "");
  EXPECT_FALSE(file_exists("NoSuchFolder"));

  ScopedSetting<bool> dumps(SaveMiniDumpOnStructuredException, true);
  EXCEPTION_RECORD record = {};
  record.ExceptionCode = EXCEPTION_INT_DIVIDE_BY_ZERO;
  EXCEPTION_POINTERS pointers = {&record, nullptr};
  EStructuredException fault(EXCEPTION_INT_DIVIDE_BY_ZERO, &pointers, GetCurrentThreadId());
  EXPECT_TRUE(fault.get_value("MiniDump").empty());
  EXPECT_FALSE(WriteMiniDump("NoSuchFolder\\x.dmp", nullptr, 0, GetCurrentThreadId()));
}

}  // namespace
