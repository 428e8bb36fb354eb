#include <qz/diagnostics/smart_ptr_refs_logger.h>

#include <qz/diagnostics/symbols.h>
#include <qz/sync/tlock.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <utility>
#include <vector>

namespace {

using stack_record = SmartPtrRefsLogger::stack_record;

// Shorter stacks first; among equal depths, the first depth * 4 bytes of the
// frame lists decide. Only half of the frames' bytes are compared, so
// stacks that differ only further down form one group.
struct record_less {
  bool operator()(const stack_record& a, const stack_record& b) const {
    if (a.depth != b.depth) return a.depth < b.depth;
    return std::memcmp(a.frames, b.frames, a.depth * 4) < 0;
  }
};

const char* const kSeparator =
    "----------------------------------------------------------------------------\n";

}  // namespace

SmartPtrRefsLogger::SmartPtrRefsLogger() : enabled(false) {}

SmartPtrRefsLogger::SmartPtrRefsLogger(const SmartPtrRefsLogger& other) : enabled(false) {
  *this = other;
}

SmartPtrRefsLogger& SmartPtrRefsLogger::operator=(const SmartPtrRefsLogger& other) {
  if (this == &other) return *this;
  table_type copy;
  {
    TLock held(other.lock);
    copy = other.table;
  }
  // Each enabled logger holds one start of the symbol engine of its own.
  if (other.enabled && !enabled) enabled = SymInitialize();
  TLock held(lock);
  table.swap(copy);
  return *this;
}

SmartPtrRefsLogger::~SmartPtrRefsLogger() {
  if (enabled) SymCleanup();
}

bool SmartPtrRefsLogger::EnableSmartPtrRefsLogger() {
  TLock held(lock);
  if (!enabled) enabled = SymInitialize();
  return enabled;
}

// Not inlined: the three frames skipped are this function and its two
// callers, so it must keep a frame of its own.
__attribute__((noinline)) long SmartPtrRefsLogger::AddPointerRef(const void* key) const {
  if (!enabled) return 0;
  unsigned long long frames[MaxStackDepth] = {};
  stack_record record = {};
  record.depth = StackWalk(frames, nullptr, nullptr, 3, MaxStackDepth);
  std::memcpy(record.frames, frames, sizeof(frames));  // the packed member may be unaligned
  TLock held(lock);
  table.emplace(key, record);  // a key already there keeps its first stack
  return static_cast<long>(table.size());
}

long SmartPtrRefsLogger::DelPointerRef(const void* key) const {
  if (!enabled) return 0;
  TLock held(lock);
  table.erase(key);
  return static_cast<long>(table.size());
}

std::string SmartPtrRefsLogger::GetObjectReferences(const void* key) const {
  std::map<stack_record, unsigned int, record_less> groups;
  {
    TLock held(lock);
    for (const auto& entry : table)
      if (entry.first != key) ++groups[entry.second];
  }
  std::vector<std::pair<stack_record, unsigned int>> sorted(groups.begin(), groups.end());
  std::sort(sorted.begin(), sorted.end(),
            [](const auto& a, const auto& b) { return a.second < b.second; });

  std::ostringstream report;
  for (const auto& group : sorted) {
    unsigned long long frames[MaxStackDepth];
    std::memcpy(frames, group.first.frames, sizeof(frames));
    const std::string stack = SymGetStackTrace(frames, group.first.depth);
    if (group.first.depth == 1)
      report << "Refs: " << group.second << ", Stack: " << stack << "\n";
    else
      report << kSeparator << "References: " << group.second << "\nStack: " << stack << "\n";
  }
  return report.str();
}
