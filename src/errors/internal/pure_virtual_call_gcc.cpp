// GCC's code calls __cxa_pure_virtual, not the runtime's _purecall, for a
// call of a pure virtual function: the library's own classes get this
// definition, which throws EPurecallException as the runtime's handler does
// (fault_startup.cpp installs that one).
#include <qz/core/throw.h>

#include <cxxabi.h>

namespace __cxxabiv1 {
extern "C" void __cxa_pure_virtual() { _my_purecall_translator(); }
}  // namespace __cxxabiv1
