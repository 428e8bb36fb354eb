// The text forms of the symbol engine, apart from the debug-help library that
// supplies their pieces (private to the library; its tests use it directly).
//
//   name      "<symbol>" or, without a symbol, "0x<low 32 bits of the address>"
//             in lower-case hex; then "+<displacement>" in lower-case hex when
//             the displacement is not 0. Each piece holds at most 1023
//             characters.
//   source    "<file base name><extension>#<line>": no drive, no directory;
//             at most 259 characters.
//   full name the name alone without a source; with one, "<name>[<source>]",
//             where a name longer than 80 characters keeps its first 40 and
//             last 40 characters around "..".
//
// Thread safety: pure functions.
#pragma once

#include <cstdio>
#include <string>

namespace symbol_text {

constexpr std::size_t kNamePieceBuffer = 1024;
constexpr std::size_t kSourceBuffer = 260;
constexpr std::size_t kLongestFullName = 80;
constexpr std::size_t kShortenedHalf = 40;

// `symbol` is null when the address has no symbol.
inline std::string name(const char* symbol, unsigned long long address,
                        unsigned long long displacement) {
  char piece[kNamePieceBuffer];
  if (symbol)
    _snprintf_s(piece, sizeof(piece), _TRUNCATE, "%s", symbol);
  else
    _snprintf_s(piece, sizeof(piece), _TRUNCATE, "0x%x", static_cast<unsigned int>(address));
  std::string text = piece;
  if (displacement != 0) {
    _snprintf_s(piece, sizeof(piece), _TRUNCATE, "+%I64x", displacement);
    text += piece;
  }
  return text;
}

// `path` as the library reports it: full, with "\" or "/" separators.
inline std::string source(const std::string& path, int line) {
  const std::size_t slash = path.find_last_of("\\/:");
  const std::string file = slash == std::string::npos ? path : path.substr(slash + 1);
  char text[kSourceBuffer];
  _snprintf_s(text, sizeof(text), _TRUNCATE, "%s#%d", file.c_str(), line);
  return text;
}

inline std::string full_name(const std::string& name, const std::string& source) {
  if (source.empty()) return name;
  if (name.size() <= kLongestFullName) return name + "[" + source + "]";
  return name.substr(0, kShortenedHalf) + ".." + name.substr(name.size() - kShortenedHalf) + "[" +
         source + "]";
}

}  // namespace symbol_text
