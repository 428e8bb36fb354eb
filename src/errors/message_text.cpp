// EGeneric::what(): the message text, built on demand from the value list.
#include <qz/errors/generic.h>

#include <qz/core/number_text.h>
#include <qz/sync/critical_section.h>

#include <string>

namespace {

// One buffer serves every exception in the process: what() returns a pointer
// into it that stays valid until the next what() call anywhere.
struct MessageBuffer {
  TCriticalSection lock;
  std::string text;
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
  MessageBuffer& buffer = message_buffer();
  buffer.lock.Lock();
  try {
    build_message(values_, buffer.text);
  } catch (...) {
    // what() must not throw; a value that cannot print leaves the text so far.
  }
  const char* text = buffer.text.c_str();
  buffer.lock.Unlock();
  return text;
}
