// The functions of one compilation unit: every subprogram with code, by
// address, and the scopes (namespaces, classes) that qualify their names,
// read in one pass over the unit's entries.
//
// Names are qualified the way the debug-help library writes them:
// "outer::Class::method", anonymous namespaces left out, a definition out
// of its class (DW_AT_specification) or an out-of-line copy of an inline
// function (DW_AT_abstract_origin) named and scoped by its declaration. Code
// inlined into a function belongs to that function.
//
// Thread safety: built once, then read-only.
#pragma once

#include "diagnostics/debug_info/dwarf_unit.h"

#include <cstdint>
#include <string>
#include <vector>

namespace debug_info {

class unit_functions {
 public:
  // Reads the unit; throws bad_debug_info on a malformed unit. `bases` gets
  // the unit's own bases and `stmt_list` its line table (~0: none).
  unit_functions(const dwarf_sections& sections, const unit_header& unit);

  // The qualified name and entry address of the function whose code holds
  // `address`; false when no function of the unit does.
  bool find(std::uint64_t address, std::string& name, std::uint64_t& entry) const;
  // The start of the range of the function that holds `address`.
  bool range_start(std::uint64_t address, std::uint64_t& low) const;

  // Where code inlined into a function was called from: for an address in
  // the outermost inlined call, the caller's file (an index into the unit's
  // line table) and line. A frame is named by the function it runs in, so
  // its line is the one in that function too.
  bool call_site(std::uint64_t address, std::uint32_t& file, std::uint32_t& line) const;

  std::uint64_t stmt_list() const { return stmt_list_; }
  std::size_t bytes() const {
    return entries_.capacity() * sizeof(scope_entry) + functions_.capacity() * sizeof(function) +
           calls_.capacity() * sizeof(inlined_call);
  }

 public:
  struct entry_attributes;  // of one entry, while the unit is read

 private:
  struct walk;
  // A namespace, class or subprogram entry: what names and scopes a function.
  struct scope_entry {
    std::uint64_t offset;
    std::uint64_t origin;     // DW_AT_specification / DW_AT_abstract_origin, ~0: none
    const char* name;         // null: none of its own
    const char* linkage_name;
    std::int32_t parent;      // enclosing entry, -1: the unit
    std::uint16_t tag;
  };
  struct function {
    std::uint64_t low, high, entry;
    std::uint32_t index;  // into entries_
  };

  struct inlined_call {
    std::uint64_t low, high;
    std::uint32_t file, line;
  };

  std::int32_t add_entry(const unit_reader& reader, std::uint64_t offset, std::uint16_t tag,
                         const entry_attributes& attrs, const walk& tree);
  const function* function_at(std::uint64_t address) const;
  const scope_entry* entry_at(std::uint64_t offset) const;
  std::string qualified_name(const scope_entry& e) const;

  std::vector<scope_entry> entries_;       // in .debug_info order, so sorted by offset
  std::vector<function> functions_;  // sorted by low
  std::vector<inlined_call> calls_;  // outermost ones only, sorted by low
  std::uint64_t stmt_list_ = ~std::uint64_t{0};
};

}  // namespace debug_info
