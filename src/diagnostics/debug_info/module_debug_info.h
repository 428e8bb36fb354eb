// What one module's file says about its code: for an address, the function's
// name and start and the source file and line, from its DWARF (versions 2 to
// 5) or, without DWARF, from its COFF symbol table (names demangled, no
// line).
//
// Lazy throughout: the file is mapped when the object is made; the units'
// address ranges are indexed on the first look-up (from .debug_aranges, or
// each unit's own entry where that table does not list it); a unit's functions and
// line table are read when an address first falls into it, and dropped
// again, least recently used first, when the units read exceed `budget`
// bytes. A malformed unit is remembered as such and names nothing.
//
// Thread safety: none; the cache serialises every use.
#pragma once

#include "diagnostics/debug_info/dwarf_unit.h"
#include "diagnostics/debug_info/line_table.h"
#include "diagnostics/debug_info/pe_file.h"
#include "diagnostics/debug_info/unit_functions.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace debug_info {

class module_debug_info {
 public:
  // Throws bad_debug_info when the file cannot be mapped or is no PE image.
  module_debug_info(const std::wstring& path, std::size_t budget);

  const pe_file& file() const { return file_; }
  bool has_dwarf() const { return !sections_.info.empty(); }

  // `rva`: the address's offset from the module's base. The function's name
  // and the offset of `rva` from its start.
  bool function_at(std::uint64_t rva, std::string& name, std::uint64_t& displacement);
  // The source file (as the line table names it) and line of `rva`.
  bool line_at(std::uint64_t rva, std::string& file, unsigned int& line);

  // Bytes kept beyond the mapping: the index and the units read.
  std::size_t bytes() const;

 private:
  struct unit_slot {
    std::uint64_t offset;
    std::unique_ptr<unit_functions> functions;
    std::unique_ptr<line_table> lines;
    bool read = false;
    bool broken = false;
    std::uint64_t last_use = 0;
    std::size_t bytes = 0;
  };
  struct unit_span {
    std::uint64_t low, high;
    std::uint32_t unit;
  };

  void index_units();
  void read_address_ranges(std::vector<bool>& listed);
  void index_unit(std::uint32_t index);
  unit_slot* unit_at(std::uint64_t address);
  void read_unit(unit_slot& slot);
  void trim();

  pe_file file_;
  dwarf_sections sections_;
  std::size_t budget_;
  bool indexed_ = false;
  std::vector<unit_slot> units_;
  std::vector<unit_span> spans_;  // sorted by low
  std::uint64_t clock_ = 0;
  std::size_t units_bytes_ = 0;
};

}  // namespace debug_info
