#include "diagnostics/debug_info/demangle.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace debug_info {

std::string demangle(const char* name) {
  if (name[0] != '_' || name[1] != 'Z') return name;
  int status = 0;
  std::unique_ptr<char, decltype(&std::free)> readable(
      abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
  return status == 0 && readable ? std::string(readable.get()) : std::string(name);
}

}  // namespace debug_info
