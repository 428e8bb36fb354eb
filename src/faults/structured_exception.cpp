#include "faults/exception_diagnostics.h"

#include <qz/errors/exceptions.h>

#include <qz/core/number_text.h>

#include <cstdint>

namespace {

// The readable name of a fault code, or null for a code without one.
const char* fault_name(DWORD code) {
  switch (code) {
    case 0x80000002: return "Datatype Misalignment";
    case 0x80000003: return "Breakpoint";
    case 0x80000004: return "Debugger Exception";
    case 0xC0000005: return "Access Violation";
    case 0xC0000006: return "Page Fault";
    case 0xC0000017: return "No Memory";
    case 0xC000001D: return "Illegal Instruction";
    case 0xC0000025: return "Noncontinuable Exception";
    case 0xC0000026: return "Invalid Disposition";
    case 0xC000008C: return "Array Bounds Exceeded";
    case 0xC000008D: case 0xC000008E: case 0xC000008F: case 0xC0000090:
    case 0xC0000091: case 0xC0000092: case 0xC0000093:
    case 0xC00002B4: case 0xC00002B5: return "FPU Error";
    case 0xC0000094: return "Divide by Zero";
    case 0xC0000095: return "Integer Overflow";
    case 0xC0000096: return "Privileged Instruction";
    case 0xC00000FD: return "Stack Overflow";
    default: return nullptr;
  }
}

// "Access Violation (read from 0x10)": the data address in full 64 bits.
std::string access_violation_text(const EXCEPTION_RECORD* record) {
  std::string text = "Access Violation";
  if (!record || record->NumberParameters < 2) return text;
  text += record->ExceptionInformation[0] ? " (write to 0x" : " (read from 0x";
  return text + i64toa(static_cast<__int64>(record->ExceptionInformation[1]), 16) + ")";
}

int low_32_bits(std::uintptr_t value) { return static_cast<int>(static_cast<std::uint32_t>(value)); }

}  // namespace

EStructuredException::EStructuredException() = default;

__attribute__((noinline)) EStructuredException::EStructuredException(unsigned int code, _EXCEPTION_POINTERS* pointers,
                                           unsigned long thread_id) {
  const EXCEPTION_RECORD* record = pointers ? pointers->ExceptionRecord : nullptr;
  if (code == EXCEPTION_ACCESS_VIOLATION)
    put_value("Text", access_violation_text(record));
  else if (const char* name = fault_name(code))
    put_value("Text", name);
  put_value("Code", static_cast<int>(code));
  if (record) {
    put_value("Address", low_32_bits(reinterpret_cast<std::uintptr_t>(record->ExceptionAddress)));
    const DWORD count = record->NumberParameters < EXCEPTION_MAXIMUM_PARAMETERS ? record->NumberParameters
                                                                                : EXCEPTION_MAXIMUM_PARAMETERS;
    // Parameter0 ... Parameter9, then the ASCII characters after '9'.
    for (DWORD i = 0; i < count; ++i)
      put_value(std::string("Parameter") + static_cast<char>('0' + i), low_32_bits(record->ExceptionInformation[i]));
  }
  // The steps of ExtendDebugInformation(pointers), with the faulting thread
  // for the dump; a walk without a context drops this constructor's frame.
  exception_diagnostics::at_fault(*this, pointers, thread_id, 1);
  move_to_back("Stack");  // a stack trace ends the message
}

EStackOverflowException::EStackOverflowException() = default;
