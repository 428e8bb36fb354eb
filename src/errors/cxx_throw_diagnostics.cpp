#include "errors/cxx_throw_diagnostics.h"

#include <qz/core/type_name.h>
#include <qz/errors/exceptions.h>
#include <qz/errors/symbols.h>
#include <qz/errors/tuning.h>

#include <optional>
#include <typeinfo>

#include <unwind.h>

namespace {

// PROVISIONAL: replaced by the toolchain's thrown-object reader.
struct thrown_object {
  const std::type_info* type;
  void* object;
};
thrown_object thrown_object_of(const EXCEPTION_RECORD& record) {
  auto* header = reinterpret_cast<_Unwind_Exception*>(record.ExceptionInformation[0]);
  auto* type = *reinterpret_cast<const std::type_info* const*>(reinterpret_cast<char*>(header) - 10 * 8);
  return {type, header + 1};
}

// The protected members of EGeneric that the handler works with.
struct generic_access : EGeneric {
  static void extend_at_throw(EGeneric& e, _CONTEXT* context) {
    auto extend = static_cast<void (EGeneric::*)(_CONTEXT*)>(&generic_access::ExtendDebugInformation);
    (e.*extend)(context);
  }
  static void stack_to_back(EGeneric& e) { (e.*(&generic_access::move_to_back))("Stack"); }
};

// The thrown object as a T when a handler for T would catch it, else null;
// the type's own information decides, as it does for the catch.
template <class T>
T* catchable_as(const thrown_object& thrown) {
  if (!thrown.type) return nullptr;
  void* adjusted = thrown.object;
  return typeid(T).__do_catch(thrown.type, &adjusted, 1) ? static_cast<T*>(adjusted) : nullptr;
}

std::string strip_prefix(std::string text, const char* prefix) {
  const std::string p(prefix);
  if (text.compare(0, p.size(), p) == 0) text.erase(0, p.size());
  return text;
}

// The word a dump's name and the exclusion list use for a thrown type.
std::string kind_word(const thrown_object& thrown) {
  if (!thrown.type) return "C++";
  return strip_prefix(strip_prefix(type_name(*thrown.type), "class "), "std::");
}

bool has_stack(const EGeneric& e) {
  _value_t stack = e.get_value("Stack");
  return !stack.empty() && !stack.as_string().empty();
}

// Stops the symbol engine when the handler started it.
class symbol_session {
 public:
  symbol_session() : started_(SymInitialize()) {}
  ~symbol_session() {
    if (started_) SymCleanup();
  }
  symbol_session(const symbol_session&) = delete;
  symbol_session& operator=(const symbol_session&) = delete;

 private:
  bool started_;
};

}  // namespace

bool is_cxx_throw(const EXCEPTION_RECORD& record) { return record.ExceptionCode == 0x20474343; }

bool cxx_throw_diagnostics_wanted() {
  return ExtendDebugInformationFromException || SaveMiniDumpOnCppException;
}

void add_cxx_throw_diagnostics(EXCEPTION_POINTERS* pointers) {
  const thrown_object thrown = thrown_object_of(*pointers->ExceptionRecord);
  if (catchable_as<EStructuredException>(thrown) || catchable_as<EThreadInterrupt>(thrown)) return;
  EGeneric* generic = catchable_as<EGeneric>(thrown);
  std::optional<symbol_session> symbols;
  if (generic && ExtendDebugInformationFromException && !has_stack(*generic)) {
    symbols.emplace();
    generic_access::extend_at_throw(*generic, pointers->ContextRecord);
  }
  if (SaveMiniDumpOnCppException && MiniDumpExcludedTypes.find(kind_word(thrown)) == std::string::npos) {
    const std::string path = EGeneric::SaveMiniDump(pointers, MiniDumpType, GetCurrentThreadId());
    if (generic && !path.empty()) {
      generic->put_value("MiniDump", path);
      generic_access::stack_to_back(*generic);
    }
  }
}
