#include "faults/cxx_throw_diagnostics.h"

#include "diagnostics/internal/gcc_thrown_object_mingw.h"
#include "diagnostics/symbol_engine.h"
#include "faults/throw_site.h"

#include <qz/core/type_name.h>
#include <qz/errors/exceptions.h>
#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>

#include <optional>
#include <typeinfo>

namespace {

// The protected members of EGeneric that the handler works with.
struct generic_access : EGeneric {
  static void extend_at_throw(EGeneric& e, _CONTEXT* context) {
    auto extend =
        static_cast<void (EGeneric::*)(_CONTEXT*)>(&generic_access::ExtendDebugInformation);
    (e.*extend)(context);
  }
  static void stack_to_back(EGeneric& e) { (e.*(&generic_access::move_to_back))("Stack"); }
};

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

bool has_text(const EGeneric& e, const char* name) {
  _value_t value = e.get_value(name);
  return !value.empty() && !value.as_string().empty();
}

}  // namespace

bool is_cxx_throw(const EXCEPTION_RECORD& record) {
  return record.ExceptionCode == qz_gcc::kThrowCode;
}

bool cxx_throw_diagnostics_wanted() {
  return ExtendDebugInformationFromException || SaveMiniDumpOnCppException;
}

void add_cxx_throw_diagnostics(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  if (thrown_as<EStructuredException>(record) || thrown_as<EThreadInterrupt>(record)) return;
  EGeneric* generic = thrown_as<EGeneric>(record);
  // Stack, error address and dump all start at the function that threw.
  CONTEXT site = throw_site_context(*pointers->ContextRecord);
  EXCEPTION_POINTERS at_site{pointers->ExceptionRecord, &site};
  std::optional<symbol_engine_user> symbols;
  if (generic && ExtendDebugInformationFromException && !has_text(*generic, "Stack")) {
    symbols.emplace();
    generic_access::extend_at_throw(*generic, &site);
  }
  // A rethrow raises the same object again: one error, one dump.
  const bool dumped = generic && has_text(*generic, "MiniDump");
  if (SaveMiniDumpOnCppException && !dumped &&
      MiniDumpExcludedTypes.find(kind_word(record)) == std::string::npos) {
    const std::string path = EGeneric::SaveMiniDump(&at_site, MiniDumpType, GetCurrentThreadId());
    if (generic && !path.empty()) {
      generic->put_value("MiniDump", path);
      generic_access::stack_to_back(*generic);
    }
  }
}
