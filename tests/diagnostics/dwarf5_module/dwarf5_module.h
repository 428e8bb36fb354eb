// A module built the way a plain CMake Debug build of a user's program is:
// GCC's default -g, which writes DWARF 5 (no -gdwarf-4). The diagnostics
// tests load it as it is and as a copy whose debug sections were stripped,
// keeping its symbol table.
#pragma once

#include <string>

#ifdef QZ_DWARF5_MODULE_BUILDING
#define QZ_DWARF5_API __declspec(dllexport)
#else
#define QZ_DWARF5_API __declspec(dllimport)
#endif

namespace dwarf5 {

struct source_lines {
  int stack;  // the line that takes the stack in Walker::stack
  int fault;  // the line that reads through the pointer in Sample::read
  int raise;  // the line that throws in raise_generic
};

}  // namespace dwarf5

extern "C" {
QZ_DWARF5_API dwarf5::source_lines dwarf5_lines();
// GetMyDebugStack() taken three frames deep inside the module.
QZ_DWARF5_API void dwarf5_stack(std::string* stack);
// Reads through `pointer` (an access violation for a bad one) inside an
// out-of-line member function.
QZ_DWARF5_API int dwarf5_read(int* pointer);
// Throws an EGeneric built inside the module.
QZ_DWARF5_API void dwarf5_raise();
// The address of dwarf5::Sample::read, an out-of-line member function.
QZ_DWARF5_API void* dwarf5_member_address();
}
