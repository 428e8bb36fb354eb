// The eleven element kinds a _value_t can hold.
//
// QZ_VALUE_KINDS(X) expands X(T) once per kind, in the order in which the
// storage interface declares its typed operations. It keeps the eleven
// overloads of each typed operation in one place.
#pragma once

#include <qz/core/com_types.h>
#include <qz/core/smart_ptr.h>
#include <qz/time/time.h>

#include <string>

#define QZ_VALUE_KINDS(X)                                                     \
  X(_time_t) X(SmartPtr<SmartPtrObj const>) X(SmartPtr<SmartPtrObj>) X(_bstr_t) \
  X(std::wstring) X(std::string) X(double) X(bool) X(__int64) X(unsigned long) X(int)
