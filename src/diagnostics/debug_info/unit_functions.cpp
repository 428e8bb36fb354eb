#include "diagnostics/debug_info/unit_functions.h"

#include "diagnostics/debug_info/dwarf_codes.h"
#include "diagnostics/debug_info/demangle.h"

#include <algorithm>

namespace debug_info {

namespace {

constexpr std::uint64_t kNone = ~std::uint64_t{0};

bool is_scope(std::uint16_t tag) {
  return tag == dw::tag_namespace || tag == dw::tag_class_type ||
         tag == dw::tag_structure_type || tag == dw::tag_union_type ||
         tag == dw::tag_interface_type;
}

}  // namespace

// The attributes of one entry the reader cares about.
struct unit_functions::entry_attributes {
  attribute_value name, linkage_name, low_pc, high_pc, ranges, origin, entry_pc;
  bool has_name = false, has_linkage = false, has_low = false, has_high = false,
       has_ranges = false, has_origin = false, has_entry_pc = false;
  attribute_value str_offsets_base, addr_base, rnglists_base, stmt_list, call_file, call_line;
  bool has_stmt_list = false, has_call = false;
};

namespace {

void note(unit_functions::entry_attributes& a, std::uint16_t name, const attribute_value& value) {
  switch (name) {
    case dw::at_name: a.name = value; a.has_name = true; break;
    case dw::at_linkage_name:
    case dw::at_mips_linkage_name: a.linkage_name = value; a.has_linkage = true; break;
    case dw::at_low_pc: a.low_pc = value; a.has_low = true; break;
    case dw::at_high_pc: a.high_pc = value; a.has_high = true; break;
    case dw::at_ranges: a.ranges = value; a.has_ranges = true; break;
    case dw::at_entry_pc: a.entry_pc = value; a.has_entry_pc = true; break;
    case dw::at_specification:
    case dw::at_abstract_origin: a.origin = value; a.has_origin = true; break;
    case dw::at_str_offsets_base: a.str_offsets_base = value; break;
    case dw::at_addr_base: a.addr_base = value; break;
    case dw::at_rnglists_base: a.rnglists_base = value; break;
    case dw::at_stmt_list: a.stmt_list = value; a.has_stmt_list = true; break;
    case dw::at_call_file: a.call_file = value; a.has_call = true; break;
    case dw::at_call_line: a.call_line = value; break;
    default: break;
  }
}

}  // namespace

// The walk over a unit's entries keeps, per open level of the tree, the
// entry that scopes its children and whether it is an inlined call.
struct unit_functions::walk {
  struct level {
    std::int32_t scope;
    bool inlined;
  };
  std::vector<level> levels;
  std::int32_t scope = -1;
  int inlined_depth = 0;

