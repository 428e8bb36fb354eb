// A module's file on disk, mapped read-only: its PE headers, its sections by
// name (long names such as ".debug_info" through the COFF string table) and
// the function symbols of its COFF symbol table, which GCC's linker keeps
// unless the image is stripped.
//
// The file is read, never the loaded image: the debug sections are not
// mapped into memory at run time, and the same code serves any process.
//
// Thread safety: after construction read-only, except function_symbol_at,
// which builds its table on first use; callers serialise (the cache does).
#pragma once

#include "diagnostics/debug_info/byte_cursor.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace debug_info {

class pe_file {
 public:
  // Maps the file; throws bad_debug_info when it cannot be opened or is no
  // 64-bit PE image.
  explicit pe_file(const std::wstring& path);
  ~pe_file();
  pe_file(const pe_file&) = delete;
  pe_file& operator=(const pe_file&) = delete;

  std::uint64_t image_base() const { return image_base_; }
  std::uint32_t size_of_image() const { return size_of_image_; }
  std::uint32_t time_stamp() const { return time_stamp_; }
  std::uint64_t mapped_bytes() const { return size_; }
  // The whole file as mapped.
  byte_range bytes_of_file() const { return {view_, size_}; }

  // The bytes of the named section in the file; empty when absent.
  byte_range section(const char* name) const;

  struct symbol {
    std::uint32_t rva;
    const char* name;  // into the mapping, or into short_names_
  };
  // The function symbol at or before `rva` in the same code section, or null.
  const symbol* function_symbol_at(std::uint32_t rva);
  std::size_t bytes() const {
    return sections_.capacity() * sizeof(section_header) + symbols_.capacity() * sizeof(symbol) +
           short_names_.capacity();
  }

 private:
  struct section_header {
    std::string name;
    std::uint32_t rva, virtual_size, raw_offset, raw_size, characteristics;
  };
  void close();
  void read_headers();
  void read_symbols();
  void read_symbol_records();
  const char* string_table_entry(std::uint64_t offset) const;

  HANDLE file_ = INVALID_HANDLE_VALUE;
  HANDLE mapping_ = nullptr;
  const std::uint8_t* view_ = nullptr;
  std::uint64_t size_ = 0;
  std::uint64_t image_base_ = 0;
  std::uint32_t size_of_image_ = 0;
  std::uint32_t time_stamp_ = 0;
  std::uint64_t symbol_table_ = 0;
  std::uint32_t symbol_count_ = 0;
  std::vector<section_header> sections_;
  bool symbols_read_ = false;
  std::vector<symbol> symbols_;    // functions, sorted by rva
  std::vector<char> short_names_;  // the 8-character names, each terminated; never reallocated
};

}  // namespace debug_info
