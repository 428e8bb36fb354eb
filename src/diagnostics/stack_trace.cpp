// The error address of a walked stack and the stack's text.
#include "diagnostics/symbol_engine.h"

#include <qz/core/split_join.h>
#include <qz/core/string_edit.h>
#include <qz/errors/tuning.h>

#include <set>

namespace {

std::set<std::string> modules_never_blamed() {
  std::set<std::string> names;
  divide_string(SkipModulesForError, names, ";");
  std::set<std::string> lower;
  for (const std::string& name : names) lower.insert(strlower(name));
  return lower;
}

}  // namespace

unsigned long long SymGetActualErrorAddress(const unsigned long long* frames, unsigned int count) {
  if (!frames || count == 0) return 0;
  symbol_engine_user engine;
  if (!engine) return frames[0];
  const std::set<std::string> skipped = modules_never_blamed();
  for (unsigned int i = 0; i < count; ++i)
    if (!skipped.count(strlower(SymGetModuleFromAddress(frames[i])))) return frames[i];
  return 0;
}

std::string SymGetStackTrace(const unsigned long long* frames, unsigned int count) {
  symbol_engine_user engine;
  if (!engine || !frames) return {};
  std::string trace;
  try {
    for (unsigned int i = 0; i < count; ++i) trace += "\n-> " + SymGetFullNameFromAddress(frames[i]);
  } catch (...) {
    // A frame that cannot be named ends the trace; the frames named so far stay.
  }
  return trace;
}
