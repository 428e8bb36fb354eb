#include "faults/exception_diagnostics.h"

#include "diagnostics/dump_file.h"
#include "diagnostics/internal/gcc_thrown_object_mingw.h"
#include "diagnostics/symbol_engine.h"
#include "faults/throw_site.h"
#include "faults/vectored_handler.h"

#include <qz/core/type_name.h>
#include <qz/errors/exceptions.h>
#include <qz/errors/tuning.h>

#include <typeinfo>

namespace {

constexpr unsigned int kMaxFrames = 64;

// Keeps the caller's frame on the stack: a call before it is no tail call.
inline void keep_frame() { asm volatile("" ::: "memory"); }

// One walk of a raise, and what the dump and the values read off it.
struct walked_stack {
  unsigned long long frames[kMaxFrames];
  unsigned int count = 0;
  unsigned long long error_address = 0;  // the first frame outside SkipModulesForError
  std::string module;                     // the module holding it
};

// Walks from `context`, or from the caller of walk_stack with `skip` frames
// dropped: not inlined, so that its own frame is the one a null context
// starts at.
__attribute__((noinline)) void walk_stack(walked_stack& stack, CONTEXT* context,
                                          unsigned int skip) {
  stack.count = StackWalk(stack.frames, context, nullptr, context ? 0 : skip + 1, kMaxFrames);
  stack.error_address = SymGetActualErrorAddress(stack.frames, stack.count);
  if (stack.error_address) stack.module = SymGetModuleFromAddress(stack.error_address);
  keep_frame();
}

void put_location_and_stack(EGeneric& e, const walked_stack& stack) {
  if (stack.error_address) {
    e.put_value("ModuleName", stack.module);
    e.put_value("AddressName", SymGetFullNameFromAddress(stack.error_address));
  }
  e.put_value("Stack", SymGetStackTrace(stack.frames, stack.count));
}

void put_dump(EGeneric& e, EXCEPTION_POINTERS* pointers, unsigned long thread_id,
              const std::string& module) {
  const std::string path = save_minidump_named(pointers, MiniDumpType, thread_id, module);
  if (!path.empty()) e.put_value("MiniDump", path);
}

// The text of a value, "" when it is missing or empty.
std::string text_of(const EGeneric& e, const char* name) {
  _value_t value = e.get_value(name);
  return value.empty() ? std::string() : value.as_string();
}

bool has_text(const EGeneric& e, const char* name) { return !text_of(e, name).empty(); }

template <class T>
T* thrown_as(const EXCEPTION_RECORD& record) {
  return static_cast<T*>(thrown_object_as(&record, typeid(T)));
}

std::string strip_prefix(std::string text, const char* prefix) {
  const std::string p(prefix);
  if (text.compare(0, p.size(), p) == 0) text.erase(0, p.size());
  return text;
}

// The word a dump's name and the exclusion list use for a thrown type.
std::string kind_word(const EXCEPTION_RECORD& record) {
  const std::type_info* type = thrown_type(&record);
  if (!type) return "C++";
  return strip_prefix(strip_prefix(type_name(*type), "class "), "std::");
}

}  // namespace

__attribute__((noinline)) void exception_diagnostics::at_fault(EGeneric& e,
                                                               EXCEPTION_POINTERS* pointers,
                                                               unsigned long thread_id,
                                                               unsigned int skip) {
  try {
    const bool dump = SaveMiniDumpOnStructuredException;
    const bool extend = ExtendDebugInformationFromException;
    if (!dump && !extend) return;
    symbol_engine_user engine;  // one start for the walk, the dump and the names
    walked_stack stack;
    walk_stack(stack, pointers ? pointers->ContextRecord : nullptr, skip + 1);
    if (dump) put_dump(e, pointers, thread_id, stack.module);
    if (extend && engine) put_location_and_stack(e, stack);
  } catch (...) {
  }
  keep_frame();
}

__attribute__((noinline)) void exception_diagnostics::at_construction(EGeneric& e, CONTEXT* context,
                                                                      unsigned int skip) {
  try {
    const bool handler = vectored_handler_at_work();
    const bool dump = SaveMiniDumpOnCppException && !handler &&
                      !dynamic_cast<EStructuredException*>(&e);
    const bool extend = ExtendDebugInformationFromException && !(handler && !context);
    if (!dump && !extend) return;
    symbol_engine_user engine;
    walked_stack stack;
    walk_stack(stack, context, skip + 1);
    if (dump) put_dump(e, nullptr, GetCurrentThreadId(), stack.module);
    if (extend && engine) put_location_and_stack(e, stack);
  } catch (...) {
  }
  keep_frame();
}

bool exception_diagnostics::wanted_at_throw() {
  return ExtendDebugInformationFromException || SaveMiniDumpOnCppException;
}

void exception_diagnostics::at_throw(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  if (thrown_as<EStructuredException>(record) || thrown_as<EThreadInterrupt>(record)) return;
  EGeneric* generic = thrown_as<EGeneric>(record);
  const bool extend = generic && ExtendDebugInformationFromException && !has_text(*generic, "Stack");
  // A rethrow raises the same object again: one error, one dump.
  const bool dump = SaveMiniDumpOnCppException && !(generic && has_text(*generic, "MiniDump")) &&
                    MiniDumpExcludedTypes.find(kind_word(record)) == std::string::npos;
  if (!extend && !dump) return;
  // Stack, error address and dump all start at the function that threw.
  CONTEXT site = throw_site_context(*pointers->ContextRecord);
  EXCEPTION_POINTERS at_site{pointers->ExceptionRecord, &site};
  symbol_engine_user engine;
  walked_stack stack;
  walk_stack(stack, &site, 0);
  if (extend && engine) put_location_and_stack(*generic, stack);
  if (!dump) return;
  // A "ModuleName" the thrown EGeneric carries names the dump.
  const std::string carried = generic ? text_of(*generic, "ModuleName") : std::string();
  const std::string module = carried.empty() ? stack.module : carried;
  const std::string path = save_minidump_named(&at_site, MiniDumpType, GetCurrentThreadId(), module);
  if (generic && !path.empty()) {
    generic->put_value("MiniDump", path);
    generic->move_to_back("Stack");
  }
}
