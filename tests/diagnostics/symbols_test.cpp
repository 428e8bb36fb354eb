#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>

#include "support/errors_test_support.h"
#include "diagnostics/symbol_text_rules.h"
#include "support/scoped_setting.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace {

// Addresses of functions go through a volatile: the debugger library under
// Wine would otherwise take a local that holds the address for a symbol of
// its own at that address.
unsigned long long address_of(void* function) {
  void* volatile held = function;
  return reinterpret_cast<unsigned long long>(held);
}

__attribute__((noinline)) int named_test_function(int x) { return x * 3 + 1; }

using errors_test::StartsWith;

class SymbolsTest : public errors_test::SymbolEngineTest {};

TEST(SymbolTexts, RulesForNamesSourcesAndShortening) {
  EXPECT_EQ(symbol_text::name("ns::f", 0x401000, 0x1c), "ns::f+1c");
  EXPECT_EQ(symbol_text::name(nullptr, 0x1234567890abcdefULL, 0), "0x90abcdef");
  EXPECT_EQ(symbol_text::name(std::string(2000, 'n').c_str(), 0, 0x10).size(), 1023u + 3u);

  EXPECT_EQ(symbol_text::source("Z:\\work\\src\\file.cpp", 12), "file.cpp#12");
  EXPECT_EQ(symbol_text::source("/work/src/file.cpp", 7), "file.cpp#7");

  const std::string hundred = std::string(40, 'a') + std::string(20, 'm') + std::string(40, 'z');
  EXPECT_EQ(symbol_text::full_name(hundred, ""), hundred);  // no source: never shortened
  EXPECT_EQ(symbol_text::full_name("f", "file.cpp#3"), "f[file.cpp#3]");
  EXPECT_EQ(symbol_text::full_name(hundred, "source#12"),
            std::string(40, 'a') + ".." + std::string(40, 'z') + "[source#12]");
}

TEST_F(SymbolsTest, NamesFunctionsOfTheProgramTheLibraryAndNoModule) {
  const unsigned long long own = address_of(reinterpret_cast<void*>(&named_test_function));
  // Functions of an anonymous namespace come without a namespace.
  EXPECT_EQ(SymGetNameFromAddress(own), "named_test_function");
  EXPECT_EQ(SymGetNameFromAddress(own + 2), "named_test_function+2");
  const std::string source = SymGetSourceFromAddress(own);
  EXPECT_TRUE(StartsWith(source, "symbols_test.cpp#")) << source;
  EXPECT_EQ(SymGetFullNameFromAddress(own + 2),
            "named_test_function+2[" + SymGetSourceFromAddress(own + 2) + "]");
  EXPECT_EQ(SymGetModuleFromAddress(own), "qz_diagnostics_tests");

  using naming = std::string (*)(unsigned long long);
  const unsigned long long library =
      address_of(reinterpret_cast<void*>(static_cast<naming>(&SymGetModuleFromAddress)));
  EXPECT_EQ(SymGetNameFromAddress(library), "SymGetModuleFromAddress");
  EXPECT_TRUE(StartsWith(SymGetSourceFromAddress(library), "symbol_texts.cpp#"));
  EXPECT_EQ(SymGetModuleFromAddress(library), "qz");

  const unsigned long long nowhere = 0x10;  // in no module: only the number
  EXPECT_EQ(SymGetFullNameFromAddress(nowhere), "0x10");
  EXPECT_EQ(SymGetModuleFromAddress(nowhere), "");
}

TEST(SymbolEngine, LastCleanupUnloadsTheLibrary) {
  ASSERT_EQ(GetModuleHandleW(L"dbghelp.dll"), nullptr) << "a test left the engine started";
  ASSERT_TRUE(SymInitialize());
  ASSERT_TRUE(SymInitialize());
  EXPECT_NE(GetModuleHandleW(L"dbghelp.dll"), nullptr);
  SymCleanup();
  EXPECT_NE(GetModuleHandleW(L"dbghelp.dll"), nullptr);
  SymCleanup();
  EXPECT_EQ(GetModuleHandleW(L"dbghelp.dll"), nullptr);
  SymCleanup();  // one too many: ignored, the next start still counts from one
  ASSERT_TRUE(SymInitialize());
  SymCleanup();
  EXPECT_EQ(GetModuleHandleW(L"dbghelp.dll"), nullptr);
}

__attribute__((noinline)) unsigned int walk_here(unsigned long long* frames, unsigned int skip,
                                                 unsigned int max) {
  const unsigned int count = StackWalk(frames, nullptr, nullptr, skip, max);
  return count + static_cast<unsigned int>(GetTickCount() & 0);  // no tail call
}

__attribute__((noinline)) unsigned int walk_one_deeper(unsigned long long* frames) {
  const unsigned int count = walk_here(frames, 1, 4);
  return count + static_cast<unsigned int>(GetTickCount() & 0);
}

