#include "tour.h"

#include <qz/qz.h>

namespace {

__attribute__((noinline)) int parse_order(int quantity) {
  if (quantity < 0) throw EGeneric(true);  // a stack taken where it is built
  return quantity * 2;
}

// Stands for a smart pointer's helpers: the logger charges a reference to
// whoever called these.
__attribute__((noinline)) void take_reference(const SmartPtrRefsLogger& refs, const void* object) {
  refs.AddPointerRef(object);
  GetTickCount();
}
__attribute__((noinline)) void smart_pointer_copy(const SmartPtrRefsLogger& refs,
                                                   const void* object) {
  take_reference(refs, object);
  GetTickCount();
}
__attribute__((noinline)) void cache_the_order(const SmartPtrRefsLogger& refs, const void* object) {
  smart_pointer_copy(refs, object);
  GetTickCount();
}

}  // namespace

void tour_symbols() {
  if (!SymInitialize()) {  // held across the tour: one load of the symbols
    std::printf("the symbol engine cannot start here\n");
    return;
  }
  section("Symbols of an address");
  void* volatile function = reinterpret_cast<void*>(&parse_order);
  const auto address = reinterpret_cast<unsigned long long>(function) + 4;
  show("SymGetModuleFromAddress", SymGetModuleFromAddress(address));
  show("SymGetNameFromAddress", SymGetNameFromAddress(address));
  show("SymGetSourceFromAddress", SymGetSourceFromAddress(address));
  show("SymGetFullNameFromAddress", SymGetFullNameFromAddress(address));

  section("This thread's stack");
  std::printf("%s\n", GetMyDebugStack().c_str());

  section("The same names from the module's own DWARF (SymbolSources)");
  // The debug-help library cannot read GCC's default DWARF 5, and reads no
  // DWARF at all on Windows; the engine then reads the module's file itself.
  SymbolSources = symbol_sources::own_reader_first;
  show("SymGetFullNameFromAddress", SymGetFullNameFromAddress(address));
  SymbolSources = symbol_sources::debug_help_first;

  section("An exception with its location, from ExtendDebugInformationFromException");
  ExtendDebugInformationFromException = true;
  try {
    parse_order(-1);
  } catch (const EGeneric& e) {
    std::printf("%s\n", e.what());
  }
  ExtendDebugInformationFromException = false;

  section("Who still holds references: SmartPtrRefsLogger");
  SmartPtrRefsLogger refs;
  refs.EnableSmartPtrRefsLogger();
  int orders[3] = {};
  for (volatile int i = 0; i < 3; i = i + 1) cache_the_order(refs, &orders[i]);
  std::printf("%s", refs.GetObjectReferences(nullptr).c_str());
  SymCleanup();
}
