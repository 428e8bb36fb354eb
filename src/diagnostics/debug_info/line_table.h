// The line table of one unit (.debug_line, versions 2 to 5), run once into
// rows sorted by address, so that an address finds its row by a binary
// search.
//
// Thread safety: built once, then read-only; reads from several threads are
// safe.
#pragma once

#include "diagnostics/debug_info/dwarf_unit.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace debug_info {

class line_table {
 public:
  line_table() = default;
  // Runs the line program at `offset` of .debug_line; throws bad_debug_info.
  line_table(const dwarf_sections& sections, std::uint64_t offset, const unit_header& unit);

  // The file (as the table names it: with or without directories) and line
  // of the row that covers `address`; false when no sequence covers it.
  bool find(std::uint64_t address, const char*& file, unsigned int& line) const;
  // The same, counting only the rows at or after `from` for which
  // `counts(row address)` holds; false when no such row precedes `address`
  // before a sequence ends.
  template <typename Counts>
  bool find_counted(std::uint64_t address, std::uint64_t from, Counts counts, const char*& file,
                    unsigned int& line) const;

  // The name of file `index` of the table, or null.
  const char* file_name(std::uint32_t index) const {
    return index < files_.size() ? files_[index] : nullptr;
  }

  std::size_t bytes() const {
    return rows_.capacity() * sizeof(row) + files_.capacity() * sizeof(const char*);
  }

 private:
  struct row {
    std::uint64_t address;
    std::uint32_t line;
    std::uint32_t file;  // kEndOfSequence: no row covers this address and on
  };
  static constexpr std::uint32_t kEndOfSequence = 0xffffffffu;

  struct header;
  void read_files_v5(byte_cursor& cursor, const unit_header& unit, const dwarf_sections& sections,
                     bool directories);
  void read_files_v4(byte_cursor& cursor);
  void run(byte_cursor& cursor, const header& h, std::uint64_t end);

  std::vector<row> rows_;
  std::vector<const char*> files_;
};

template <typename Counts>
bool line_table::find_counted(std::uint64_t address, std::uint64_t from, Counts counts,
                              const char*& file, unsigned int& line) const {
  constexpr int kLongestLook = 4096;  // rows; a function has far fewer
  auto at = std::upper_bound(rows_.begin(), rows_.end(), address,
                             [](std::uint64_t a, const row& r) { return a < r.address; });
  for (int looked = 0; at != rows_.begin() && looked < kLongestLook; ++looked) {
    --at;
    if (at->address < from || at->file == kEndOfSequence) return false;
    if (!counts(at->address)) continue;
    // An address that starts several rows (a function's opening line, then
    // its first statement) names the first of them.
    while (at->address == address && at != rows_.begin() && (at - 1)->address == address &&
           (at - 1)->file != kEndOfSequence && counts((at - 1)->address))
      --at;
    if (at->file >= files_.size()) return false;
    file = files_[at->file];
    line = at->line;
    return true;
  }
  return false;
}

}  // namespace debug_info
