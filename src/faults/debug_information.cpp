// The debug-information members of EGeneric: thin doors into the one
// policy of exception_diagnostics.h.
//
// A walk that starts from the caller's position drops the library's own
// frames, so that the stack begins in the code that raised the error: here
// ExtendDebugInformation and the constructor that called it. None of these
// functions may be inlined or end in a tail call, or that count would be off.
#include "faults/exception_diagnostics.h"

#include <qz/diagnostics/symbols.h>

namespace {

constexpr unsigned int kMaxFrames = 64;
// ExtendDebugInformation and the exception's constructor.
constexpr unsigned int kFramesOfTheLibrary = 2;

// Keeps the caller's frame on the stack: a call before it is no tail call.
inline void keep_frame() { asm volatile("" ::: "memory"); }

}  // namespace

__attribute__((noinline)) EGeneric::EGeneric(bool extend) {
  if (extend) ExtendDebugInformation(static_cast<_CONTEXT*>(nullptr));
  keep_frame();
}

__attribute__((noinline)) void EGeneric::ExtendDebugInformation(_CONTEXT* context) {
  exception_diagnostics::at_construction(*this, context, kFramesOfTheLibrary);
  keep_frame();
}

__attribute__((noinline)) void EGeneric::ExtendDebugInformation(_EXCEPTION_POINTERS* pointers) {
  exception_diagnostics::at_fault(*this, pointers, GetCurrentThreadId(), kFramesOfTheLibrary);
  keep_frame();
}

std::string EGeneric::BuildStack(_EXCEPTION_POINTERS* pointers, unsigned int skip, void* thread) {
  unsigned long long frames[kMaxFrames];
  const unsigned int count =
      StackWalk(frames, pointers ? pointers->ContextRecord : nullptr, thread, skip, kMaxFrames);
  return SymGetStackTrace(frames, count);
}