  void open(std::int32_t child_scope, bool inlined) {
    levels.push_back({scope, inlined});
    inlined_depth += inlined;
    scope = child_scope;
  }
  // False when the unit's own level closed: the walk is over.
  bool close() {
    if (levels.empty()) return false;
    scope = levels.back().scope;
    inlined_depth -= levels.back().inlined;
    levels.pop_back();
    return !levels.empty();
  }
};

unit_functions::unit_functions(const dwarf_sections& sections, const unit_header& unit) {
  const abbrev_table abbrevs = read_abbrev_table(sections.abbrev, unit.abbrev_offset);
  unit_bases bases;
  const unit_reader reader(sections, unit, bases);
  byte_cursor cursor(sections.info.part(0, unit.end), unit.first_die);
  walk tree;
  bool first = true;
  while (cursor.offset() < unit.end) {
    const std::uint64_t offset = cursor.offset();
    const std::uint64_t code = cursor.uleb();
    if (code == 0) {  // the end of a level's children
      if (!tree.close()) break;
      continue;
    }
    const abbrev& a = abbrevs.find(code);
    entry_attributes attrs;
    for (std::uint32_t i = 0; i < a.count; ++i) {
      const abbrev_attribute& attribute = abbrevs.attributes[a.first + i];
      note(attrs, attribute.name,
           read_attribute(cursor, attribute.form, attribute.implicit_const, unit));
    }
    if (first) {  // the unit's own entry: its bases come before any index is read
      first = false;
      bases.str_offsets = attrs.str_offsets_base.number;
      bases.addr = attrs.addr_base.number;
      bases.rnglists = attrs.rnglists_base.number;
      if (attrs.has_low) bases.low_pc = reader.address_of(attrs.low_pc);
      if (attrs.has_stmt_list) stmt_list_ = attrs.stmt_list.number;
      if (a.has_children) tree.open(-1, false);
      continue;
    }
    const std::int32_t index = add_entry(reader, offset, a.tag, attrs, tree);
    // A subprogram encloses its local classes; it adds nothing to their
    // names, but its own scope does.
    if (a.has_children)
      tree.open(index >= 0 ? index : tree.scope, a.tag == dw::tag_inlined_subroutine);
  }
  std::sort(functions_.begin(), functions_.end(),
            [](const function& x, const function& y) { return x.low < y.low; });
  std::sort(calls_.begin(), calls_.end(),
            [](const inlined_call& x, const inlined_call& y) { return x.low < y.low; });
  entries_.shrink_to_fit();
  functions_.shrink_to_fit();
  calls_.shrink_to_fit();
}

// Keeps what one entry says about names, functions and inlined calls;
// returns its index in entries_, or -1 when it is none of those kinds.
std::int32_t unit_functions::add_entry(const unit_reader& reader, std::uint64_t offset,
                                       std::uint16_t tag, const entry_attributes& attrs,
                                       const walk& tree) {
  std::int32_t index = -1;
  if (is_scope(tag) || tag == dw::tag_subprogram) {
    index = static_cast<std::int32_t>(entries_.size());
    entries_.push_back({offset, attrs.has_origin ? reader.reference_of(attrs.origin) : kNone,
                        attrs.has_name ? reader.string_of(attrs.name) : nullptr,
                        attrs.has_linkage ? reader.string_of(attrs.linkage_name) : nullptr,
                        tree.scope, tag});
  }
  const bool outermost_call = tag == dw::tag_inlined_subroutine && tree.inlined_depth == 0;
  if (tag != dw::tag_subprogram && !(outermost_call && attrs.has_call)) return index;
  std::vector<address_range> ranges;
  if (attrs.has_low && attrs.has_high) {
    const std::uint64_t low = reader.address_of(attrs.low_pc);
    const std::uint64_t high = is_constant_form(attrs.high_pc.form)
                                   ? low + attrs.high_pc.number
                                   : reader.address_of(attrs.high_pc);
    if (low < high) ranges.push_back({low, high});
  } else if (attrs.has_ranges) {
    reader.ranges_of(attrs.ranges, ranges);
  }
  if (ranges.empty()) return index;
  if (tag == dw::tag_subprogram) {
    std::uint64_t entry = attrs.has_low ? reader.address_of(attrs.low_pc) : ranges.front().low;
    if (attrs.has_entry_pc && !is_constant_form(attrs.entry_pc.form))
      entry = reader.address_of(attrs.entry_pc);
    for (const address_range& r : ranges)
      functions_.push_back({r.low, r.high, entry, static_cast<std::uint32_t>(index)});
  } else {
    for (const address_range& r : ranges)
      calls_.push_back({r.low, r.high, static_cast<std::uint32_t>(attrs.call_file.number),
                        static_cast<std::uint32_t>(attrs.call_line.number)});
  }
  return index;
}

bool unit_functions::call_site(std::uint64_t address, std::uint32_t& file,
                               std::uint32_t& line) const {
  auto after = std::upper_bound(calls_.begin(), calls_.end(), address,
                                [](std::uint64_t a, const inlined_call& c) { return a < c.low; });
  if (after == calls_.begin()) return false;
  const inlined_call& call = *(after - 1);  // outermost calls do not overlap
  if (address >= call.high || call.line == 0) return false;
  file = call.file;
  line = call.line;
  return true;
}

const unit_functions::scope_entry* unit_functions::entry_at(std::uint64_t offset) const {
  auto found = std::lower_bound(entries_.begin(), entries_.end(), offset,
                                [](const scope_entry& e, std::uint64_t o) { return e.offset < o; });
  return found != entries_.end() && found->offset == offset ? &*found : nullptr;
}

// The name comes from the first entry along the origin chain that has one;
// the scope from the last entry of the chain, the declaration, which sits
// in its class or namespace.
std::string unit_functions::qualified_name(const scope_entry& e) const {
  const scope_entry* at = &e;
  const char* name = e.name;
  const char* linkage = e.linkage_name;
  for (int hops = 0; hops < 8 && at->origin != kNone; ++hops) {
    const scope_entry* origin = entry_at(at->origin);
    if (!origin) break;  // in another unit: keep what this one says
    if (!name) name = origin->name;
    if (!linkage) linkage = origin->linkage_name;
    at = origin;
  }
  if (!name) return linkage ? demangle(linkage) : std::string();
  std::string text = name;
  for (std::int32_t p = at->parent; p >= 0; p = entries_[p].parent) {
    const scope_entry& scope = entries_[p];
    if (is_scope(scope.tag) && scope.name) text = std::string(scope.name) + "::" + text;
  }
  return text;
}

const unit_functions::function* unit_functions::function_at(std::uint64_t address) const {
  auto after = std::upper_bound(functions_.begin(), functions_.end(), address,
                                [](std::uint64_t a, const function& f) { return a < f.low; });
  // Nested ranges are rare (GCC's nested functions); look back a little for
  // the innermost range that holds the address.
  for (int looked = 0; after != functions_.begin() && looked < 16; ++looked) {
    const function& f = *--after;
    if (address < f.high) return &f;
  }
  return nullptr;
}

bool unit_functions::find(std::uint64_t address, std::string& name, std::uint64_t& entry) const {
  const function* f = function_at(address);
  if (!f) return false;
  name = qualified_name(entries_[f->index]);
  entry = f->entry;
  return !name.empty();
}

bool unit_functions::range_start(std::uint64_t address, std::uint64_t& low) const {
  const function* f = function_at(address);
  if (!f) return false;
  low = f->low;
  return true;
}

}  // namespace debug_info
