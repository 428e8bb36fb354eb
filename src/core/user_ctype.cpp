#include "core/user_ctype.h"

#include <windows.h>

namespace qz_detail {
namespace {

using mask = std::ctype_base::mask;

// The system's CT_CTYPE1 classes as the C++ masks. The C++ runtime has a
// bit of its own for "printable", which the system does not report: a
// character is printable when it is visible or a blank and not a control.
mask mask_of(WORD type) {
  mask result = 0;
  if (type & C1_UPPER) result |= std::ctype_base::upper;
  if (type & C1_LOWER) result |= std::ctype_base::lower;
  if (type & C1_ALPHA) result |= std::ctype_base::alpha;
  if (type & C1_DIGIT) result |= std::ctype_base::digit;
  if (type & C1_XDIGIT) result |= std::ctype_base::xdigit;
  if (type & C1_SPACE) result |= std::ctype_base::space;
  if (type & C1_PUNCT) result |= std::ctype_base::punct;
  if (type & C1_CNTRL) result |= std::ctype_base::cntrl;
  if (type & C1_BLANK) result |= std::ctype_base::blank;
  const WORD visible = C1_UPPER | C1_LOWER | C1_ALPHA | C1_DIGIT | C1_PUNCT | C1_BLANK;
  if ((type & visible) && !(type & C1_CNTRL)) result |= std::ctype_base::print;
  return result;
}

mask classify_wide(wchar_t c) {
  WORD type = 0;
  if (!GetStringTypeW(CT_CTYPE1, &c, 1, &type)) return 0;
  return mask_of(type);
}

// One character through LCMapStringW; characters without a simple one-to-one
// mapping stay as they are.
wchar_t fold_wide(wchar_t c, DWORD how) {
  wchar_t result = c;
  if (LCMapStringW(LOCALE_USER_DEFAULT, how, &c, 1, &result, 1) != 1) return c;
  return result;
}

// A byte of the ANSI code page as UTF-16; lead bytes of a double-byte code
// page and unassigned bytes have none.
bool widen_ansi(char c, wchar_t& wide) {
  return MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, &c, 1, &wide, 1) == 1;
}

// A UTF-16 character as one byte of the ANSI code page, without best-fit
// substitutes.
bool narrow_ansi(wchar_t wide, char& c) {
  if (wide < 0x80) {
    c = static_cast<char>(wide);
    return true;
  }
  BOOL substituted = FALSE;
  const int count = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, &wide, 1, &c, 1, nullptr,
                                        &substituted);
  return count == 1 && !substituted;
}

char fold_ansi(char c, DWORD how) {
  wchar_t wide = 0;
  char folded = c;
  if (!widen_ansi(c, wide) || !narrow_ansi(fold_wide(wide, how), folded)) return c;
  return folded;
}

}  // namespace

user_ctype_char_tables::user_ctype_char_tables() {
  for (int i = 0; i < 256; ++i) {
    const char c = static_cast<char>(i);
    wchar_t wide = 0;
    masks_[i] = widen_ansi(c, wide) ? classify_wide(wide) : 0;
    lower_[i] = fold_ansi(c, LCMAP_LOWERCASE);
    upper_[i] = fold_ansi(c, LCMAP_UPPERCASE);
  }
}

user_ctype_char::user_ctype_char() : std::ctype<char>(masks_, false, 0) {}

char user_ctype_char::do_tolower(char c) const { return lower_[static_cast<unsigned char>(c)]; }

const char* user_ctype_char::do_tolower(char* lo, const char* hi) const {
  for (; lo < hi; ++lo) *lo = do_tolower(*lo);
  return hi;
}

char user_ctype_char::do_toupper(char c) const { return upper_[static_cast<unsigned char>(c)]; }

const char* user_ctype_char::do_toupper(char* lo, const char* hi) const {
  for (; lo < hi; ++lo) *lo = do_toupper(*lo);
  return hi;
}

user_ctype_wchar::user_ctype_wchar() : std::ctype<wchar_t>(std::size_t{0}) {
  for (int i = 0; i < 256; ++i) {
    const wchar_t c = static_cast<wchar_t>(i);
    masks_[i] = classify_wide(c);
    lower_[i] = fold_wide(c, LCMAP_LOWERCASE);
    upper_[i] = fold_wide(c, LCMAP_UPPERCASE);
    wchar_t wide = 0;
    widen_[i] = widen_ansi(static_cast<char>(i), wide) ? wide : static_cast<wchar_t>(WEOF);
  }
}

user_ctype_wchar::mask user_ctype_wchar::classify(wchar_t c) const {
  return c < 256 ? masks_[c] : classify_wide(c);
}

wchar_t user_ctype_wchar::lower(wchar_t c) const {
  return c < 256 ? lower_[c] : fold_wide(c, LCMAP_LOWERCASE);
}

wchar_t user_ctype_wchar::upper(wchar_t c) const {
  return c < 256 ? upper_[c] : fold_wide(c, LCMAP_UPPERCASE);
}

bool user_ctype_wchar::do_is(mask m, wchar_t c) const { return (classify(c) & m) != 0; }

const wchar_t* user_ctype_wchar::do_is(const wchar_t* lo, const wchar_t* hi, mask* masks) const {
  for (; lo < hi; ++lo, ++masks) *masks = classify(*lo);
  return hi;
}

const wchar_t* user_ctype_wchar::do_scan_is(mask m, const wchar_t* lo, const wchar_t* hi) const {
  while (lo < hi && !do_is(m, *lo)) ++lo;
  return lo;
}

const wchar_t* user_ctype_wchar::do_scan_not(mask m, const wchar_t* lo, const wchar_t* hi) const {
  while (lo < hi && do_is(m, *lo)) ++lo;
  return lo;
}

wchar_t user_ctype_wchar::do_tolower(wchar_t c) const { return lower(c); }

const wchar_t* user_ctype_wchar::do_tolower(wchar_t* lo, const wchar_t* hi) const {
  for (; lo < hi; ++lo) *lo = lower(*lo);
  return hi;
}

wchar_t user_ctype_wchar::do_toupper(wchar_t c) const { return upper(c); }

const wchar_t* user_ctype_wchar::do_toupper(wchar_t* lo, const wchar_t* hi) const {
  for (; lo < hi; ++lo) *lo = upper(*lo);
  return hi;
}

wchar_t user_ctype_wchar::do_widen(char c) const { return widen_[static_cast<unsigned char>(c)]; }

const char* user_ctype_wchar::do_widen(const char* lo, const char* hi, wchar_t* to) const {
  for (; lo < hi; ++lo, ++to) *to = do_widen(*lo);
  return hi;
}

char user_ctype_wchar::do_narrow(wchar_t c, char dfault) const {
  char result = dfault;
  return narrow_ansi(c, result) ? result : dfault;
}

const wchar_t* user_ctype_wchar::do_narrow(const wchar_t* lo, const wchar_t* hi, char dfault,
                                           char* to) const {
  for (; lo < hi; ++lo, ++to) *to = do_narrow(*lo, dfault);
  return hi;
}

}  // namespace qz_detail
