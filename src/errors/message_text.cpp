// EGeneric::what(): the message text, built on demand from the value list.
#include <qz/errors/generic.h>

#include <qz/core/number_text.h>
#include <qz/sync/critical_section.h>

#include "errors/exception_text.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

// One buffer serves every exception in the process: what() returns a pointer
// into it whose text is valid until the next what() call anywhere. A caller
// holding a stale pointer reads another message, never freed memory: a
// buffer that grows retires its old storage instead of freeing it (growth
// doubles, so what is kept stays within twice the longest message).
class MessageBuffer {
 public:
  TCriticalSection lock;

  // Copies `text` in; the caller holds `lock`.
  const char* assign(const std::string& text) {
    if (text.size() + 1 > capacity_) grow(text.size() + 1);
    std::memcpy(current_, text.c_str(), text.size() + 1);
    return current_;
  }

 private:
  void grow(std::size_t needed) {
    std::size_t capacity = capacity_ ? capacity_ : 256;
    while (capacity < needed) capacity *= 2;
    retired_.push_back(std::make_unique<char[]>(capacity));
    current_ = retired_.back().get();
    capacity_ = capacity;
  }

  std::vector<std::unique_ptr<char[]>> retired_;  // every storage ever used, the newest last
  char* current_ = nullptr;
  std::size_t capacity_ = 0;
};

MessageBuffer& message_buffer() {
  static MessageBuffer* buffer = new MessageBuffer();  // never destroyed: what() may run during exit
  return *buffer;
}

std::string text_form(const _value_t& value) {
  if (value.empty()) return std::string();
  _value_t copy(value);
  return copy.as_string();
}

// Integers also show their 32 bits in hex: "5 (0x5)", "-2147467259 (0x80004005)".
std::string entry_value_text(const _value_t& value) {
  std::string text = text_form(value);
  const std::type_info& kind = value.type();
  if (kind == typeid(int) || kind == typeid(unsigned long)) {
    const auto bits = static_cast<unsigned long>(value);
    text += " (0x" + i64toa(static_cast<__int64>(bits), 16) + ")";
  }
  return text;
}

void build_message(const EGeneric::value_list& values, std::string& out) {
  out.clear();
  if (values.size() == 1 && values.front().first == "Text") {
    out = text_form(values.front().second);
    return;
  }
  for (const auto& entry : values) {
    if (&entry != &values.front()) out += '\n';
    out += entry.first;
    out += ": ";
    out += entry_value_text(entry.second);
  }
}

}  // namespace

const char* EGeneric::what() const noexcept {
  std::string text;
  try {
    build_message(values_, text);
  } catch (...) {
    // what() must not throw; a value that cannot print leaves the text so far.
  }
  MessageBuffer& buffer = message_buffer();
  buffer.lock.Lock();
  const char* result = "";
  try {
    result = buffer.assign(text);
  } catch (...) {
    // Out of memory for a longer buffer: an empty message rather than none.
  }
  buffer.lock.Unlock();
  return result;
}

std::string exception_text(const std::exception& e) {
  if (const auto* generic = dynamic_cast<const EGeneric*>(&e)) {
    std::string text;
    try {
      build_message(generic->values(), text);
    } catch (...) {
      // As what(): a value that cannot print leaves the text so far.
    }
    return text;
  }
  const char* text = e.what();
  return text ? text : "";
}
