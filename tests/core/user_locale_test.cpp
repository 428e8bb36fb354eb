#include <qz/core/user_locale.h>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

const std::ctype<char>& narrow() { return std::use_facet<std::ctype<char>>(user_default_locale()); }
const std::ctype<wchar_t>& wide() {
  return std::use_facet<std::ctype<wchar_t>>(user_default_locale());
}

}  // namespace


TEST(UserDefaultLocale, NarrowAsciiClassesMatchTheClassicLocale) {
  const auto& classic = std::use_facet<std::ctype<char>>(std::locale::classic());
  const std::ctype_base::mask kMasks[] = {
      std::ctype_base::upper, std::ctype_base::lower, std::ctype_base::alpha,
      std::ctype_base::digit, std::ctype_base::xdigit, std::ctype_base::space,
      std::ctype_base::print, std::ctype_base::cntrl, std::ctype_base::punct};
  for (int c = 0; c < 0x80; ++c)
    for (auto mask : kMasks)
      EXPECT_EQ(narrow().is(mask, static_cast<char>(c)), classic.is(mask, static_cast<char>(c)))
          << "character " << c << " mask " << mask;
}

TEST(UserDefaultLocale, NarrowFacetKnowsAnsiLetters) {
  if (GetACP() != 1252) GTEST_SKIP() << "ANSI code page is " << GetACP();
  EXPECT_TRUE(narrow().is(std::ctype_base::upper | std::ctype_base::alpha, '\xC4'));
  EXPECT_FALSE(narrow().is(std::ctype_base::lower, '\xC4'));
  EXPECT_EQ(narrow().tolower('\xC4'), '\xE4');
  EXPECT_EQ(narrow().toupper('\xE4'), '\xC4');
}

TEST(UserDefaultLocale, WideFacetClassifiesBeyondLatin1) {
  EXPECT_TRUE(wide().is(std::ctype_base::upper, L'\u0416'));
  EXPECT_TRUE(wide().is(std::ctype_base::digit, L'7'));
  EXPECT_FALSE(wide().is(std::ctype_base::alpha, L'7'));
  const std::wstring text = L"  \u0436x 1";
  EXPECT_EQ(wide().scan_not(std::ctype_base::space, text.data(), text.data() + text.size()),
            text.data() + 2);
  EXPECT_EQ(wide().scan_is(std::ctype_base::digit, text.data(), text.data() + text.size()),
            text.data() + 5);
}

TEST(UserDefaultLocale, WideFacetWidensAndNarrowsThroughTheAnsiCodePage) {
  EXPECT_EQ(wide().widen('a'), L'a');
  EXPECT_EQ(wide().narrow(L'a', '?'), 'a');
  EXPECT_EQ(wide().narrow(L'\u4E00', '?'), '?');
  if (GetACP() != 1252) GTEST_SKIP() << "ANSI code page is " << GetACP();
  EXPECT_EQ(wide().widen('\x80'), L'\u20AC');
  EXPECT_EQ(wide().narrow(L'\u20AC', '?'), '\x80');
}
