// ctype facets that follow the user's Windows locale (see user_locale.h).
//
// The C++ runtime here knows only the classic locale by name, so the facets
// ask the system instead: GetStringTypeW for the classes and LCMapStringW with
// LOCALE_USER_DEFAULT for the case, narrow characters going through the ANSI
// code page. Both facets are immutable after construction.
#pragma once

#include <locale>

namespace qz_detail {

// The tables of user_ctype_char, built before std::ctype<char> is handed the
// classification table.
class user_ctype_char_tables {
 protected:
  user_ctype_char_tables();

  std::ctype_base::mask masks_[256];
  char lower_[256];
  char upper_[256];
};

class user_ctype_char : private user_ctype_char_tables, public std::ctype<char> {
 public:
  user_ctype_char();

 protected:
  char do_tolower(char c) const override;
  const char* do_tolower(char* lo, const char* hi) const override;
  char do_toupper(char c) const override;
  const char* do_toupper(char* lo, const char* hi) const override;
};

class user_ctype_wchar : public std::ctype<wchar_t> {
 public:
  user_ctype_wchar();

 protected:
  bool do_is(mask m, wchar_t c) const override;
  const wchar_t* do_is(const wchar_t* lo, const wchar_t* hi, mask* masks) const override;
  const wchar_t* do_scan_is(mask m, const wchar_t* lo, const wchar_t* hi) const override;
  const wchar_t* do_scan_not(mask m, const wchar_t* lo, const wchar_t* hi) const override;
  wchar_t do_tolower(wchar_t c) const override;
  const wchar_t* do_tolower(wchar_t* lo, const wchar_t* hi) const override;
  wchar_t do_toupper(wchar_t c) const override;
  const wchar_t* do_toupper(wchar_t* lo, const wchar_t* hi) const override;
  wchar_t do_widen(char c) const override;
  const char* do_widen(const char* lo, const char* hi, wchar_t* to) const override;
  char do_narrow(wchar_t c, char dfault) const override;
  const wchar_t* do_narrow(const wchar_t* lo, const wchar_t* hi, char dfault,
                           char* to) const override;

 private:
  mask classify(wchar_t c) const;
  wchar_t lower(wchar_t c) const;
  wchar_t upper(wchar_t c) const;

  // The first 256 code points are looked up so often (Latin-1 text, ASCII
  // digits in number formatting) that they are kept in tables.
  mask masks_[256];
  wchar_t lower_[256];
  wchar_t upper_[256];
  wchar_t widen_[256];
};

}  // namespace qz_detail
