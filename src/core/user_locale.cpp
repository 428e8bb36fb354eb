#include <qz/core/user_locale.h>

#include "core/user_ctype.h"

namespace {

// The environment's locale name cannot be used (the C++ runtime knows only
// "C"), so the user's rules come in through facets of our own. Loading qz.dll
// must not fail over a locale: on any trouble the classic rules stay.
std::locale make_user_default_locale() noexcept {
  try {
    const std::locale narrow(std::locale::classic(), new qz_detail::user_ctype_char);
    return std::locale(narrow, new qz_detail::user_ctype_wchar);
  } catch (...) {
    return std::locale::classic();
  }
}

}  // namespace

const std::locale& user_default_locale() {
  static const std::locale locale = make_user_default_locale();
  return locale;
}

namespace {

// Built while qz.dll loads, before any caller can ask for it from a thread.
[[maybe_unused]] const std::locale& built_at_load = user_default_locale();

}  // namespace
