// Readable names of run-time types, as the library prints them in messages.
#pragma once

#include <qz/export.h>

#include <string>
#include <typeinfo>

// The demangled name of `type` ("int", "double", "void", "EGeneric"), with
// the standard string types shortened to "std::string" and "std::wstring".
QZ_API std::string type_name(const std::type_info& type);
