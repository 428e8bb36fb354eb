// Dump files: their paths, the dump of no fault, and the dumps the handler
// writes at a throw. A fault's dump is in structured_exceptions_test.cpp.
#include <qz/errors/exceptions.h>
#include <qz/diagnostics/minidump.h>
#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>

#include "support/errors_test_support.h"
#include "diagnostics/minidump_path.h"
#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace {

using errors_test::FileExists;
using errors_test::IsDump;
using errors_test::NamedAsADumpOf;
using errors_test::TextOf;
using qz_test::ScopedSetting;

TEST(MiniDumpPath, WordsPatternAndDirectory) {
  EXPECT_EQ(minidump_path::file_name_word("a<b>c:d::e"), "abcde");
  EXPECT_EQ(minidump_path::type_word("class std::bad_alloc"), "bad_alloc");
  EXPECT_EQ(minidump_path::type_word("app::std::thing"), "app::std::thing");
  EXPECT_EQ(minidump_path::code_word(0xC0000005), "C0000005");

  SYSTEMTIME time = {};
  time.wYear = 2024, time.wMonth = 1, time.wDay = 31, time.wHour = 23, time.wMinute = 59;
  time.wSecond = 58, time.wMilliseconds = 7;
  EXPECT_EQ(minidump_path::compose(MiniDumpFileFormat, "app", "C0000005", time),
            "Dumps\\app_C0000005_2024_01_31_23_59_58_007.dmp");
  EXPECT_EQ(minidump_path::compose(nullptr, "app", "Dump", time), "");

  EXPECT_EQ(minidump_path::directory_of("a\\b\\c.dmp"), "a\\b");
  EXPECT_EQ(minidump_path::directory_of("app.dmp"), "");
}

// The dump files under "Dumps" of the current directory.
int DumpCount() {
  int count = 0;
  WIN32_FIND_DATAA found;
  HANDLE search = FindFirstFileA("Dumps\\*.dmp", &found);
  if (search == INVALID_HANDLE_VALUE) return 0;
  do ++count;
  while (FindNextFileA(search, &found));
  FindClose(search);
  return count;
}

// Every test leaves the folder as it found it.
class MiniDumpTest : public errors_test::SymbolEngineTest {
 protected:
  errors_test::DumpDirectory directory_;
};

TEST_F(MiniDumpTest, ADumpWithoutAFaultIsNamedAfterTheCaller) {
  const std::string path = EGeneric::SaveMiniDump(nullptr, 0, GetCurrentThreadId());
  EXPECT_TRUE(NamedAsADumpOf(path, "qz_diagnostics_tests_Dump")) << path;
  EXPECT_TRUE(IsDump(path));

  // cancel_minidump deletes the file and the entry, and leaves the rest.
  EGeneric carrier({"Text", "crash"}, {"MiniDump", path}, {"Code", 1});
  carrier.cancel_minidump();
  EXPECT_FALSE(FileExists(path));
  EXPECT_EQ(errors_test::NamesOf(carrier), "Text,Code,");
  carrier.cancel_minidump();  // nothing left to cancel
  EXPECT_EQ(errors_test::NamesOf(carrier), "Text,Code,");
}

TEST_F(MiniDumpTest, AnUncreatableFolderGivesNoDumpAndNoValue) {
  ScopedSetting<const char*> nested(MiniDumpFileFormat,
                                    "NoSuchFolder\\Deeper\\%s_%s_%04hd_%02hd_%02hd_%02hd_%02hd_%02hd_%03hd.dmp");
  EXPECT_EQ(EGeneric::SaveMiniDump(nullptr, 0, GetCurrentThreadId()), "");
  EXPECT_FALSE(FileExists("NoSuchFolder"));
  EXPECT_FALSE(WriteMiniDump("NoSuchFolder\\x.dmp", nullptr, 0, GetCurrentThreadId()));
}

// The dump takes the thrown EGeneric's own "ModuleName" and its type for the
// kind word, with "<", ">" and ":" taken out; a rethrow writes no second one.
TEST_F(MiniDumpTest, AThrowWritesADumpWhenAskedAndTheExceptionCarriesItsPath) {
  ScopedSetting<bool> dumps(SaveMiniDumpOnCppException, true);
  const int before = DumpCount();
  try {
    try {
      throw EGeneric({"ModuleName", "plug<in>:x"});
    } catch (const EGeneric&) {
      throw;
    }
  } catch (EGeneric& e) {
    const std::string path = TextOf(e, "MiniDump");
    EXPECT_TRUE(NamedAsADumpOf(path, "pluginx_EGeneric")) << path;
    EXPECT_TRUE(IsDump(path));
    EXPECT_EQ(DumpCount(), before + 1);
    e.cancel_minidump();
    EXPECT_FALSE(FileExists(path));
  }
}

TEST_F(MiniDumpTest, ExcludedKindsAndInterruptionsNeverWriteADump) {
  ScopedSetting<bool> dumps(SaveMiniDumpOnCppException, true);
  // A plain substring search: "EGeneric" lies inside "EGenericWrapper".
  ScopedSetting<std::string> excluded(MiniDumpExcludedTypes, "EThreadInterrupt;EGenericWrapperX");
  const int before = DumpCount();
  EXPECT_THROW(throw EThreadInterrupt(), EThreadInterrupt);
  EXPECT_THROW(throw EStructuredException(), EStructuredException);
  EXPECT_THROW(throw EGeneric({"Text", "excluded"}), EGeneric);
  EXPECT_EQ(DumpCount(), before);
}

}  // namespace
