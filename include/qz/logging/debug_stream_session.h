// TDebugStreamSession: one log statement on a TDebugStream.
//
//   TDebugStreamSession(Debug) << "loaded " << count << " items from " << path << '\n';
//
// The session locks the stream's mutex when it is made and releases it when
// it ends, normally at the end of the statement, so the pieces of one
// statement reach the writers together. It adds nothing of its own: no line
// end, no prefix. A copy holds the mutex once more.
//
// What each piece writes: text as it is (wide text converted to the ANSI code
// page; a null pointer as "<null>", an empty _bstr_t as nothing); char as
// that character; unsigned numbers "%u", int "%d", long long "%I64d",
// unsigned long long "%I64u", double "%g"; bool as "true"/"false"; _time_t
// as its ctime text; an object pointer as its ToString() ("<NULL>" for none);
// a _value_t as its text form ("<empty>" when empty); an exception as its
// type name, ":", then its what() text, which starts on a line of its own
// when it has several lines.
//
// Thread safety: a session belongs to the thread that made it (the mutex is
// owned by that thread) and lives for one statement; never keep one.
#pragma once

#include <qz/core/com_types.h>
#include <qz/core/const_string.h>
#include <qz/core/smart_ptr.h>
#include <qz/export.h>
#include <qz/time/time.h>
#include <qz/value/value.h>

#include <exception>
#include <string>

class TDebugStream;

class QZ_API TDebugStreamSession {
 public:
  explicit TDebugStreamSession(TDebugStream& s);
  TDebugStreamSession(const TDebugStreamSession& other);
  TDebugStreamSession& operator=(const TDebugStreamSession&) = delete;
  ~TDebugStreamSession() noexcept(false);

  TDebugStreamSession& operator<<(const std::string& text);
  TDebugStreamSession& operator<<(const std::wstring& text);
  TDebugStreamSession& operator<<(const _bstr_t& text);
  TDebugStreamSession& operator<<(const wchar_t* text);
  TDebugStreamSession& operator<<(basic_const_string<char> text);
  TDebugStreamSession& operator<<(basic_const_string<wchar_t> text);
  TDebugStreamSession& operator<<(const char* text);
  TDebugStreamSession& operator<<(char c);
  TDebugStreamSession& operator<<(unsigned char v);
  TDebugStreamSession& operator<<(unsigned short v);
  TDebugStreamSession& operator<<(unsigned int v);
  TDebugStreamSession& operator<<(unsigned long v);
  TDebugStreamSession& operator<<(int v);
  TDebugStreamSession& operator<<(long long v);
  TDebugStreamSession& operator<<(unsigned long long v);
  TDebugStreamSession& operator<<(double v);
  TDebugStreamSession& operator<<(bool v);
  TDebugStreamSession& operator<<(_time_t t);
  TDebugStreamSession& operator<<(const SmartPtrObj* object);
  TDebugStreamSession& operator<<(const _value_t& value);
  TDebugStreamSession& operator<<(const std::exception& e);

 private:
  TDebugStream& stream;
};
