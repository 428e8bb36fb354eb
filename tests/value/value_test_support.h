// Helpers shared by the value model's tests.
#pragma once

#include <qz/errors/exceptions.h>

#include <string>

namespace value_test {

// "From>To" of the bad cast the call throws, or "no exception".
template <class Call>
std::string bad_cast_of(Call call) {
  try {
    call();
  } catch (const EBadCastException& e) {
    return std::string(e.get_value("From")) + ">" + std::string(e.get_value("To"));
  }
  return "no exception";
}

}  // namespace value_test
