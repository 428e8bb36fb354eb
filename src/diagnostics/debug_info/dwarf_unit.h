// The pieces every reader of .debug_info needs: the sections of one module,
// unit headers (DWARF 2 to 5, 32- and 64-bit), abbreviation tables and
// attribute values with the string, address and range-list indirections of
// DWARF 5.
//
// Thread safety: plain values over a mapped file; one thread at a time per
// object.
#pragma once

#include "diagnostics/debug_info/byte_cursor.h"

#include <cstdint>
#include <vector>

namespace debug_info {

struct dwarf_sections {
  byte_range info, abbrev, str, line_str, line, ranges, rnglists, addr, str_offsets;
};

struct unit_header {
  std::uint64_t offset = 0;     // of the unit in .debug_info
  std::uint64_t end = 0;        // one past its last byte
  std::uint64_t first_die = 0;  // offset of its first entry
  std::uint64_t abbrev_offset = 0;
  std::uint16_t version = 0;
  std::uint8_t unit_type = 0;
  std::uint8_t address_size = 8;
  unsigned int offset_size = 4;
};

// Reads the header of the unit at `offset`; throws bad_debug_info for a
// version or address size the reader does not know.
unit_header read_unit_header(const dwarf_sections& sections, std::uint64_t offset);

struct abbrev_attribute {
  std::uint16_t name;
  std::uint16_t form;
  std::int64_t implicit_const;
};

struct abbrev {
  std::uint16_t tag = 0;  // 0: no abbreviation has this code
  bool has_children = false;
  std::uint32_t first = 0;  // into abbrev_table::attributes
  std::uint32_t count = 0;
};

// The abbreviations of one table, indexed by code (GCC numbers them densely).
struct abbrev_table {
  std::vector<abbrev> by_code;
  std::vector<abbrev_attribute> attributes;

  // Throws bad_debug_info for a code the table does not have.
  const abbrev& find(std::uint64_t code) const;
};

abbrev_table read_abbrev_table(byte_range section, std::uint64_t offset);

// One attribute's value as read; strings, addresses and range lists that
// DWARF 5 gives as indices are resolved with the unit's bases.
struct attribute_value {
  std::uint16_t form = 0;
  std::uint64_t number = 0;       // constant, offset, index, reference or address
  const char* string = nullptr;   // for DW_FORM_string
};

attribute_value read_attribute(byte_cursor& cursor, std::uint16_t form, std::int64_t implicit_const,
                               const unit_header& unit);

// The bases a unit's entries resolve their indices against.
struct unit_bases {
  std::uint64_t str_offsets = 0;
  std::uint64_t addr = 0;
  std::uint64_t rnglists = 0;
  std::uint64_t low_pc = 0;  // the base address of range lists
};

struct address_range {
  std::uint64_t low;
  std::uint64_t high;  // one past the end
};

class unit_reader {
 public:
  unit_reader(const dwarf_sections& sections, const unit_header& unit, const unit_bases& bases)
      : sections_(sections), unit_(unit), bases_(bases) {}

  // The text of a string form, or null for a form that is no string (or a
  // string of a supplementary file the reader does not open).
  const char* string_of(const attribute_value& value) const;
  std::uint64_t address_of(const attribute_value& value) const;
  // The absolute .debug_info offset a reference form names, or ~0 when it
  // lies outside this file.
  std::uint64_t reference_of(const attribute_value& value) const;
  // Appends the ranges of a DW_AT_ranges value.
  void ranges_of(const attribute_value& value, std::vector<address_range>& ranges) const;

 private:
  std::uint64_t indexed_address(std::uint64_t index) const;
  void read_range_list(std::uint64_t offset, std::vector<address_range>& ranges) const;
  void read_old_ranges(std::uint64_t offset, std::vector<address_range>& ranges) const;

  const dwarf_sections& sections_;
  const unit_header& unit_;
  const unit_bases& bases_;
};

bool is_constant_form(std::uint16_t form);

}  // namespace debug_info