TEST_F(SymbolsTest, StackWalkFromNoContextStartsAtTheCallerAndHonoursSkipAndMax) {
  unsigned long long frames[64] = {};
  const unsigned int count = walk_here(frames, 0, 64);
  ASSERT_GE(count, 3u);
  EXPECT_TRUE(StartsWith(SymGetNameFromAddress(frames[0]), "walk_here+"));
  EXPECT_TRUE(StartsWith(SymGetNameFromAddress(frames[1]),
                          "SymbolsTest_StackWalkFromNoContextStartsAtTheCallerAndHonoursSkipAndMax_Test::TestBody+"))
      << SymGetNameFromAddress(frames[1]);

  unsigned long long skipped[4] = {};
  ASSERT_EQ(walk_one_deeper(skipped), 4u);  // max honoured; walk_here skipped
  EXPECT_TRUE(StartsWith(SymGetNameFromAddress(skipped[0]), "walk_one_deeper+"));
  EXPECT_EQ(StackWalk(nullptr, nullptr, nullptr, 0, 64), 0u);

  const unsigned long long two[] = {frames[0], 0x10};  // one arrow line per frame
  EXPECT_EQ(SymGetStackTrace(two, 2), "\n-> " + SymGetFullNameFromAddress(frames[0]) + "\n-> 0x10");
  EXPECT_EQ(SymGetStackTrace(two, 0), "");
}

TEST_F(SymbolsTest, ErrorAddressSkipsTheListedModulesWithoutCase) {
  const unsigned long long own = address_of(reinterpret_cast<void*>(&named_test_function));
  const unsigned long long library = address_of(reinterpret_cast<void*>(&SymCleanup));
  const unsigned long long system = address_of(reinterpret_cast<void*>(&GetTickCount));
  const unsigned long long native =
      address_of(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlCaptureContext")));

  const unsigned long long blamed[] = {library, system, native, own, library};
  EXPECT_EQ(SymGetActualErrorAddress(blamed, 5), own);
  const unsigned long long system_only[] = {native, system, native};
  EXPECT_EQ(SymGetActualErrorAddress(system_only, 3), 0u);
  EXPECT_EQ(SymGetActualErrorAddress(blamed, 0), 0u);

  qz_test::ScopedSetting<std::string> only_the_program(SkipModulesForError, "QZ_DIAGNOSTICS_TESTS;x");
  EXPECT_EQ(SymGetActualErrorAddress(blamed, 5), library);
}

TEST_F(SymbolsTest, AModuleLoadedAfterTheStartIsFoundToo) {
  HMODULE late = LoadLibraryW(L"version.dll");
  ASSERT_NE(late, nullptr);
  const unsigned long long function =
      address_of(reinterpret_cast<void*>(GetProcAddress(late, "GetFileVersionInfoSizeW")));
  EXPECT_TRUE(EnsureModuleSymbolsLoaded(function));
  EXPECT_EQ(SymGetModuleFromAddress(function), "version");
  FreeLibrary(late);
  EXPECT_FALSE(EnsureModuleSymbolsLoaded(0x10));
}

// A copy of the probe module under `name` in the temporary folder.
std::wstring CopyOfProbeModule(const wchar_t* name) {
  wchar_t program[MAX_PATH], folder[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring probe = program;
  probe.erase(probe.rfind(L'\\') + 1);
  probe += L"qz_probe_module.dll";
  GetTempPathW(MAX_PATH, folder);
  const std::wstring copy = std::wstring(folder) + name;
  return CopyFileW(probe.c_str(), copy.c_str(), FALSE) ? copy : std::wstring();
}

// While the engine stays started (as an enabled reference logger keeps it),
// a module unloaded and another loaded over its range: the address is named
// after the module that holds it now, not the one that held it before.
TEST_F(SymbolsTest, AModuleLoadedWhereAnotherWasUnloadedIsNamedAfterItself) {
  const std::wstring first_path = CopyOfProbeModule(L"qz_probe_first.dll");
  const std::wstring second_path = CopyOfProbeModule(L"qz_probe_second.dll");
  ASSERT_FALSE(first_path.empty() || second_path.empty());
  HMODULE first = LoadLibraryW(first_path.c_str());
  ASSERT_NE(first, nullptr);
  const unsigned long long function =
      address_of(reinterpret_cast<void*>(GetProcAddress(first, "qz_probe_function")));
  EXPECT_EQ(SymGetModuleFromAddress(function), "qz_probe_first");
  FreeLibrary(first);
  HMODULE second = LoadLibraryW(second_path.c_str());
  ASSERT_NE(second, nullptr);
  ASSERT_EQ(second, first) << "the copy was loaded elsewhere: nothing to tell apart";
  EXPECT_EQ(SymGetModuleFromAddress(function), "qz_probe_second");
  EXPECT_TRUE(StartsWith(SymGetNameFromAddress(function), "qz_probe_function"))
      << SymGetNameFromAddress(function);
  FreeLibrary(second);
  DeleteFileW(first_path.c_str());
  DeleteFileW(second_path.c_str());
}

TEST_F(SymbolsTest, NamesAndWalksFromSeveralThreadsAtOnce) {
  const unsigned long long own = address_of(reinterpret_cast<void*>(&named_test_function));
  const std::string expected = SymGetFullNameFromAddress(own);
  std::atomic<int> wrong{0};
  std::vector<std::unique_ptr<qz_test::WorkerThread>> threads;
  for (int t = 0; t < 4; ++t)
    threads.push_back(std::make_unique<qz_test::WorkerThread>([&] {
      for (int i = 0; i < 25; ++i) {
        if (!SymInitialize()) ++wrong;  // cheap: the suite keeps the library loaded
        unsigned long long frames[16];
        if (walk_here(frames, 0, 16) < 2 || SymGetFullNameFromAddress(own) != expected) ++wrong;
        if (SymGetModuleFromAddress(frames[0]) != "qz_diagnostics_tests") ++wrong;
        SymCleanup();
      }
    }));
  for (auto& thread : threads) EXPECT_TRUE(thread->Join(60000));
  EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
