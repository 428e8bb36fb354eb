// The debug-information members of EGeneric: the dump and the location and
// stack values an exception gets at a fault or at a throw.
//
// The walks that start from the caller's position skip 3 frames: the
// walking helper, ExtendDebugInformation and the exception's constructor, so
// that the stack begins in the code that raised the error. None of these
// functions may be inlined or end in a tail call, or that count would be off.
#include "faults/fault_thread.h"
#include "diagnostics/symbol_engine.h"
#include "faults/vectored_handler.h"

#include <qz/errors/exceptions.h>
#include <qz/errors/tuning.h>

namespace {

constexpr unsigned int kMaxFrames = 64;
constexpr unsigned int kFramesOfTheLibrary = 3;

// Keeps the caller's frame on the stack: a call before it is no tail call.
inline void keep_frame() { asm volatile("" ::: "memory"); }

// Puts "ModuleName", "AddressName" and "Stack" of the stack walked from
// `context` (null: from here, skipping `skip` frames). The engine is started.
__attribute__((noinline)) void add_location_and_stack(EGeneric& e, CONTEXT* context,
                                                      unsigned int skip) {
  unsigned long long frames[kMaxFrames];
  const unsigned int count = StackWalk(frames, context, nullptr, skip, kMaxFrames);
  const unsigned long long address = SymGetActualErrorAddress(frames, count);
  if (address) {
    e.put_value("ModuleName", SymGetModuleFromAddress(address));
    e.put_value("AddressName", SymGetFullNameFromAddress(address));
  }
  e.put_value("Stack", SymGetStackTrace(frames, count));
  keep_frame();
}

}  // namespace

__attribute__((noinline)) EGeneric::EGeneric(bool extend) {
  if (extend) ExtendDebugInformation(static_cast<_CONTEXT*>(nullptr));
  keep_frame();
}

// Diagnostics never replace the error being reported: their own failures
// are swallowed, in both forms.
__attribute__((noinline)) void EGeneric::ExtendDebugInformation(_CONTEXT* context) {
  try {
    if (SaveMiniDumpOnCppException && !vectored_handler_installed() &&
        !dynamic_cast<EStructuredException*>(this)) {
      const std::string path = SaveMiniDump(nullptr, MiniDumpType, GetCurrentThreadId());
      if (!path.empty()) put_value("MiniDump", path);
    }
    if (!ExtendDebugInformationFromException) return;
    if (!context && vectored_handler_installed()) return;  // the handler adds them at the throw
    symbol_engine_user engine;
    if (engine) add_location_and_stack(*this, context, context ? 0 : kFramesOfTheLibrary);
  } catch (...) {
  }
  keep_frame();
}

__attribute__((noinline)) void EGeneric::ExtendDebugInformation(_EXCEPTION_POINTERS* pointers) {
  try {
    if (!SaveMiniDumpOnStructuredException && !ExtendDebugInformationFromException) return;
    symbol_engine_user engine;  // one start for the dump and the names
    if (SaveMiniDumpOnStructuredException) {
      const std::string path = SaveMiniDump(pointers, MiniDumpType, faulting_thread_id());
      if (!path.empty()) put_value("MiniDump", path);
    }
    if (ExtendDebugInformationFromException && engine) {
      CONTEXT* context = pointers ? pointers->ContextRecord : nullptr;
      add_location_and_stack(*this, context, context ? 0 : kFramesOfTheLibrary);
    }
  } catch (...) {
  }
  keep_frame();
}

std::string EGeneric::BuildStack(_EXCEPTION_POINTERS* pointers, unsigned int skip, void* thread) {
  unsigned long long frames[kMaxFrames];
  const unsigned int count =
      StackWalk(frames, pointers ? pointers->ContextRecord : nullptr, thread, skip, kMaxFrames);
  return SymGetStackTrace(frames, count);
}
