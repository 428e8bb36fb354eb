#include <qz/errors/exceptions.h>
#include <qz/value/property_list.h>

#include <gtest/gtest.h>

#include "support/test_threads.h"

#include <atomic>
#include <string>
#include <vector>

namespace {

std::vector<std::wstring> Texts(const std::vector<_bstr_t>& values) {
  std::vector<std::wstring> texts;
  for (const _bstr_t& v : values) texts.emplace_back(static_cast<const wchar_t*>(v));
  return texts;
}

// Names are compared without case; an unknown name reads as an empty value,
// and a null name is the empty name.
TEST(TPropertyList, NamesDifferingOnlyInCaseAreOneProperty) {
  TPropertyList list;
  list.PutProperty(L"Name", _value_t("first"));
  list.PutProperty(L"nAmE", _value_t("second"));
  EXPECT_TRUE(list.Have(L"NAME"));
  EXPECT_EQ(list.GetProperty(L"name").as_string(), "second");
  list.Delete(L"other");
  EXPECT_TRUE(list.GetProperty(L"missing").empty());
  EXPECT_EQ(list.GetCount(), 1);  // neither deleting nor asking changed the list
  list.Delete(L"NAME");
  EXPECT_EQ(list.GetCount(), 0);
  list.PutProperty(_bstr_t(), _value_t("nothing"));
  EXPECT_TRUE(list.Have(L""));
  EXPECT_EQ(list.GetProperty(_bstr_t()).as_string(), "nothing");
}

// The values as text in case-insensitive name order, replacing what was
// there; a value without text stops it, keeping those before, and lets the
// read go on the way out.
TEST(TPropertyList, GetPropertiesYieldsTheValuesAsTextInNameOrder) {
  TPropertyList list;
  list.PutProperty(L"beta", _value_t(L"two"));
  list.PutProperty(L"Alpha", _value_t("one"));
  list.PutProperty(L"GAMMA", _value_t(_bstr_t(L"three")));
  std::vector<_bstr_t> out = {L"left over"};
  list.GetProperties(out);
  EXPECT_EQ(Texts(out), (std::vector<std::wstring>{L"one", L"two", L"three"}));
  list.PutProperty(L"b", _value_t(5));  // between Alpha and beta
  EXPECT_THROW(list.GetProperties(out), EBadCastException);
  EXPECT_EQ(Texts(out), std::vector<std::wstring>{L"one"});
  qz_test::WorkerThread writer([&] { list.PutProperty(L"d", _value_t("w")); });
  ASSERT_TRUE(writer.Join(10000));
  EXPECT_EQ(list.GetCount(), 5);
}

// Put and get share the storage, but assigning to the result leaves the list
// alone; assigning a list replaces the entries with copies.
TEST(TPropertyList, EntriesShareTheirValuesAndListAssignmentCopiesThem) {
  TPropertyList list, copy;
  const _value_t value("stored");
  list.PutProperty(L"k", value);
  _value_t got = list.GetProperty(L"K");
  EXPECT_EQ(got.data(), value.data());
  got = "changed";
  EXPECT_EQ(list.GetProperty(L"k").as_string(), "stored");
  copy.PutProperty(L"old", _value_t("gone"));
  copy = list;
  list.PutProperty(L"b", _value_t("2"));
  EXPECT_EQ(copy.GetCount(), 1);
  EXPECT_EQ(copy.GetProperty(L"k").as_string(), "stored");
}

// Writers and readers on several threads through the interface: every
// write lands, and readers never see a half-made entry.
TEST(TPropertyList, ThreadsShareOneListThroughTheInterface) {
  TPropertyList list;
  IPropertyList& shared = list;
  std::atomic<int> bad_reads{0};
  const auto work = [&](int index) {
    for (int i = 0; i < 200; ++i) {
      const std::wstring name = L"t" + std::to_wstring(index) + L"-" + std::to_wstring(i);
      shared.PutProperty(name.c_str(), _value_t(name));
      if (!shared.Have(name.c_str()) || shared.GetProperty(name.c_str()).as_wstring() != name) ++bad_reads;
      std::vector<_bstr_t> all;
      shared.GetProperties(all);
      if (i % 2) shared.Delete(name.c_str());
    }
  };
  {
    qz_test::WorkerThread threads[] = {qz_test::WorkerThread([&] { work(0); }), qz_test::WorkerThread([&] { work(1); }),
                                       qz_test::WorkerThread([&] { work(2); }), qz_test::WorkerThread([&] { work(3); })};
    for (auto& t : threads) ASSERT_TRUE(t.Join(60000));
  }
  EXPECT_EQ(bad_reads.load(), 0);
  EXPECT_EQ(shared.GetCount(), 4 * 100);
}

}  // namespace
