#include "diagnostics/debug_info/dwarf_unit.h"

#include "diagnostics/debug_info/dwarf_codes.h"

namespace debug_info {

unit_header read_unit_header(const dwarf_sections& sections, std::uint64_t offset) {
  byte_cursor cursor(sections.info, offset);
  unit_header unit;
  unit.offset = offset;
  const std::uint64_t length = cursor.unit_length(unit.offset_size);
  unit.end = cursor.offset() + length;
  unit.version = cursor.u16();
  if (unit.version < 2 || unit.version > 5) throw bad_debug_info("unknown DWARF version");
  if (unit.version >= 5) {
    unit.unit_type = cursor.u8();
    unit.address_size = cursor.u8();
    unit.abbrev_offset = cursor.fixed(unit.offset_size);
    if (unit.unit_type == dw::ut_skeleton || unit.unit_type == dw::ut_split_compile)
      cursor.skip(8);  // the split unit's id
    else if (unit.unit_type == dw::ut_type || unit.unit_type == dw::ut_split_type)
      cursor.skip(8 + unit.offset_size);  // signature and type offset
  } else {
    unit.unit_type = dw::ut_compile;
    unit.abbrev_offset = cursor.fixed(unit.offset_size);
    unit.address_size = cursor.u8();
  }
  if (unit.address_size != 4 && unit.address_size != 8)
    throw bad_debug_info("unknown DWARF address size");
  unit.first_die = cursor.offset();
  if (unit.first_die > unit.end) throw bad_debug_info("DWARF unit header longer than its unit");
  return unit;
}

const abbrev& abbrev_table::find(std::uint64_t code) const {
  if (code >= by_code.size() || by_code[code].tag == 0)
    throw bad_debug_info("DWARF entry with an unknown abbreviation");
  return by_code[code];
}

abbrev_table read_abbrev_table(byte_range section, std::uint64_t offset) {
  // Codes are small and dense in practice; anything beyond this is a corrupt
  // table, not a reason to allocate gigabytes.
  constexpr std::uint64_t kLargestCode = 1u << 20;
  abbrev_table table;
  byte_cursor cursor(section, offset);
  for (;;) {
    const std::uint64_t code = cursor.uleb();
    if (code == 0) return table;
    if (code > kLargestCode) throw bad_debug_info("DWARF abbreviation code out of range");
    if (code >= table.by_code.size()) table.by_code.resize(code + 1);
    abbrev& entry = table.by_code[code];
    entry.tag = static_cast<std::uint16_t>(cursor.uleb());
    if (entry.tag == 0) throw bad_debug_info("DWARF abbreviation without a tag");
    entry.has_children = cursor.u8() != 0;
    entry.first = static_cast<std::uint32_t>(table.attributes.size());
    for (;;) {
      const std::uint64_t name = cursor.uleb();
      const std::uint64_t form = cursor.uleb();
      if (name == 0 && form == 0) break;
      const std::int64_t implicit = form == dw::form_implicit_const ? cursor.sleb() : 0;
      table.attributes.push_back({static_cast<std::uint16_t>(name),
                                  static_cast<std::uint16_t>(form), implicit});
    }
    entry.count = static_cast<std::uint32_t>(table.attributes.size()) - entry.first;
  }
}

attribute_value read_attribute(byte_cursor& cursor, std::uint16_t form, std::int64_t implicit_const,
                               const unit_header& unit) {
  attribute_value value;
  value.form = form;
  switch (form) {
    case dw::form_addr:
      value.number = cursor.fixed(unit.address_size);
      break;
    case dw::form_block1:
      cursor.skip(cursor.u8());
      break;
    case dw::form_block2:
      cursor.skip(cursor.u16());
      break;
    case dw::form_block4:
      cursor.skip(cursor.u32());
      break;
    case dw::form_block:
    case dw::form_exprloc:
      cursor.skip(cursor.uleb());
      break;
    case dw::form_data1:
    case dw::form_ref1:
    case dw::form_flag:
    case dw::form_strx1:
    case dw::form_addrx1:
      value.number = cursor.u8();
      break;
    case dw::form_data2:
    case dw::form_ref2:
    case dw::form_strx2:
    case dw::form_addrx2:
      value.number = cursor.u16();
      break;
    case dw::form_strx3:
    case dw::form_addrx3:
      value.number = cursor.fixed(3);
      break;
    case dw::form_data4:
    case dw::form_ref4:
    case dw::form_ref_sup4:
    case dw::form_strx4:
    case dw::form_addrx4:
      value.number = cursor.u32();
      break;
    case dw::form_data8:
    case dw::form_ref8:
    case dw::form_ref_sig8:
    case dw::form_ref_sup8:
      value.number = cursor.u64();
      break;
    case dw::form_data16:
      cursor.skip(16);
      break;
    case dw::form_string:
      value.string = cursor.cstr();
      break;
    case dw::form_sdata:
      value.number = static_cast<std::uint64_t>(cursor.sleb());
      break;
    case dw::form_udata:
    case dw::form_ref_udata:
    case dw::form_strx:
    case dw::form_addrx:
    case dw::form_loclistx:
    case dw::form_rnglistx:
    case dw::form_gnu_addr_index:
    case dw::form_gnu_str_index:
      value.number = cursor.uleb();
      break;
    case dw::form_strp:
    case dw::form_line_strp:
    case dw::form_sec_offset:
    case dw::form_strp_sup:
    case dw::form_gnu_ref_alt:
    case dw::form_gnu_strp_alt:
      value.number = cursor.fixed(unit.offset_size);
      break;
    case dw::form_ref_addr:
      value.number = cursor.fixed(unit.version <= 2 ? unit.address_size : unit.offset_size);
      break;
    case dw::form_flag_present:
      value.number = 1;
      break;
    case dw::form_implicit_const:
      value.number = static_cast<std::uint64_t>(implicit_const);
      break;
    case dw::form_indirect: {
      const std::uint64_t actual = cursor.uleb();
      if (actual == dw::form_indirect || actual > 0xffff)
        throw bad_debug_info("bad indirect DWARF form");
      return read_attribute(cursor, static_cast<std::uint16_t>(actual), 0, unit);
    }
    default:
      throw bad_debug_info("unknown DWARF form");
  }
  return value;
}

bool is_constant_form(std::uint16_t form) {
  switch (form) {
    case dw::form_data1:
    case dw::form_data2:
    case dw::form_data4:
    case dw::form_data8:
    case dw::form_sdata:
    case dw::form_udata:
    case dw::form_implicit_const:
      return true;
    default:
      return false;
  }
}

const char* unit_reader::string_of(const attribute_value& value) const {
  switch (value.form) {
    case dw::form_string:
      return value.string;
    case dw::form_strp:
      return string_at(sections_.str, value.number);
    case dw::form_line_strp:
      return string_at(sections_.line_str, value.number);
    case dw::form_strx:
    case dw::form_strx1:
    case dw::form_strx2:
    case dw::form_strx3:
    case dw::form_strx4:
    case dw::form_gnu_str_index: {
      byte_cursor cursor(sections_.str_offsets,
                         bases_.str_offsets + value.number * unit_.offset_size);
      return string_at(sections_.str, cursor.fixed(unit_.offset_size));
    }
    default:
      return nullptr;
  }
}

std::uint64_t unit_reader::indexed_address(std::uint64_t index) const {
  byte_cursor cursor(sections_.addr, bases_.addr + index * unit_.address_size);
  return cursor.fixed(unit_.address_size);
}

std::uint64_t unit_reader::address_of(const attribute_value& value) const {
  switch (value.form) {
    case dw::form_addrx:
    case dw::form_addrx1:
    case dw::form_addrx2:
    case dw::form_addrx3:
    case dw::form_addrx4:
    case dw::form_gnu_addr_index:
      return indexed_address(value.number);
    default:
      return value.number;
  }
}

std::uint64_t unit_reader::reference_of(const attribute_value& value) const {
  switch (value.form) {
    case dw::form_ref1:
    case dw::form_ref2:
    case dw::form_ref4:
    case dw::form_ref8:
    case dw::form_ref_udata:
      return unit_.offset + value.number;
    case dw::form_ref_addr:
      return value.number;
    default:
      return ~std::uint64_t{0};
  }
}

void unit_reader::ranges_of(const attribute_value& value,
                            std::vector<address_range>& ranges) const {
  if (unit_.version < 5) return read_old_ranges(value.number, ranges);
  std::uint64_t offset = value.number;
  if (value.form == dw::form_rnglistx) {
    byte_cursor cursor(sections_.rnglists, bases_.rnglists + value.number * unit_.offset_size);
    offset = bases_.rnglists + cursor.fixed(unit_.offset_size);
  }
  read_range_list(offset, ranges);
}

void unit_reader::read_old_ranges(std::uint64_t offset,
                                  std::vector<address_range>& ranges) const {
  byte_cursor cursor(sections_.ranges, offset);
  const std::uint64_t largest =
      unit_.address_size == 8 ? ~std::uint64_t{0} : std::uint64_t{0xffffffffu};
  std::uint64_t base = bases_.low_pc;
  for (;;) {
    const std::uint64_t begin = cursor.fixed(unit_.address_size);
    const std::uint64_t end = cursor.fixed(unit_.address_size);
    if (begin == 0 && end == 0) return;
    if (begin == largest)
      base = end;
    else if (begin < end)
      ranges.push_back({base + begin, base + end});
  }
}

void unit_reader::read_range_list(std::uint64_t offset,
                                  std::vector<address_range>& ranges) const {
  byte_cursor cursor(sections_.rnglists, offset);
  std::uint64_t base = bases_.low_pc;
  auto add = [&ranges](std::uint64_t low, std::uint64_t high) {
    if (low < high) ranges.push_back({low, high});
  };
  for (;;) {
    switch (cursor.u8()) {
      case dw::rle_end_of_list:
        return;
      case dw::rle_base_addressx:
        base = indexed_address(cursor.uleb());
        break;
      case dw::rle_startx_endx: {
        const std::uint64_t low = indexed_address(cursor.uleb());
        add(low, indexed_address(cursor.uleb()));
        break;
      }
      case dw::rle_startx_length: {
        const std::uint64_t low = indexed_address(cursor.uleb());
        add(low, low + cursor.uleb());
        break;
      }
      case dw::rle_offset_pair: {
        const std::uint64_t low = base + cursor.uleb();
        add(low, base + cursor.uleb());
        break;
      }
      case dw::rle_base_address:
        base = cursor.fixed(unit_.address_size);
        break;
      case dw::rle_start_end: {
        const std::uint64_t low = cursor.fixed(unit_.address_size);
        add(low, cursor.fixed(unit_.address_size));
        break;
      }
      case dw::rle_start_length: {
        const std::uint64_t low = cursor.fixed(unit_.address_size);
        add(low, low + cursor.uleb());
        break;
      }
      default:
        throw bad_debug_info("unknown DWARF range list entry");
    }
  }
}

}  // namespace debug_info
