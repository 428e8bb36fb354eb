#include "diagnostics/debug_info/module_debug_info.h"

#include "diagnostics/debug_info/demangle.h"
#include "diagnostics/debug_info/dwarf_codes.h"

#include <algorithm>

namespace debug_info {

module_debug_info::module_debug_info(const std::wstring& path, std::size_t budget)
    : file_(path), budget_(budget) {
  sections_.info = file_.section(".debug_info");
  sections_.abbrev = file_.section(".debug_abbrev");
  sections_.str = file_.section(".debug_str");
  sections_.line_str = file_.section(".debug_line_str");
  sections_.line = file_.section(".debug_line");
  sections_.ranges = file_.section(".debug_ranges");
  sections_.rnglists = file_.section(".debug_rnglists");
  sections_.addr = file_.section(".debug_addr");
  sections_.str_offsets = file_.section(".debug_str_offsets");
}

// The units' address ranges come from .debug_aranges where it lists them
// (one read of a small table); a unit it does not list is asked itself.
void module_debug_info::index_units() {
  indexed_ = true;
  std::uint64_t offset = 0;
  while (offset < sections_.info.size) {
    unit_header unit;
    try {
      unit = read_unit_header(sections_, offset);
    } catch (const bad_debug_info&) {
      break;  // without a length the units after it cannot be found
    }
    units_.push_back({offset, nullptr, nullptr});
    offset = unit.end;
  }
  std::vector<bool> listed(units_.size(), false);
  try {
    read_address_ranges(listed);
  } catch (const bad_debug_info&) {
    // what it listed before the damage stands; the rest is asked below
  }
  for (std::uint32_t i = 0; i < units_.size(); ++i) {
    if (listed[i]) continue;
    try {
      index_unit(i);
    } catch (const bad_debug_info&) {
      units_[i].broken = true;
    }
  }
  std::stable_sort(spans_.begin(), spans_.end(),
                   [](const unit_span& a, const unit_span& b) { return a.low < b.low; });
  spans_.shrink_to_fit();
}

void module_debug_info::read_address_ranges(std::vector<bool>& listed) {
  byte_cursor cursor(file_.section(".debug_aranges"));
  while (!cursor.at_end()) {
    const std::uint64_t start = cursor.offset();
    unsigned int offset_size = 4;
    const std::uint64_t end = cursor.offset() + cursor.unit_length(offset_size);
    cursor.skip(2);  // version
    const std::uint64_t unit_offset = cursor.fixed(offset_size);
    const unsigned int address_size = cursor.u8();
    if (address_size != 4 && address_size != 8) throw bad_debug_info("bad address range set");
    cursor.skip(1);  // segment selector size
    // Tuples start at a multiple of their own size from the set's start.
    const std::uint64_t tuple = 2 * address_size;
    cursor.seek(start + (cursor.offset() - start + tuple - 1) / tuple * tuple);
    auto unit = std::lower_bound(units_.begin(), units_.end(), unit_offset,
                                 [](const unit_slot& u, std::uint64_t o) { return u.offset < o; });
    const bool known = unit != units_.end() && unit->offset == unit_offset;
    const auto index = static_cast<std::uint32_t>(unit - units_.begin());
    while (cursor.offset() + tuple <= end) {
      const std::uint64_t low = cursor.fixed(address_size);
      const std::uint64_t length = cursor.fixed(address_size);
      if (low == 0 && length == 0) break;
      if (known && length) spans_.push_back({low, low + length, index});
    }
    if (known) listed[index] = true;
    cursor.seek(end);
  }
}

// Only the unit's own entry: its address ranges.
void module_debug_info::index_unit(std::uint32_t index) {
  const unit_header unit = read_unit_header(sections_, units_[index].offset);
  if (unit.first_die >= unit.end) return;
  const abbrev_table abbrevs = read_abbrev_table(sections_.abbrev, unit.abbrev_offset);
  byte_cursor cursor(sections_.info.part(0, unit.end), unit.first_die);
  const abbrev& entry = abbrevs.find(cursor.uleb());
  unit_bases bases;
  attribute_value low, high, ranges;
  bool has_low = false, has_high = false, has_ranges = false;
  for (std::uint32_t i = 0; i < entry.count; ++i) {
    const abbrev_attribute& attribute = abbrevs.attributes[entry.first + i];
    const attribute_value value =
        read_attribute(cursor, attribute.form, attribute.implicit_const, unit);
    switch (attribute.name) {
      case dw::at_low_pc: low = value; has_low = true; break;
      case dw::at_high_pc: high = value; has_high = true; break;
      case dw::at_ranges: ranges = value; has_ranges = true; break;
      case dw::at_addr_base: bases.addr = value.number; break;
      case dw::at_rnglists_base: bases.rnglists = value.number; break;
      default: break;
    }
  }
  const unit_reader reader(sections_, unit, bases);
  if (has_low) bases.low_pc = reader.address_of(low);
  std::vector<address_range> found;
  if (has_ranges) {
    reader.ranges_of(ranges, found);
  } else if (has_low && has_high) {
    const std::uint64_t end =
        is_constant_form(high.form) ? bases.low_pc + high.number : reader.address_of(high);
    if (bases.low_pc < end) found.push_back({bases.low_pc, end});
  }
  for (const address_range& r : found) spans_.push_back({r.low, r.high, index});
}

module_debug_info::unit_slot* module_debug_info::unit_at(std::uint64_t address) {
  if (!indexed_) index_units();
  auto after = std::upper_bound(spans_.begin(), spans_.end(), address,
                                [](std::uint64_t a, const unit_span& s) { return a < s.low; });
  // Several units may claim one address: each unit that used an inline or
  // template function describes its copy, and the linker kept one copy for
  // all of them. The first unit that claims it speaks for it.
  const unit_span* first = nullptr;
  for (int looked = 0; after != spans_.begin() && looked < 64; ++looked) {
    const unit_span& span = *--after;
    if (address < span.high && (!first || span.unit < first->unit)) first = &span;
  }
  if (first) {
    unit_slot& slot = units_[first->unit];
    if (slot.broken) return nullptr;
    slot.last_use = ++clock_;  // before reading, so that the trim keeps it
    if (!slot.read) read_unit(slot);
    return slot.broken ? nullptr : &slot;
  }
  return nullptr;
}

void module_debug_info::read_unit(unit_slot& slot) {
  slot.read = true;
  try {
    const unit_header unit = read_unit_header(sections_, slot.offset);
    slot.functions = std::make_unique<unit_functions>(sections_, unit);
    if (slot.functions->stmt_list() != ~std::uint64_t{0})
      slot.lines = std::make_unique<line_table>(sections_, slot.functions->stmt_list(), unit);
  } catch (const bad_debug_info&) {
    slot.functions.reset();
    slot.lines.reset();
    slot.broken = true;
  } catch (const std::bad_alloc&) {
    slot.functions.reset();
    slot.lines.reset();
    slot.read = false;  // worth another try once memory is back
    return;
  }
  slot.bytes = (slot.functions ? slot.functions->bytes() : 0) + (slot.lines ? slot.lines->bytes() : 0);
  units_bytes_ += slot.bytes;
  trim();
}

// Drops the least recently used units until the budget holds again; the
// unit just read always stays.
void module_debug_info::trim() {
  while (units_bytes_ > budget_) {
    unit_slot* oldest = nullptr;
    for (unit_slot& slot : units_)
      if (slot.read && !slot.broken && slot.bytes && slot.last_use != clock_ &&
          (!oldest || slot.last_use < oldest->last_use))
        oldest = &slot;
    if (!oldest) return;
    oldest->functions.reset();
    oldest->lines.reset();
    oldest->read = false;
    units_bytes_ -= oldest->bytes;
    oldest->bytes = 0;
  }
}

bool module_debug_info::function_at(std::uint64_t rva, std::string& name,
                                    std::uint64_t& displacement) {
  const std::uint64_t address = file_.image_base() + rva;
  if (has_dwarf()) {
    unit_slot* unit = unit_at(address);
    std::uint64_t entry = 0;
    if (unit && unit->functions && unit->functions->find(address, name, entry)) {
      displacement = address - entry;
      return true;
    }
  }
  if (rva > 0xffffffffu) return false;
  const pe_file::symbol* symbol = file_.function_symbol_at(static_cast<std::uint32_t>(rva));
  if (!symbol) return false;
  name = demangle(symbol->name);
  displacement = rva - symbol->rva;
  return true;
}

bool module_debug_info::line_at(std::uint64_t rva, std::string& file, unsigned int& line) {
  if (!has_dwarf()) return false;
  unit_slot* unit = unit_at(file_.image_base() + rva);
  if (!unit || !unit->lines || !unit->functions) return false;
  const std::uint64_t address = file_.image_base() + rva;
  const char* path = nullptr;
  // The function's own rows: code inlined into it has rows of its own (the
  // inlined function's lines), which a frame named after the function does
  // not show. Inside inlined code, the last row of the function before it
  // names the address; before any, the line the inlined call is made from.
  const unit_functions& functions = *unit->functions;
  std::uint64_t from = 0;
  std::uint32_t index = 0, call_line = 0;
  if (functions.range_start(address, from) &&
      unit->lines->find_counted(
          address, from,
          [&functions](std::uint64_t row) {
            std::uint32_t f = 0, l = 0;
            return !functions.call_site(row, f, l);
          },
          path, line)) {
    file = path;
    return true;
  }
  if (functions.call_site(address, index, call_line) &&
      (path = unit->lines->file_name(index)) != nullptr) {
    file = path;
    line = call_line;
    return true;
  }
  if (!unit->lines->find(address, path, line)) return false;
  file = path;
  return true;
}

std::size_t module_debug_info::bytes() const {
  return units_bytes_ + units_.capacity() * sizeof(unit_slot) +
         spans_.capacity() * sizeof(unit_span) + file_.bytes();
}

}  // namespace debug_info
