#include "diagnostics/debug_info/pe_file.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace debug_info {

namespace {

constexpr std::uint32_t kSymbolSize = 18;  // one COFF symbol record
constexpr std::uint8_t kExternal = 2;      // storage classes
constexpr std::uint8_t kStatic = 3;
constexpr std::uint16_t kFunctionType = 0x20;

}  // namespace

pe_file::pe_file(const std::wstring& path) {
  file_ = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  LARGE_INTEGER size = {};
  if (file_ == INVALID_HANDLE_VALUE || !GetFileSizeEx(file_, &size) || size.QuadPart == 0) {
    close();
    throw bad_debug_info("module file cannot be opened");
  }
  size_ = static_cast<std::uint64_t>(size.QuadPart);
  mapping_ = CreateFileMappingW(file_, nullptr, PAGE_READONLY, 0, 0, nullptr);
  if (mapping_)
    view_ = static_cast<const std::uint8_t*>(MapViewOfFile(mapping_, FILE_MAP_READ, 0, 0, 0));
  try {
    if (!view_) throw bad_debug_info("module file cannot be mapped");
    read_headers();
  } catch (...) {
    close();
    throw;
  }
}

pe_file::~pe_file() { close(); }

void pe_file::close() {
  if (view_) UnmapViewOfFile(view_);
  if (mapping_) CloseHandle(mapping_);
  if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
  view_ = nullptr;
  mapping_ = nullptr;
  file_ = INVALID_HANDLE_VALUE;
}

void pe_file::read_headers() {
  const byte_range whole{view_, size_};
  byte_cursor cursor(whole);
  if (cursor.u16() != 0x5a4d) throw bad_debug_info("no MZ header");
  cursor.seek(0x3c);
  cursor.seek(cursor.u32());
  if (cursor.u32() != 0x00004550) throw bad_debug_info("no PE signature");
  cursor.skip(2);  // machine
  const std::uint16_t section_count = cursor.u16();
  time_stamp_ = cursor.u32();
  symbol_table_ = cursor.u32();
  symbol_count_ = cursor.u32();
  const std::uint16_t optional_size = cursor.u16();
  cursor.skip(2);  // characteristics
  const std::uint64_t optional = cursor.offset();
  if (cursor.u16() != 0x20b) throw bad_debug_info("not a PE32+ image");
  cursor.seek(optional + 24);
  image_base_ = cursor.u64();
  cursor.seek(optional + 56);
  size_of_image_ = cursor.u32();
  cursor.seek(optional + optional_size);
  for (std::uint16_t i = 0; i < section_count; ++i) {
    char raw_name[9] = {};
    std::memcpy(raw_name, cursor.here(), std::min<std::uint64_t>(8, cursor.left()));
    cursor.skip(8);
    section_header s;
    s.virtual_size = cursor.u32();
    s.rva = cursor.u32();
    s.raw_size = cursor.u32();
    s.raw_offset = cursor.u32();
    cursor.skip(12);  // relocations, line numbers and their counts
    s.characteristics = cursor.u32();
    // "/123": the name is at that offset of the string table.
    const char* long_name =
        raw_name[0] == '/' ? string_table_entry(std::strtoull(raw_name + 1, nullptr, 10)) : nullptr;
    s.name = long_name ? long_name : raw_name;
    sections_.push_back(std::move(s));
  }
}

// The string table follows the symbol table; its first four bytes are its
// size, so offsets below 4 name nothing.
const char* pe_file::string_table_entry(std::uint64_t offset) const {
  if (symbol_table_ == 0 || offset < 4) return nullptr;
  const std::uint64_t table = symbol_table_ + std::uint64_t{symbol_count_} * kSymbolSize;
  try {
    return string_at({view_, size_}, table + offset);
  } catch (const bad_debug_info&) {
    return nullptr;
  }
}

byte_range pe_file::section(const char* name) const {
  for (const section_header& s : sections_) {
    if (s.name != name) continue;
    // The raw size is rounded up to the file alignment; the virtual size is
    // the section's own.
    const std::uint32_t length = s.virtual_size && s.virtual_size < s.raw_size ? s.virtual_size
                                                                                : s.raw_size;
    if (s.raw_offset > size_ || length > size_ - s.raw_offset) return {};
    return {view_ + s.raw_offset, length};
  }
  return {};
}

void pe_file::read_symbols() {
  symbols_read_ = true;
  if (symbol_table_ == 0 || symbol_count_ == 0) return;
  try {
    read_symbol_records();
  } catch (const bad_debug_info&) {
    // A truncated table: the symbols before the damage still serve.
  }
  std::stable_sort(symbols_.begin(), symbols_.end(),
                   [](const symbol& a, const symbol& b) { return a.rva < b.rva; });
  symbols_.shrink_to_fit();
}

void pe_file::read_symbol_records() {
  byte_cursor cursor({view_, size_}, symbol_table_);
  if (symbol_count_ > (size_ - symbol_table_) / kSymbolSize)
    throw bad_debug_info("symbol table longer than its file");
  short_names_.reserve(std::size_t{symbol_count_} * 9);  // never moves: names point into it
  for (std::uint32_t i = 0; i < symbol_count_; ++i) {
    const std::uint8_t* record = cursor.here();
    cursor.skip(kSymbolSize);
    std::uint32_t value, zeros, long_offset;
    std::int16_t section;
    std::uint16_t type;
    std::memcpy(&zeros, record, 4);
    std::memcpy(&long_offset, record + 4, 4);
    std::memcpy(&value, record + 8, 4);
    std::memcpy(&section, record + 12, 2);
    std::memcpy(&type, record + 14, 2);
    const std::uint8_t storage = record[16];
    const std::uint8_t aux = record[17];
    cursor.skip(std::uint64_t{aux} * kSymbolSize);
    i += aux;
    if (section <= 0 || static_cast<std::size_t>(section) > sections_.size()) continue;
    const section_header& s = sections_[section - 1];
    if (!(s.characteristics & IMAGE_SCN_CNT_CODE)) continue;
    if ((storage != kExternal && storage != kStatic) || (type & 0xf0) != kFunctionType) continue;
    const char* name;
    if (zeros == 0) {
      name = string_table_entry(long_offset);
      if (!name) continue;
    } else {
      name = short_names_.data() + short_names_.size();
      short_names_.insert(short_names_.end(), record, record + 8);
      short_names_.push_back('\0');
    }
    symbols_.push_back({s.rva + value, name});
  }
}

const pe_file::symbol* pe_file::function_symbol_at(std::uint32_t rva) {
  if (!symbols_read_) read_symbols();
  auto after = std::upper_bound(symbols_.begin(), symbols_.end(), rva,
                                [](std::uint32_t r, const symbol& s) { return r < s.rva; });
  if (after == symbols_.begin()) return nullptr;
  const symbol& found = *(after - 1);
  // Not past the end of the section that holds the symbol.
  for (const section_header& s : sections_)
    if (found.rva >= s.rva && found.rva < s.rva + s.virtual_size)
      return rva < s.rva + s.virtual_size ? &found : nullptr;
  return nullptr;
}

}  // namespace debug_info
