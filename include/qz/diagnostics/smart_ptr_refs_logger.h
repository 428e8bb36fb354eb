// SmartPtrRefsLogger: records which code took references to shared objects,
// so that a leak can be traced to the call stacks that still hold one.
//
// Opt-in: the library never calls it. A client that wants tracing enables a
// logger, calls AddPointerRef(key) where it takes a reference and
// DelPointerRef(key) where it drops one, and asks GetObjectReferences for a
// report of the references left:
//
//   SmartPtrRefsLogger refs;
//   refs.EnableSmartPtrRefsLogger();
//   refs.AddPointerRef(object);          // in the code that takes a reference
//   ...
//   std::string report = refs.GetObjectReferences(nullptr);
//
// Each reference keeps the return addresses of up to MaxStackDepth frames of
// the code that took it, the first three frames of the walk left out (the
// logger and the two callers that wrap it, as a smart pointer's helpers
// would). One entry per key: a second AddPointerRef of a key keeps the first
// stack.
//
// Report: entries grouped by stack, the key passed in left out (nullptr: all
// entries), fewest references first (groups with equal counts in no fixed
// order). A group whose stack has exactly one frame prints as one line,
//   "Refs: <count>, Stack: \n-> <frame>\n"
// any other as 76 hyphens on a line, then
//   "References: <count>\nStack: <frames>\n"
// with frames as SymGetStackTrace writes them ("\n-> <name>" each). Stacks
// count as one group when their depths agree and so do the first 4 bytes per
// frame of their frame list (only half of its bytes take part: two stacks
// that differ only further down count as one).
//
// Thread safety: every member may be called from any thread once the logger
// is enabled; the table is guarded by the logger's own critical section, and
// the stack is walked before it is taken. A copy gets its own lock.
#pragma once

#include <qz/export.h>
#include <qz/sync/critical_section.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <string>

class QZ_API SmartPtrRefsLogger {
 public:
  static constexpr unsigned int MaxStackDepth = 4;

#pragma pack(push, 1)
  // Packed: the report compares these bytes.
  struct stack_record {
    unsigned int depth;  // frames captured, 0 .. MaxStackDepth
    unsigned long long frames[MaxStackDepth];
  };
#pragma pack(pop)
  static_assert(sizeof(stack_record) == 4 + 8 * MaxStackDepth, "no padding");

  SmartPtrRefsLogger();
  // Copies the enabled state and the table; the copy has its own lock.
  SmartPtrRefsLogger(const SmartPtrRefsLogger& other);
  SmartPtrRefsLogger& operator=(const SmartPtrRefsLogger& other);
  ~SmartPtrRefsLogger();

  // Starts the symbol engine for the logger's lifetime; true once it has.
  // False (and nothing recorded) while the engine cannot start; may be
  // called again.
  bool EnableSmartPtrRefsLogger();

  // Records the caller's stack for `key`; the number of entries afterwards.
  // 0 and nothing recorded while not enabled.
  long AddPointerRef(const void* key) const;
  // Forgets `key` (an unknown key is fine); the number of entries left.
  // 0 while not enabled.
  long DelPointerRef(const void* key) const;
  // The report of every entry but `key`'s (see above); "" when empty.
  std::string GetObjectReferences(const void* key) const;

 private:
  struct address_less {
    bool operator()(const void* a, const void* b) const {
      return reinterpret_cast<std::uintptr_t>(a) < reinterpret_cast<std::uintptr_t>(b);
    }
  };
  using table_type = std::map<const void*, stack_record, address_less>;

  std::atomic<bool> enabled;
  mutable TCriticalSection lock;
  mutable table_type table;
};
