// Itanium C++ names turned readable with the runtime's own demangler.
//
// Thread safety: any thread.
#pragma once

#include <string>

namespace debug_info {

// "ns::f(int)" for "_ZN2ns1fEi"; a name that is not mangled (C functions)
// or that the demangler refuses comes back unchanged.
std::string demangle(const char* name);

}  // namespace debug_info
