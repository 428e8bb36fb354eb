#include <qz/errors/exceptions.h>
#include <qz/errors/minidump.h>
#include <qz/errors/symbols.h>
#include <qz/errors/tuning.h>

#include "errors/errors_test_support.h"
#include "errors/minidump_path.h"
#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace {

using errors_test::FileExists;
using errors_test::IsDump;
using errors_test::NamedAsADumpOf;
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

// Every test leaves the folder as it found it.
class MiniDumpTest : public errors_test::SymbolEngineTest {
 protected:
  // A thrown EGeneric exposes its "MiniDump" so that cancel_minidump can run.
  struct Carrier : EGeneric {
    explicit Carrier(const std::string& path) { put_value("MiniDump", path); }
  };

  errors_test::DumpDirectory directory_;
};

TEST_F(MiniDumpTest, ADumpWithoutAFaultIsNamedAfterTheCaller) {
  const std::string path = EGeneric::SaveMiniDump(nullptr, 0, GetCurrentThreadId());
  EXPECT_TRUE(NamedAsADumpOf(path, "qz_errors_tests_Dump")) << path;
  EXPECT_TRUE(IsDump(path));

  Carrier carrier(path);
  carrier.cancel_minidump();
  EXPECT_FALSE(FileExists(path));
  EXPECT_TRUE(carrier.values().empty());
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
  EXPECT_TRUE(NamedAsADumpOf(thrown_dump, "pluginx_EGeneric")) << thrown_dump;
  EXPECT_TRUE(IsDump(thrown_dump));
  DeleteFileA(thrown_dump.c_str());
}

TEST_F(MiniDumpTest, AnUncreatableFolderGivesNoDumpAndNoValue) {
  ScopedSetting<const char*> nested(MiniDumpFileFormat,
                                    "NoSuchFolder\\Deeper\\%s_%s_%04hd_%02hd_%02hd_%02hd_%02hd_%02hd_%03hd.dmp");
  EXPECT_EQ(EGeneric::SaveMiniDump(nullptr, 0, GetCurrentThreadId()), "");
  EXPECT_FALSE(FileExists("NoSuchFolder"));

  ScopedSetting<bool> dumps(SaveMiniDumpOnStructuredException, true);
  EXCEPTION_RECORD record = {};
  record.ExceptionCode = EXCEPTION_INT_DIVIDE_BY_ZERO;
  EXCEPTION_POINTERS pointers = {&record, nullptr};
  EStructuredException fault(EXCEPTION_INT_DIVIDE_BY_ZERO, &pointers, GetCurrentThreadId());
  EXPECT_TRUE(fault.get_value("MiniDump").empty());
  EXPECT_FALSE(WriteMiniDump("NoSuchFolder\\x.dmp", nullptr, 0, GetCurrentThreadId()));
}

}  // namespace
