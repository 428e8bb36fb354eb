// Placeholder definitions until the symbol engine and the dump writer land.
#include <qz/errors/generic.h>
#include <qz/errors/symbols.h>

EGeneric::EGeneric(bool) {}
void EGeneric::ExtendDebugInformation(_CONTEXT*) {}
void EGeneric::ExtendDebugInformation(_EXCEPTION_POINTERS*) {}
std::string EGeneric::BuildStack(_EXCEPTION_POINTERS*, unsigned int, void*) { return {}; }
std::string EGeneric::SaveMiniDump(_EXCEPTION_POINTERS*, unsigned long, unsigned long) {
  return {};
}
bool SymInitialize() { return false; }
void SymCleanup() {}
