// A bounded little-endian reader over bytes of a mapped module file: every
// read checks its bounds and throws bad_debug_info past the end, so a
// truncated or corrupt file ends the reading of one unit, never the process.
//
// Thread safety: one cursor belongs to one thread; the bytes it reads must
// stay mapped.
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace debug_info {

class bad_debug_info : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A range of bytes of the file: a section, or a part of one.
struct byte_range {
  const std::uint8_t* data = nullptr;
  std::uint64_t size = 0;

  bool empty() const { return size == 0; }
  // The bytes from `offset` on; throws when `offset` lies past the end.
  byte_range from(std::uint64_t offset) const {
    if (offset > size) throw bad_debug_info("offset past the end of a debug section");
    return {data + offset, size - offset};
  }
  byte_range part(std::uint64_t offset, std::uint64_t length) const {
    byte_range rest = from(offset);
    if (length > rest.size) throw bad_debug_info("length past the end of a debug section");
    return {rest.data, length};
  }
};

class byte_cursor {
 public:
  explicit byte_cursor(byte_range range, std::uint64_t offset = 0)
      : range_(range), at_(offset) {
    if (offset > range.size) throw bad_debug_info("offset past the end of a debug section");
  }

  std::uint64_t offset() const { return at_; }
  bool at_end() const { return at_ >= range_.size; }
  std::uint64_t left() const { return range_.size - at_; }
  const std::uint8_t* here() const { return range_.data + at_; }

  void skip(std::uint64_t count) {
    need(count);
    at_ += count;
  }
  void seek(std::uint64_t offset) {
    if (offset > range_.size) throw bad_debug_info("offset past the end of a debug section");
    at_ = offset;
  }

  std::uint8_t u8() { return static_cast<std::uint8_t>(fixed(1)); }
  std::uint16_t u16() { return static_cast<std::uint16_t>(fixed(2)); }
  std::uint32_t u32() { return static_cast<std::uint32_t>(fixed(4)); }
  std::uint64_t u64() { return fixed(8); }
  // An unsigned value of 1 to 8 bytes.
  std::uint64_t fixed(unsigned int size) {
    need(size);
    std::uint64_t value = 0;
    for (unsigned int i = 0; i < size; ++i)
      value |= static_cast<std::uint64_t>(range_.data[at_ + i]) << (8 * i);
    at_ += size;
    return value;
  }

  std::uint64_t uleb() {
    std::uint64_t value = 0;
    for (unsigned int shift = 0;; shift += 7) {
      const std::uint8_t byte = u8();
      if (shift < 64) value |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
      if (!(byte & 0x80)) return value;
    }
  }
  std::int64_t sleb() {
    std::uint64_t value = 0;
    unsigned int shift = 0;
    std::uint8_t byte;
    do {
      byte = u8();
      if (shift < 64) value |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
      shift += 7;
    } while (byte & 0x80);
    if (shift < 64 && (byte & 0x40)) value |= ~std::uint64_t{0} << shift;
    return static_cast<std::int64_t>(value);
  }

  // A zero-terminated string inside the range; throws when it runs off it.
  const char* cstr() {
    const char* text = reinterpret_cast<const char*>(here());
    const void* end = std::memchr(text, 0, static_cast<std::size_t>(left()));
    if (!end) throw bad_debug_info("unterminated string in a debug section");
    at_ += static_cast<const char*>(end) - text + 1;
    return text;
  }

  // The length field of a DWARF unit: sets `offset_size` to 4 or 8 (64-bit
  // DWARF) and returns the unit's length after the field.
  std::uint64_t unit_length(unsigned int& offset_size) {
    std::uint64_t length = u32();
    offset_size = 4;
    if (length == 0xffffffffu) {
      length = u64();
      offset_size = 8;
    } else if (length >= 0xfffffff0u) {
      throw bad_debug_info("reserved DWARF unit length");
    }
    if (length > left()) throw bad_debug_info("DWARF unit longer than its section");
    return length;
  }

 private:
  void need(std::uint64_t count) const {
    if (count > left()) throw bad_debug_info("read past the end of a debug section");
  }

  byte_range range_;
  std::uint64_t at_;
};

// The zero-terminated string at `offset` of a string section.
inline const char* string_at(byte_range section, std::uint64_t offset) {
  byte_cursor cursor(section, offset);
  return cursor.cstr();
}

}  // namespace debug_info
