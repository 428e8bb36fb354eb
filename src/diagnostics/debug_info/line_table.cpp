#include "diagnostics/debug_info/line_table.h"

#include "diagnostics/debug_info/dwarf_codes.h"

#include <algorithm>

namespace debug_info {

struct line_table::header {
  std::uint16_t version = 0;
  std::uint8_t address_size = 8;
  std::uint8_t min_instruction_length = 1;
  std::int8_t line_base = 0;
  std::uint8_t line_range = 1;
  std::uint8_t opcode_base = 1;
  std::vector<std::uint8_t> standard_lengths;
};

line_table::line_table(const dwarf_sections& sections, std::uint64_t offset,
                       const unit_header& unit) {
  byte_cursor cursor(sections.line, offset);
  unsigned int offset_size = 4;
  const std::uint64_t length = cursor.unit_length(offset_size);
  const std::uint64_t end = cursor.offset() + length;
  header h;
  h.version = cursor.u16();
  if (h.version < 2 || h.version > 5) throw bad_debug_info("unknown line table version");
  h.address_size = unit.address_size;
  if (h.version >= 5) {
    h.address_size = cursor.u8();
    cursor.skip(1);  // segment selector size
  }
  const std::uint64_t header_length = cursor.fixed(offset_size);
  const std::uint64_t program = cursor.offset() + header_length;
  if (program > end) throw bad_debug_info("line table header longer than its table");
  h.min_instruction_length = cursor.u8();
  if (h.version >= 4) cursor.skip(1);  // operations per instruction: 1 on x64
  cursor.skip(1);  // default is_stmt: every row names its address, as the debug-help library reads them
  h.line_base = static_cast<std::int8_t>(cursor.u8());
  h.line_range = cursor.u8();
  h.opcode_base = cursor.u8();
  if (h.line_range == 0 || h.opcode_base == 0) throw bad_debug_info("bad line table header");
  for (unsigned int i = 1; i < h.opcode_base; ++i) h.standard_lengths.push_back(cursor.u8());
  if (h.version >= 5) {
    unit_header line_unit = unit;
    line_unit.offset_size = offset_size;
    read_files_v5(cursor, line_unit, sections, true);
    read_files_v5(cursor, line_unit, sections, false);
  } else {
    read_files_v4(cursor);
  }
  cursor.seek(program);
  run(cursor, h, end);
  // Sequences may come in any order; within one address an end comes before
  // the start of the next sequence, and rows keep their program order.
  std::stable_sort(rows_.begin(), rows_.end(), [](const row& a, const row& b) {
    if (a.address != b.address) return a.address < b.address;
    return (a.file == kEndOfSequence) > (b.file == kEndOfSequence);
  });
  rows_.shrink_to_fit();
}

// DWARF 5 describes each entry by a list of (content, form) pairs. Only the
// path matters here (source texts carry the base name alone); directories
// are read past.
void line_table::read_files_v5(byte_cursor& cursor, const unit_header& unit,
                               const dwarf_sections& sections, bool directories) {
  const std::uint8_t format_count = cursor.u8();
  std::vector<std::pair<std::uint64_t, std::uint16_t>> format;
  for (unsigned int i = 0; i < format_count; ++i) {
    const std::uint64_t content = cursor.uleb();
    format.emplace_back(content, static_cast<std::uint16_t>(cursor.uleb()));
  }
  const std::uint64_t count = cursor.uleb();
  const unit_bases no_bases;
  const unit_reader reader(sections, unit, no_bases);
  for (std::uint64_t i = 0; i < count; ++i) {
    const char* path = "";
    for (const auto& field : format) {
      const attribute_value value = read_attribute(cursor, field.second, 0, unit);
      if (field.first == dw::lnct_path) {
        const char* text = reader.string_of(value);
        if (text) path = text;
      }
    }
    if (!directories) files_.push_back(path);
  }
}

// Before version 5: directories then files as zero-terminated lists; file
// numbers start at 1, so index 0 is a placeholder.
void line_table::read_files_v4(byte_cursor& cursor) {
  while (*cursor.cstr() != '\0') {
  }
  files_.push_back("");
  for (;;) {
    const char* path = cursor.cstr();
    if (*path == '\0') return;
    cursor.uleb();  // directory
    cursor.uleb();  // modification time
    cursor.uleb();  // length
    files_.push_back(path);
  }
}

void line_table::run(byte_cursor& cursor, const header& h, std::uint64_t end) {
  std::uint64_t address = 0;
  std::uint32_t file = 1;
  std::int64_t line = 1;
  auto emit = [&](std::uint32_t as_file) {
    rows_.push_back({address, static_cast<std::uint32_t>(line < 0 ? 0 : line), as_file});
  };
  auto reset = [&] {
    address = 0;
    file = 1;
    line = 1;
  };
  while (cursor.offset() < end) {
    const std::uint8_t opcode = cursor.u8();
    if (opcode >= h.opcode_base) {  // special opcode: advance both, emit a row
      const unsigned int adjusted = opcode - h.opcode_base;
      address += static_cast<std::uint64_t>(adjusted / h.line_range) * h.min_instruction_length;
      line += h.line_base + static_cast<int>(adjusted % h.line_range);
      emit(file);
      continue;
    }
    switch (opcode) {
      case 0: {  // extended
        const std::uint64_t length = cursor.uleb();
        const std::uint64_t next = cursor.offset() + length;
        if (length == 0) break;
        const std::uint8_t extended = cursor.u8();
        if (extended == 1) {  // end of sequence
          emit(kEndOfSequence);
          reset();
        } else if (extended == 2) {  // set address
          address = cursor.fixed(static_cast<unsigned int>(
              std::min<std::uint64_t>(length - 1, h.address_size)));
        } else if (extended == 3 && h.version <= 4) {  // define file
          files_.push_back(cursor.cstr());
        }
        cursor.seek(next);
        break;
      }
      case 1:  // copy
        emit(file);
        break;
      case 2:  // advance pc
        address += cursor.uleb() * h.min_instruction_length;
        break;
      case 3:  // advance line
        line += cursor.sleb();
        break;
      case 4:  // set file
        file = static_cast<std::uint32_t>(cursor.uleb());
        break;
      case 8:  // const add pc
        address += static_cast<std::uint64_t>((255 - h.opcode_base) / h.line_range) *
                   h.min_instruction_length;
        break;
      case 9:  // fixed advance pc
        address += cursor.u16();
        break;
      default:  // operands are unsigned LEB128 numbers, as many as the header says
        for (unsigned int i = 0; i < h.standard_lengths[opcode - 1]; ++i) cursor.uleb();
        break;
    }
  }
}

bool line_table::find(std::uint64_t address, const char*& file, unsigned int& line) const {
  auto after = std::upper_bound(rows_.begin(), rows_.end(), address,
                                [](std::uint64_t a, const row& r) { return a < r.address; });
  if (after == rows_.begin()) return false;
  --after;
  // An address that starts several rows (a function's opening line, then
  // its first statement) names the first of them.
  while (after != rows_.begin() && (after - 1)->address == address &&
         after->address == address && (after - 1)->file != kEndOfSequence)
    --after;
  const row& found = *after;
  if (found.file == kEndOfSequence || found.file >= files_.size()) return false;
  file = files_[found.file];
  line = found.line;
  return true;
}

}  // namespace debug_info
