// What a test reads off the library's exceptions.
#pragma once

#include <qz/errors/exceptions.h>

namespace qz_test {

// The "Code" an ESystemException carries.
inline int CodeOf(const ESystemException& e) { return static_cast<int>(e.get_value("Code")); }

}  // namespace qz_test
