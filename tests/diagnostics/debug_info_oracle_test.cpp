// The module reader against the debug-help library, on code both can read
// (this program and qz.dll are built with DWARF 4): every function start of
// both modules and every return address of several deep stacks must get the
// same name and source text from each.
#include <qz/core/smart_ptr.h>
#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/global_streams.h>
#include <qz/threads/thread_class.h>

#include "diagnostics/debug_info/debug_info_cache.h"
#include "diagnostics/symbol_text_rules.h"
#include "diagnostics/diagnostics_test_support.h"
#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

using address_list = std::vector<unsigned long long>;

struct texts {
  std::string name, source;
};

texts reader_texts(unsigned long long address) {
  std::string name;
  std::uint64_t displacement = 0;
  const bool named = debug_info::function_name(address, name, displacement);
  std::string file;
  unsigned int line = 0;
  const bool lined = debug_info::source_line(address, file, line);
  return {symbol_text::name(named ? name.c_str() : nullptr, address, named ? displacement : 0),
          lined ? symbol_text::source(file, static_cast<int>(line)) : std::string()};
}

texts library_texts(unsigned long long address) {
  qz_test::ScopedSetting<symbol_sources> only(SymbolSources, symbol_sources::debug_help_only);
  return {SymGetNameFromAddress(address), SymGetSourceFromAddress(address)};
}

bool ends_with(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Where the two may differ, and why:
//  - the library names no function: its text is the address ("0x...") or
//    the image's entry point ("EntryPoint"). The runtime's start-up objects
//    (crtexe.c, crtdll.c) carry DWARF 5, which it cannot read;
//  - the library leaves out the scope of an out-of-line copy of an inline
//    function (an entry with DW_AT_abstract_origin): "~Printed" where the
//    reader, scoping it by its declaration, writes "Printed::~Printed";
//  - the library has no line where code inlined at a function's very start
//    begins: it files those rows under the inlined call, and none are left
//    for the function. The reader gives the line the call is made from.
//    There the library also names the inlined function instead of the one
//    the code is in, now and then (GoogleTest's "test_suite_fp");
//  - the same function, another line, where one address starts rows of the
//    function and of code inlined into it, or of several copies of one
//    inline function: the library's choice among them is its own (at times
//    a line of another function: "~ELegacyException[value_storage_scalar.cpp#14]").
//    These stay few: at most one address in 10.
enum class verdict {
  same,
  library_unnamed,
  library_unscoped,
  library_no_line,
  other_line,
  different
};

// The library's name is the reader's, or its last part. A reader's name that
// the text rules cut at their buffer (a long template's scope) has lost its
// end: there the library's name must stand in it after a scope.
bool same_function(const std::string& library, const std::string& reader) {
  if (library == reader || ends_with(reader, "::" + library)) return true;
  const bool reader_cut = reader.size() + 1 >= symbol_text::kNamePieceBuffer;
  const std::string scoped = "::" + library.substr(0, library.find('<'));
  return reader_cut && reader.find(scoped) != std::string::npos;
}

verdict compare(const texts& library, const texts& reader) {
  if (library.name == reader.name && library.source == reader.source) return verdict::same;
  if (library.name.compare(0, 2, "0x") == 0 || library.name.compare(0, 10, "EntryPoint") == 0)
    return verdict::library_unnamed;
  const bool same_name = same_function(library.name, reader.name);
  if (library.source == reader.source && same_name) return verdict::library_unscoped;
  if (library.source.empty() && !reader.source.empty()) return verdict::library_no_line;
  if (same_name && !library.source.empty() && !reader.source.empty()) return verdict::other_line;
  return verdict::different;
}

// Compares every address; reports the differences, at most a screenful.
void expect_same_texts(const address_list& addresses, const char* what) {
  int counts[6] = {};
  std::string report;
  for (unsigned long long address : addresses) {
    const texts library = library_texts(address);
    const texts reader = reader_texts(address);
    const verdict v = compare(library, reader);
    if (++counts[static_cast<int>(v)] <= 40 && v >= verdict::other_line)
      report += "\n  library " + library.name + "[" + library.source + "]\n  reader  " +
                reader.name + "[" + reader.source + "]";
  }
  std::printf(
      "%s: %zu, same %d; the library: unnamed %d, unscoped %d, without line %d, other line %d\n",
      what, addresses.size(), counts[0], counts[1], counts[2], counts[3], counts[4]);
  EXPECT_EQ(counts[5], 0) << counts[5] << " of " << addresses.size() << " " << what
                          << " differ:" << report;
  EXPECT_LE(counts[4], static_cast<int>(addresses.size() / 10)) << what << report;
  // GoogleTest and the runtime's start-up code carry DWARF 5: most of what
  // the library can name must agree exactly.
  const int named = static_cast<int>(addresses.size()) - counts[1];
  EXPECT_GT(counts[0] + counts[2], named / 2) << what;
}

// The start of every function the module's exception directory lists.
address_list function_starts(HMODULE module) {
  address_list starts;
  for (std::uint32_t begin : diagnostics_test::function_begins(module))
    starts.push_back(reinterpret_cast<std::uintptr_t>(module) + begin);
  return starts;
}

class DebugInfoOracle : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(SymInitialize()); }
  static void TearDownTestSuite() { SymCleanup(); }
};

TEST_F(DebugInfoOracle, EveryFunctionStartOfTheProgramAndTheLibrary) {
  for (const wchar_t* name : {static_cast<const wchar_t*>(nullptr), L"qz.dll"}) {
    const address_list starts = function_starts(GetModuleHandleW(name));
    ASSERT_GT(starts.size(), 1000u);
    expect_same_texts(starts, name ? "function starts of qz.dll" : "function starts of the program");
  }
}

using diagnostics_test::descend;

address_list walk_here() {
  unsigned long long frames[64] = {};
  const unsigned int count = StackWalk(frames, nullptr, nullptr, 0, 64);
  return address_list(frames, frames + count);
}

// An object the library's logging asks for its text, deep inside qz.dll.
struct Printed : SmartPtrObj {
  std::string ToString() const override {
    *stack = walk_here();
    return "printed";
  }
  address_list* stack;
};

TEST_F(DebugInfoOracle, EveryReturnAddressOfDeepStacks) {
  address_list addresses;
  descend(25, [&] {
    const address_list stack = walk_here();
    addresses.insert(addresses.end(), stack.begin(), stack.end());
  });

  address_list through_logging;
  SmartPtr<Printed> printed = new Printed;
  printed->stack = &through_logging;
  descend(5, [&] { TDebugStreamSession(Debug) << printed.get(); });
  EXPECT_GE(through_logging.size(), 8u);
  addresses.insert(addresses.end(), through_logging.begin(), through_logging.end());

  struct walker : TThreadClass {
    void Execute() override {
      descend(10, [this] { stack = walk_here(); });
    }
    address_list stack;
  } thread;
  thread.StartThread();
  thread.StopThread(30000);
  addresses.insert(addresses.end(), thread.stack.begin(), thread.stack.end());

  // Every address of these two modules, none of the system's.
  address_list ours;
  for (unsigned long long address : addresses) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                           GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(address), &module);
    if (module == GetModuleHandleW(nullptr) || module == GetModuleHandleW(L"qz.dll"))
      ours.push_back(address);
  }
  ASSERT_GE(ours.size(), 40u);
  expect_same_texts(ours, "return addresses");
}

}  // namespace
