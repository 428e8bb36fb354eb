// Uses a little of every layer a consumer meets first: values, exceptions
// with named values, and text formatting.
#include <qz/qz.h>

#include <cstdio>

int main() {
  _value_t answer = 42;
  try {
    throw EGeneric({"Text", "consumer works"}, {"Answer", answer});
  } catch (const EGeneric& e) {
    const std::string text = e.get_value("Text");
    const __int64 value = e.get_value("Answer");
    std::printf("%s\n", format_string("%s (%I64d)", text.c_str(), value).c_str());
  }
  return 0;
}
