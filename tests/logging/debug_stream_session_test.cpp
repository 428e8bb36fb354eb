// What each insertion into a session writes, and how long a session holds
// its stream.
#include <qz/errors/exceptions.h>
#include <qz/logging/debug_stream.h>

#include "logging/logging_test_support.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

using logging_test::FreeForOtherThreads;
using logging_test::MemoryWriter;

// What inserting `v` alone writes.
template <class T>
std::string Inserted(const T& v) {
  auto* memory = new MemoryWriter;
  TDebugStream s{SmartPtr<TStreamWriter>(memory)};
  TDebugStreamSession(s) << v;
  return memory->text();
}

// Records whether each text it gets is zero-terminated at its length, which
// the debugger writer relies on.
class TerminationWriter : public TStreamWriter {
 public:
  void StreamWriteString(const char* text, size_t length) override {
    texts.emplace_back(text, length);
    terminated.push_back(text[length] == '\0');
  }
  std::vector<std::string> texts;
  std::vector<bool> terminated;
};

struct Thing : SmartPtrObj {};

// Wide text is written narrow, null text pointers as "<null>", numbers in
// their printf forms (%u, %d, %I64d, %I64u, %g), objects and values in their
// text forms.
TEST(DebugStreamSession, EachKindIsWrittenInItsTextForm) {
  EXPECT_EQ(Inserted(static_cast<const char*>(nullptr)), "<null>");
  EXPECT_EQ(Inserted(static_cast<const wchar_t*>(nullptr)), "<null>");
  EXPECT_EQ(Inserted(std::wstring(L"wide")), "wide");
  EXPECT_EQ(Inserted(const_wstring(L"view")), "view");
  EXPECT_EQ(Inserted(_bstr_t(L"bstr")), "bstr");
  EXPECT_EQ(Inserted(_bstr_t()), "");
  EXPECT_EQ(Inserted(static_cast<unsigned char>(200)), "200");
  EXPECT_EQ(Inserted(4000000000ul), "4000000000");
  EXPECT_EQ(Inserted(-1234567890123LL), "-1234567890123");
  EXPECT_EQ(Inserted(18446744073709551615ULL), "18446744073709551615");
  EXPECT_EQ(Inserted(123456789.0), "1.23457e+008");
  EXPECT_EQ(Inserted(false), "false");
  const _time_t stamp = _time_t::mktime(2021, 10, 31, 11, 30, 0);
  EXPECT_EQ(Inserted(stamp), stamp.ctime());
  SmartPtr<Thing> thing(new Thing);
  EXPECT_EQ(Inserted(thing), thing->ToString());  // through the pointer
  EXPECT_EQ(Inserted(static_cast<const SmartPtrObj*>(nullptr)), "<NULL>");
  EXPECT_EQ(Inserted(_value_t()), "<empty>");
  EXPECT_EQ(Inserted(_value_t(std::vector<int>{1, 2})), "{1,2}");
}

// An exception shows its dynamic type; a message of several lines starts on
// a line of its own.
TEST(DebugStreamSession, ExceptionsShowTheirTypeAndMultiLineMessagesStartOnTheirOwnLine) {
  const EGeneric single(EGeneric::value_pair("Text", _value_t("boom")));
  const std::exception& as_base = single;
  EXPECT_EQ(Inserted(as_base), "EGeneric:boom");
  const ESystemException system(5);
  const std::string what = system.what();
  ASSERT_NE(what.find('\n'), std::string::npos);
  EXPECT_EQ(Inserted(system), "ESystemException:\n" + what);
  EXPECT_EQ(Inserted(std::runtime_error("plain")), "std::runtime_error:plain");
}

// One writer call per piece, in order, zero-terminated (a view into a longer
// text is copied), no line end added.
TEST(DebugStreamSession, PiecesGoOutInOrderEachZeroTerminated) {
  auto* writer = new TerminationWriter;
  TDebugStream s{SmartPtr<TStreamWriter>(writer)};
  const char letters[] = "abcdef";
  TDebugStreamSession(s) << const_string(letters, 3) << 'x' << 7 << std::string("s") << L"w" << true;
  TDebugStreamSession(s) << '\n';
  EXPECT_EQ(writer->texts, (std::vector<std::string>{"abc", "x", "7", "s", "w", "true", "\n"}));
  EXPECT_EQ(writer->terminated, std::vector<bool>(7, true));
}

TEST(DebugStreamSession, HoldsTheStreamFromCreationToEnd) {
  TDebugStream s(new MemoryWriter);
  EXPECT_TRUE(FreeForOtherThreads(s));
  {
    TDebugStreamSession session(s);
    session << "a";
    {
      TDebugStreamSession copy(session);
      TDebugStreamSession nested(s);
    }
    EXPECT_FALSE(FreeForOtherThreads(s));  // the copies' holds were extra ones
  }
  EXPECT_TRUE(FreeForOtherThreads(s));
}

}  // namespace
