#include <qz/errors/exceptions.h>

#include <string.h>

namespace {

// Puts the runtime's own text for `code` when it has one.
void put_runtime_text(EGeneric& e, int code) {
  wchar_t text[1024];
  if (_wcserror_s(text, 1024, code) == 0) e.put_value("Text", std::wstring(text));
}

}  // namespace

ERuntimeException::ERuntimeException(int code) : EGeneric({"Code", code}) { put_runtime_text(*this, code); }

ERuntimeException::ERuntimeException(int code, const value_pair& a) : EGeneric({"Code", code}, a) {
  put_runtime_text(*this, code);
}

ERuntimeException::ERuntimeException(int code, const value_pair& a, const value_pair& b)
    : EGeneric({"Code", code}, a, b) {
  put_runtime_text(*this, code);
}
