#include <qz/core/codepage.h>
#include <qz/core/type_name.h>
#include <qz/logging/debug_stream.h>

#include "errors/exception_text.h"

#include <windows.h>

#include <cstring>
#include <typeinfo>

namespace {

std::string narrow(basic_const_string<wchar_t> text) { return as_string(text, CP_ACP); }

}  // namespace

TDebugStreamSession::TDebugStreamSession(TDebugStream& s) : stream(s) { stream.Enter(); }

TDebugStreamSession::TDebugStreamSession(const TDebugStreamSession& other) : stream(other.stream) {
  stream.Enter();
}

TDebugStreamSession::~TDebugStreamSession() noexcept(false) { stream.Leave(); }

TDebugStreamSession& TDebugStreamSession::operator<<(const std::string& text) {
  stream.WriteString(text.data(), text.size());
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(const std::wstring& text) { return *this << narrow(text); }

TDebugStreamSession& TDebugStreamSession::operator<<(const _bstr_t& text) {
  if (text.length() == 0) return *this;
  return *this << narrow(basic_const_string<wchar_t>(static_cast<const wchar_t*>(text), text.length()));
}

TDebugStreamSession& TDebugStreamSession::operator<<(const wchar_t* text) {
  if (!text) return *this << "<null>";
  return *this << narrow(text);
}

// The debugger writer reads up to a zero byte, so a view into the middle of
// a longer text is copied before it goes out.
TDebugStreamSession& TDebugStreamSession::operator<<(basic_const_string<char> text) {
  if (text.empty()) return *this;
  if (text.data()[text.length()] != '\0') return *this << text.str();
  stream.WriteString(text.data(), text.length());
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(basic_const_string<wchar_t> text) {
  return *this << narrow(text);
}

TDebugStreamSession& TDebugStreamSession::operator<<(const char* text) {
  if (!text) text = "<null>";
  stream.WriteString(text, std::strlen(text));
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(char c) {
  const char text[2] = {c, '\0'};
  stream.WriteString(text, 1);
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(unsigned char v) { return *this << static_cast<unsigned int>(v); }

TDebugStreamSession& TDebugStreamSession::operator<<(unsigned short v) { return *this << static_cast<unsigned int>(v); }

TDebugStreamSession& TDebugStreamSession::operator<<(unsigned int v) {
  stream.printf("%u", v);
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(unsigned long v) { return *this << static_cast<unsigned int>(v); }

TDebugStreamSession& TDebugStreamSession::operator<<(int v) {
  stream.printf("%d", v);
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(long long v) {
  stream.printf("%I64d", v);
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(unsigned long long v) {
  stream.printf("%I64u", v);
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(double v) {
  stream.printf("%g", v);
  return *this;
}

TDebugStreamSession& TDebugStreamSession::operator<<(bool v) { return *this << (v ? "true" : "false"); }

TDebugStreamSession& TDebugStreamSession::operator<<(_time_t t) { return *this << t.ctime(); }

TDebugStreamSession& TDebugStreamSession::operator<<(const SmartPtrObj* object) {
  if (!object) return *this << "<NULL>";
  return *this << object->ToString();
}

// The text form is made on a copy of the handle: making it may cache in the
// value, and the caller's value is const.
TDebugStreamSession& TDebugStreamSession::operator<<(const _value_t& value) {
  if (value.empty()) return *this << "<empty>";
  _value_t copy(value);
  stream.printf("%s", copy.as_string().c_str());
  return *this;
}

// A message of several lines (an EGeneric with several values) starts on a
// line of its own, so that its "name: value" lines stay aligned.
TDebugStreamSession& TDebugStreamSession::operator<<(const std::exception& e) {
  const std::string what = exception_text(e);
  std::string text = type_name(typeid(e));
  text += ':';
  if (what.find('\n') != std::string::npos) text += '\n';
  text += what;
  return *this << text;
}
