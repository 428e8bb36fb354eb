#define QZ_DWARF5_MODULE_BUILDING
#include "dwarf5_module.h"

#include <qz/errors/exceptions.h>
#include <qz/diagnostics/symbols.h>

#include <windows.h>

namespace dwarf5 {

class Sample {
 public:
  int read(volatile int* pointer);
};

constexpr int kFaultLine = __LINE__ + 2;
__attribute__((noinline)) int Sample::read(volatile int* pointer) {
  return *pointer + static_cast<int>(GetTickCount() & 0);
}

namespace inner {

constexpr int kStackLine = __LINE__ + 4;
struct Walker {
  __attribute__((noinline)) static std::string stack() {
    // More code after the call on its line: its return address stays there.
    std::string text = GetMyDebugStack() + std::string(GetTickCount() & 0, 'x');
    return text;
  }
};

}  // namespace inner

constexpr int kRaiseLine = __LINE__ + 1;
__attribute__((noinline)) void raise_generic() { throw EGeneric({"Text", "from dwarf5"}); }

}  // namespace dwarf5

dwarf5::source_lines dwarf5_lines() {
  return {dwarf5::inner::kStackLine, dwarf5::kFaultLine, dwarf5::kRaiseLine};
}

void dwarf5_stack(std::string* stack) { *stack = dwarf5::inner::Walker::stack(); }

int dwarf5_read(int* pointer) { return dwarf5::Sample().read(pointer); }

void dwarf5_raise() { dwarf5::raise_generic(); }

void* dwarf5_member_address() {
  int (dwarf5::Sample::*member)(volatile int*) = &dwarf5::Sample::read;
  void* address;
  static_assert(sizeof(member) >= sizeof(address), "a plain member function pointer");
  __builtin_memcpy(&address, &member, sizeof(address));  // a non-virtual member: its address first
  return address;
}
