#include <qz/core/char_class.h>

#include <qz/core/user_locale.h>

#include <locale>

namespace {

bool all_of_class(const std::string& text, std::ctype_base::mask mask) {
  if (text.empty()) return false;
  const auto& ctype = std::use_facet<std::ctype<char>>(user_default_locale());
  for (char c : text)
    if (!ctype.is(mask, c)) return false;
  return true;
}

}  // namespace

bool isalnum(const std::string& text) { return all_of_class(text, std::ctype_base::alnum); }
bool isalpha(const std::string& text) { return all_of_class(text, std::ctype_base::alpha); }
bool isdigit(const std::string& text) { return all_of_class(text, std::ctype_base::digit); }
bool isxdigit(const std::string& text) { return all_of_class(text, std::ctype_base::xdigit); }
