// What a test reads off the library's exceptions.
#pragma once

#include <qz/errors/exceptions.h>

#include <string>

namespace qz_test {

// The "Code" an exception carries (ESystemException, EComException).
inline int CodeOf(const EGeneric& e) { return static_cast<int>(e.get_value("Code")); }

// The "Code" of the ESystemException `call` throws; -1 when it throws none.
template <class Call>
int CodeThrownBy(const Call& call) {
  try {
    call();
  } catch (const ESystemException& e) {
    return CodeOf(e);
  }
  return -1;
}

// Every value of an exception by name and text, in order: "name=text;...".
inline std::string ValuesOf(const EGeneric& e) {
  std::string all;
  for (const auto& entry : e.values()) all += entry.first + "=" + _value_t(entry.second).as_string() + ";";
  return all;
}

}  // namespace qz_test
