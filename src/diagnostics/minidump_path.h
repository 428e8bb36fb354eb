// The pieces of a dump file's path (private to the library; its tests use it
// directly). See <qz/diagnostics/minidump.h> for the rules.
//
// Thread safety: pure functions.
#pragma once

#include <windows.h>

#include <cstdio>
#include <string>

namespace minidump_path {

constexpr std::size_t kPathBuffer = 1024;

// `word` without "<", ">" and ":", so that it is valid in a file name.
inline std::string file_name_word(std::string word) {
  std::string kept;
  for (char c : word)
    if (c != '<' && c != '>' && c != ':') kept += c;
  return kept;
}

// A thrown type's readable name without a leading "class ", then without a
// leading "std::".
inline std::string type_word(std::string name) {
  for (const char* prefix : {"class ", "std::"})
    if (name.compare(0, std::char_traits<char>::length(prefix), prefix) == 0)
      name.erase(0, std::char_traits<char>::length(prefix));
  return name;
}

// The exception code in upper-case hex: "C0000005".
inline std::string code_word(unsigned long code) {
  char text[16];
  _snprintf_s(text, sizeof(text), _TRUNCATE, "%lX", code);
  return text;
}

// `pattern` (printf form) filled with the two words and the time; empty for a
// null pattern.
inline std::string compose(const char* pattern, const std::string& module, const std::string& kind,
                           const SYSTEMTIME& time) {
  if (!pattern) return {};
  char path[kPathBuffer];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  _snprintf_s(path, sizeof(path), _TRUNCATE, pattern, module.c_str(), kind.c_str(),
              static_cast<short>(time.wYear), static_cast<short>(time.wMonth),
              static_cast<short>(time.wDay), static_cast<short>(time.wHour),
              static_cast<short>(time.wMinute), static_cast<short>(time.wSecond),
              static_cast<short>(time.wMilliseconds));
#pragma GCC diagnostic pop
  return path;
}

// Everything before the path's last backslash; empty without one.
inline std::string directory_of(const std::string& path) {
  const std::size_t slash = path.rfind('\\');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

}  // namespace minidump_path
