// Names and lines of code built with GCC's default -g (DWARF 5), which the
// debug-help library cannot read: the engine takes them from the module's
// own file. And a copy of that module without debug sections, named from
// its symbol table.
#include <qz/errors/exceptions.h>
#include <qz/faults/structured_exceptions.h>
#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>

#include "diagnostics/dwarf5_module/dwarf5_module.h"
#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace {

using qz_test::ScopedSetting;

std::string text_of(const EGeneric& e, const char* name) {
  _value_t value = e.get_value(name);
  return value.empty() ? "<none>" : value.as_string();
}

bool starts_with(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

std::string at_line(int line) { return "[dwarf5_module.cpp#" + std::to_string(line) + "]"; }

// "name+<hex>[dwarf5_module.cpp#line]"
::testing::AssertionResult named(const std::string& text, const std::string& name, int line) {
  if (starts_with(text, name + "+") && text.size() > name.size() + 1 &&
      text.compare(text.size() - at_line(line).size(), std::string::npos, at_line(line)) == 0)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "\"" << text << "\" is not " << name << "+...."
                                       << at_line(line);
}

class Dwarf5Module : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(SymInitialize()); }
  static void TearDownTestSuite() { SymCleanup(); }
};

TEST_F(Dwarf5Module, StackFaultAndThrowNameItsOwnFramesWithLines) {
  const dwarf5::source_lines lines = dwarf5_lines();
  for (symbol_sources sources : {symbol_sources::debug_help_first, symbol_sources::own_reader_first}) {
    ScopedSetting<symbol_sources> setting(SymbolSources, sources);
    std::string stack;
    dwarf5_stack(&stack);
    const std::size_t first = stack.find("\n-> ");
    ASSERT_NE(first, std::string::npos) << stack;
    const std::size_t second = stack.find("\n-> ", first + 1);
    EXPECT_TRUE(named(stack.substr(first + 4, second - first - 4), "dwarf5::inner::Walker::stack",
                      lines.stack));
    EXPECT_TRUE(starts_with(stack.substr(second), "\n-> dwarf5_stack+")) << stack;

    ScopedSetting<bool> extend(ExtendDebugInformationFromException, true);
    ScopedSetting<bool> no_dump(SaveMiniDumpOnStructuredException, false);
    temporary_redirect_structured_exceptions translate;
    try {
      dwarf5_read(reinterpret_cast<int*>(0x10));
      ADD_FAILURE() << "no fault";
    } catch (const EStructuredException& e) {
      EXPECT_TRUE(named(text_of(e, "AddressName"), "dwarf5::Sample::read", lines.fault));
      EXPECT_EQ(text_of(e, "ModuleName"), "qz_dwarf5_module");
    }
    try {
      dwarf5_raise();
      ADD_FAILURE() << "no throw";
    } catch (const EGeneric& e) {
      EXPECT_TRUE(named(text_of(e, "AddressName"), "dwarf5::raise_generic", lines.raise));
    }
  }
}

TEST_F(Dwarf5Module, FullNameOfAnOutOfLineMember) {
  const auto address = reinterpret_cast<unsigned long long>(dwarf5_member_address());
  const std::string full = SymGetFullNameFromAddress(address + 4);
  EXPECT_TRUE(named(full, "dwarf5::Sample::read", dwarf5_lines().fault - 1)) << full;
  EXPECT_EQ(SymGetNameFromAddress(address), "dwarf5::Sample::read");

  // The debug-help library alone knows no function there.
  ScopedSetting<symbol_sources> only(SymbolSources, symbol_sources::debug_help_only);
  EXPECT_FALSE(starts_with(SymGetFullNameFromAddress(address + 4), "dwarf5::Sample::read+"));
}

TEST_F(Dwarf5Module, WithoutDebugSectionsTheSymbolTableGivesDemangledNames) {
  HMODULE stripped = LoadLibraryW(L"qz_dwarf5_stripped.dll");
  ASSERT_NE(stripped, nullptr);
  using member_address = void* (*)();
  auto address_of = reinterpret_cast<member_address>(
      reinterpret_cast<void*>(GetProcAddress(stripped, "dwarf5_member_address")));
  ASSERT_NE(address_of, nullptr);
  const auto member = reinterpret_cast<unsigned long long>(address_of());
  EXPECT_EQ(SymGetFullNameFromAddress(member + 4), "dwarf5::Sample::read(int volatile*)+4");
  EXPECT_EQ(SymGetSourceFromAddress(member + 4), "");
  const auto exported = reinterpret_cast<unsigned long long>(
      reinterpret_cast<void*>(GetProcAddress(stripped, "dwarf5_stack")));
  EXPECT_EQ(SymGetNameFromAddress(exported + 1), "dwarf5_stack+1");  // a C name stays as it is
  FreeLibrary(stripped);
}

}  // namespace
