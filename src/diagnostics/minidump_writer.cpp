#include "diagnostics/symbol_engine.h"

#include <qz/diagnostics/minidump.h>

namespace {

// The writer itself, under the symbol lock: the debug-help library is not
// thread-safe.
bool write_dump(HANDLE file, _EXCEPTION_POINTERS* pointers, unsigned long type,
                unsigned long thread_id) {
  symbol_engine_user engine;
  if (!engine) return false;
  symbol_lock lock;
  const dbghelp_api* api = loaded_dbghelp();
  if (!lock || !api) return false;
  MINIDUMP_EXCEPTION_INFORMATION exception = {};
  exception.ThreadId = thread_id;
  exception.ExceptionPointers = pointers;
  exception.ClientPointers = TRUE;  // the pointers are in the dumped process: this one
  return api->MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file,
                                static_cast<MINIDUMP_TYPE>(type), pointers ? &exception : nullptr,
                                nullptr, nullptr) != FALSE;
}

}  // namespace

bool WriteMiniDump(const std::string& path, _EXCEPTION_POINTERS* pointers, unsigned long type,
                   unsigned long thread_id) {
  HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool written = false;
  try {
    written = write_dump(file, pointers, type, thread_id);
  } catch (...) {
    // A failing writer is reported as a failed dump.
  }
  CloseHandle(file);
  if (!written) DeleteFileA(path.c_str());  // no half-written dump is left behind
  return written;
}
