// The module reader on its own: broken files, a tight memory budget, and a
// module replaced by another at the same address.
#include "diagnostics/debug_info/debug_info_cache.h"
#include "diagnostics/debug_info/module_debug_info.h"
#include "diagnostics/dwarf5_module/dwarf5_module.h"
#include "diagnostics/diagnostics_test_support.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using debug_info::bad_debug_info;
using debug_info::module_debug_info;

std::wstring module_path(HMODULE module) {
  wchar_t path[MAX_PATH];
  const DWORD length = GetModuleFileNameW(module, path, MAX_PATH);
  return std::wstring(path, length);
}

// The offsets from the module's base of every function its exception
// directory lists.
std::vector<std::uint64_t> function_offsets(HMODULE module) {
  std::vector<std::uint64_t> offsets;
  for (std::uint32_t begin : diagnostics_test::function_begins(module)) offsets.push_back(begin + 3);
  return offsets;
}

std::vector<char> read_file(const std::wstring& path) {
  std::ifstream in(path.c_str(), std::ios::binary);
  return std::vector<char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void write_file(const std::wstring& path, const std::vector<char>& bytes) {
  std::ofstream out(path.c_str(), std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Every name and line the reader gives for `offsets`, as one text.
std::string everything_named(module_debug_info& info, const std::vector<std::uint64_t>& offsets) {
  std::string text;
  for (std::uint64_t offset : offsets) {
    std::string name, file;
    std::uint64_t displacement = 0;
    unsigned int line = 0;
    if (info.function_at(offset, name, displacement)) text += name + "+" + std::to_string(displacement);
    if (info.line_at(offset, file, line)) text += "@" + file + "#" + std::to_string(line);
    text += "\n";
  }
  return text;
}

TEST(DebugInfoReader, BrokenFilesEndInNamesOrNothingNeverACrash) {
  HMODULE module = GetModuleHandleW(L"qz_dwarf5_module.dll");
  ASSERT_NE(module, nullptr);
  const std::wstring original = module_path(module);
  const std::vector<std::uint64_t> offsets = function_offsets(module);
  const std::vector<char> bytes = read_file(original);
  ASSERT_GT(bytes.size(), 4096u);

  // Where the debug sections lie in the file.
  std::vector<std::pair<std::size_t, std::size_t>> debug_sections;
  {
    module_debug_info info(original, 1u << 20);
    const std::uint8_t* file = info.file().bytes_of_file().data;
    for (const char* name : {".debug_info", ".debug_abbrev", ".debug_line", ".debug_str",
                             ".debug_line_str", ".debug_rnglists", ".debug_aranges"}) {
      const debug_info::byte_range section = info.file().section(name);
      if (!section.empty())
        debug_sections.emplace_back(static_cast<std::size_t>(section.data - file),
                                    static_cast<std::size_t>(section.size));
    }
    ASSERT_GE(debug_sections.size(), 4u);
    EXPECT_NE(everything_named(info, offsets).find("dwarf5::Sample::read"), std::string::npos);
  }

  const std::wstring broken = L"qz_dwarf5_broken.dll";
  std::mt19937 random(23);
  for (int round = 0; round < 120; ++round) {
    std::vector<char> copy = bytes;
    if (round % 10 == 9) {
      copy.resize(random() % copy.size());  // truncated anywhere
    } else {
      const auto& section = debug_sections[random() % debug_sections.size()];
      for (int flips = 1 + random() % 16; flips > 0; --flips)
        copy[section.first + random() % section.second] = static_cast<char>(random());
    }
    write_file(broken, copy);
    try {
      module_debug_info info(broken, 1u << 20);
      everything_named(info, offsets);  // any answer, as long as it comes back
    } catch (const bad_debug_info&) {
      // a file that is no PE image any more: refused up front
    }
  }
  DeleteFileW(broken.c_str());
}

TEST(DebugInfoReader, ATightBudgetDropsUnitsAndNamesTheSame) {
  const std::wstring library = module_path(GetModuleHandleW(L"qz.dll"));
  const std::vector<std::uint64_t> offsets = function_offsets(GetModuleHandleW(L"qz.dll"));
  module_debug_info roomy(library, 1u << 30);
  module_debug_info tight(library, 1);
  std::string expected = everything_named(roomy, offsets);
  EXPECT_EQ(everything_named(tight, offsets), expected);
  // Only the last unit read stays, beside the index.
  EXPECT_LT(tight.bytes() * 4, roomy.bytes()) << tight.bytes() << " vs " << roomy.bytes();
}

// A module unloaded and another loaded at the same address is read afresh:
// the stripped copy names by its symbol table, the full copy by its DWARF.
TEST(DebugInfoReader, AnotherModuleAtTheSameAddressIsReadAfresh) {
  ASSERT_TRUE(CopyFileW(module_path(GetModuleHandleW(L"qz_dwarf5_module.dll")).c_str(),
                        L"qz_dwarf5_again.dll", FALSE));
  using member_address = void* (*)();
  auto member_of = [](HMODULE module) {
    auto address_of = reinterpret_cast<member_address>(
        reinterpret_cast<void*>(GetProcAddress(module, "dwarf5_member_address")));
    return reinterpret_cast<std::uint64_t>(address_of());
  };
  std::string name;
  std::uint64_t displacement = 0;

  HMODULE stripped = LoadLibraryW(L"qz_dwarf5_stripped.dll");
  ASSERT_NE(stripped, nullptr);
  const std::uint64_t first = member_of(stripped);
  ASSERT_TRUE(debug_info::function_name(first, name, displacement));
  EXPECT_EQ(name, "dwarf5::Sample::read(int volatile*)");
  ASSERT_TRUE(FreeLibrary(stripped));

  HMODULE again = LoadLibraryW(L"qz_dwarf5_again.dll");
  ASSERT_NE(again, nullptr);
  const std::uint64_t second = member_of(again);
  ASSERT_TRUE(debug_info::function_name(second, name, displacement));
  EXPECT_EQ(name, "dwarf5::Sample::read");
  if (second != first) std::printf("note: the copy did not load at the same address\n");
  FreeLibrary(again);
  DeleteFileW(L"qz_dwarf5_again.dll");
}

}  // namespace

namespace {

// Threads name addresses while another empties the cache under them.
TEST(DebugInfoReader, ConcurrentLookupsAndClearing) {
  const HMODULE library = GetModuleHandleW(L"qz.dll");
  const std::vector<std::uint64_t> offsets = function_offsets(library);
  const auto base = reinterpret_cast<std::uint64_t>(library);
  std::string expected;
  std::uint64_t displacement = 0;
  ASSERT_TRUE(debug_info::function_name(base + offsets[7], expected, displacement));
  std::atomic<bool> stop{false};
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t i = t; i < 600 && !stop; i += 3) {
        std::string name;
        std::uint64_t d = 0;
        debug_info::function_name(base + offsets[i % offsets.size()], name, d);
        if (!debug_info::function_name(base + offsets[7], name, d) || name != expected) ++wrong;
      }
    });
  }
  for (int i = 0; i < 50; ++i) {
    debug_info::clear_cache();
    Sleep(1);
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
