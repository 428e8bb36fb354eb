// What the vectored handler adds at a throw, and the dumps it and the fault
// path write.
#include <qz/errors/exceptions.h>
#include <qz/errors/structured_exceptions.h>
#include <qz/errors/tuning.h>

#include "errors/errors_test_support.h"
#include "errors/fault_test_support.h"
#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using errors_test::DumpDirectory;
using errors_test::IsDump;
using errors_test::NamedAsADumpOf;
using errors_test::TextOf;
using qz_test::ScopedSetting;

__attribute__((noinline)) void ThrowFromDeepInside() { throw EGeneric({"Text", "deep"}); }
void (*volatile throw_from_deep_inside)() = &ThrowFromDeepInside;

__attribute__((noinline)) void PassThrough(int depth) {
  void (*volatile next)(int) = &PassThrough;
  if (depth == 0) throw_from_deep_inside();
  next(depth - 1);
}

EGeneric CaughtFarAway() {
  try {
    PassThrough(3);
  } catch (const EGeneric& e) {
    return e;
  }
  return EGeneric();
}

TEST(VectoredHandler, AThrownEGenericCarriesTheLocationAndStackOfItsThrowOnlyWhileUseVEHIsSet) {
  ScopedSetting<bool> extend(ExtendDebugInformationFromException, true);
  {
    const EGeneric e = CaughtFarAway();
    EXPECT_EQ(TextOf(e, "ModuleName"), "qz_errors_tests");
    EXPECT_EQ(TextOf(e, "AddressName").rfind("ThrowFromDeepInside+", 0), 0u)
        << TextOf(e, "AddressName");
    const std::string stack = TextOf(e, "Stack");
    EXPECT_EQ(stack.rfind("\n-> ThrowFromDeepInside+", 0), 0u) << stack;
    EXPECT_NE(stack.find("\n-> PassThrough+"), std::string::npos) << stack;
    EXPECT_EQ(e.values().back().first, "Stack");
  }
  ScopedSetting<bool> handler_off(UseVEH, false);
  const EGeneric e = CaughtFarAway();
  EXPECT_EQ(TextOf(e, "Stack") + TextOf(e, "ModuleName") + TextOf(e, "AddressName"),
            "<none><none><none>");
}

// An object whose text cannot be had: reading it throws.
struct Unprintable : SmartPtrObj {
  std::string ToString() const override { throw std::runtime_error("no text"); }
};

TEST(VectoredHandler, SwallowsItsOwnErrorsAndLeavesTheExceptionAsItWas) {
  ScopedSetting<bool> extend(ExtendDebugInformationFromException, true);
  // The handler's look at "Stack" throws inside the handler itself.
  try {
    throw EGeneric({"Text", "outer"}, {"Stack", _value_t(new Unprintable)});
  } catch (const EGeneric& e) {
    EXPECT_EQ(TextOf(e, "Text"), "outer");
    EXPECT_EQ(e.values().size(), 2u);
  }
}

// The dump files under "Dumps" of the current directory.
std::vector<std::string> Dumps() {
  std::vector<std::string> names;
  WIN32_FIND_DATAA found;
  HANDLE search = FindFirstFileA("Dumps\\*.dmp", &found);
  if (search == INVALID_HANDLE_VALUE) return names;
  do names.push_back(std::string("Dumps\\") + found.cFileName);
  while (FindNextFileA(search, &found));
  FindClose(search);
  return names;
}

TEST(VectoredHandler, ExcludedKindsAndInterruptionsNeverWriteADump) {
  DumpDirectory directory;
  ScopedSetting<bool> dumps(SaveMiniDumpOnCppException, true);
  // A plain substring search: "EGeneric" lies inside "EGenericWrapper".
  ScopedSetting<std::string> excluded(MiniDumpExcludedTypes, "EThreadInterrupt;EGenericWrapperX");
  const size_t before = Dumps().size();
  EXPECT_THROW(throw EThreadInterrupt(), EThreadInterrupt);
  EXPECT_THROW(throw EStructuredException(), EStructuredException);
  EXPECT_THROW(throw EGeneric({"Text", "excluded"}), EGeneric);
  EXPECT_EQ(Dumps().size(), before);
}

TEST(VectoredHandler, AThrowWritesADumpWhenAskedAndTheExceptionCarriesItsPath) {
  DumpDirectory directory;
  ScopedSetting<bool> dumps(SaveMiniDumpOnCppException, true);
  const size_t before = Dumps().size();
  try {
    try {
      throw_from_deep_inside();
    } catch (const EGeneric&) {
      throw;  // the same error: no second dump
    }
  } catch (EGeneric& e) {
    const std::string path = TextOf(e, "MiniDump");
    EXPECT_TRUE(NamedAsADumpOf(path, "qz_errors_tests_EGeneric")) << path;
    EXPECT_TRUE(IsDump(path));
    EXPECT_EQ(Dumps().size(), before + 1);
    e.cancel_minidump();
    EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
  }
}

TEST(FaultDumps, AnAccessViolationWritesADumpNamedAfterModuleCodeAndTime) {
  DumpDirectory directory;
  ASSERT_TRUE(SaveMiniDumpOnStructuredException);  // the default
  temporary_redirect_structured_exceptions translate;
  try {
    fault_test::read_at(0x10);
  } catch (EStructuredException& e) {
    const std::string path = TextOf(e, "MiniDump");
    EXPECT_TRUE(NamedAsADumpOf(path, "qz_errors_tests_C0000005")) << path;
    EXPECT_TRUE(IsDump(path));
    e.cancel_minidump();
    EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(TextOf(e, "MiniDump"), "<none>");
  }
}

}  // namespace
