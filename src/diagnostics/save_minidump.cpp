// EGeneric::SaveMiniDump: the dump's path from the fault, then the writer.
#include "diagnostics/dump_file.h"
#include "diagnostics/internal/gcc_thrown_object_mingw.h"
#include "diagnostics/minidump_path.h"
#include "diagnostics/symbol_engine.h"

#include <qz/core/type_name.h>
#include <qz/errors/generic.h>
#include <qz/diagnostics/minidump.h>
#include <qz/errors/tuning.h>

namespace {

// The code another compiler family's runtime raises for a C++ throw; its
// thrown type is not readable here.
constexpr DWORD kForeignThrowCode = 0xE06D7363;

// The "ModuleName" a thrown EGeneric already carries, or "".
std::string module_of_thrown(const EXCEPTION_RECORD* record) {
  const auto* thrown = static_cast<const EGeneric*>(thrown_object_as(record, typeid(EGeneric)));
  if (!thrown) return {};
  _value_t name = thrown->get_value("ModuleName");
  return name.empty() ? std::string() : name.as_string();
}

// The module of the first frame outside SkipModulesForError, walked from the
// fault's context or, without one, from here.
std::string module_of_fault(_EXCEPTION_POINTERS* pointers) {
  unsigned long long frames[64];
  const unsigned int count =
      StackWalk(frames, pointers ? pointers->ContextRecord : nullptr, nullptr, 0, 64);
  const unsigned long long address = SymGetActualErrorAddress(frames, count);
  return address ? SymGetModuleFromAddress(address) : std::string();
}

std::string kind_of(const EXCEPTION_RECORD* record) {
  if (!record) return "Dump";
  if (record->ExceptionCode == qz_gcc::kThrowCode || record->ExceptionCode == kForeignThrowCode) {
    const std::type_info* type = thrown_type(record);
    return type ? minidump_path::type_word(type_name(*type)) : "C++";
  }
  return minidump_path::code_word(record->ExceptionCode);
}

// The program's file name without directory and extension.
std::string program_name() {
  char path[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  std::string name = path;
  name.erase(0, name.rfind('\\') + 1);  // npos + 1 == 0: nothing to erase
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos ? name : name.substr(0, dot);
}

}  // namespace

std::string save_minidump_named(EXCEPTION_POINTERS* pointers, unsigned long type,
                                unsigned long thread_id, std::string module) {
  try {
    SYSTEMTIME now;
    GetLocalTime(&now);
    const EXCEPTION_RECORD* record = pointers ? pointers->ExceptionRecord : nullptr;
    const std::string kind = kind_of(record);
    if (module.empty()) module = program_name();
    const std::string path =
        minidump_path::compose(MiniDumpFileFormat, minidump_path::file_name_word(module),
                               minidump_path::file_name_word(kind), now);
    if (path.empty()) return {};
    const std::string directory = minidump_path::directory_of(path);
    if (!directory.empty()) CreateDirectoryA(directory.c_str(), nullptr);  // may exist already
    return WriteMiniDump(path, pointers, type, thread_id) ? path : std::string();
  } catch (...) {
    return {};  // a dump that cannot be made is no error of its own
  }
}

std::string EGeneric::SaveMiniDump(_EXCEPTION_POINTERS* pointers, unsigned long type,
                                   unsigned long thread_id) {
  try {
    symbol_engine_user engine;  // held across the walk, the naming and the writer
    std::string module = module_of_thrown(pointers ? pointers->ExceptionRecord : nullptr);
    if (module.empty()) module = module_of_fault(pointers);
    return save_minidump_named(pointers, type, thread_id, module);
  } catch (...) {
    return {};
  }
}
