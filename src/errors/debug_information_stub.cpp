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
bool EnsureModuleSymbolsLoaded(unsigned long long) { return false; }
unsigned int StackWalk(unsigned long long*, _CONTEXT*, void*, unsigned int, unsigned int) {
  return 0;
}
std::string SymGetNameFromAddress(unsigned long long) { return {}; }
std::string SymGetSourceFromAddress(unsigned long long) { return {}; }
std::string SymGetFullNameFromAddress(unsigned long long) { return {}; }
std::string SymGetModuleFromAddress(unsigned long long) { return {}; }
unsigned long long SymGetActualErrorAddress(const unsigned long long* frames, unsigned int count) {
  return count ? frames[0] : 0;
}
std::string SymGetStackTrace(const unsigned long long*, unsigned int) { return {}; }
std::string GetMyDebugStack() { return {}; }
std::string TakeDebugSnapshot() { return {}; }
