#include <qz/errors/exceptions.h>
#include <qz/value/property_list.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <string>
#include <vector>

namespace {

std::vector<std::wstring> Texts(const std::vector<_bstr_t>& values) {
  std::vector<std::wstring> texts;
  for (const _bstr_t& v : values) texts.emplace_back(static_cast<const wchar_t*>(v));
  return texts;
}

TEST(TPropertyList, NamesDifferingOnlyInCaseAreOneProperty) {
  TPropertyList list;
  list.PutProperty(L"Name", _value_t("first"));
  EXPECT_TRUE(list.Have(L"NAME"));
  EXPECT_EQ(list.GetCount(), 1);
  list.PutProperty(L"nAmE", _value_t("second"));
  EXPECT_EQ(list.GetCount(), 1);
  EXPECT_EQ(list.GetProperty(L"name").as_string(), "second");
  list.Delete(L"NAME");
  EXPECT_FALSE(list.Have(L"Name"));
  EXPECT_EQ(list.GetCount(), 0);
}

TEST(TPropertyList, UnknownNameGivesAnEmptyValueAndDeletesNothing) {
  TPropertyList list;
  list.PutProperty(L"a", _value_t(1));
  list.Delete(L"b");
  EXPECT_TRUE(list.GetProperty(L"missing").empty());
  EXPECT_FALSE(list.Have(L"missing"));
  EXPECT_EQ(list.GetCount(), 1);  // asking did not add it
  list.PutProperty(_bstr_t(), _value_t("nothing"));  // a null name is the empty name
  EXPECT_TRUE(list.Have(L""));
  EXPECT_EQ(list.GetProperty(_bstr_t()).as_string(), "nothing");
}

TEST(TPropertyList, GetPropertiesYieldsTheValuesAsTextInCaseInsensitiveNameOrder) {
  TPropertyList list;
  list.PutProperty(L"beta", _value_t(L"two"));
  list.PutProperty(L"Alpha", _value_t("one"));
  list.PutProperty(L"GAMMA", _value_t(_bstr_t(L"three")));
  std::vector<_bstr_t> out = {L"left over"};
  list.GetProperties(out);
  EXPECT_EQ(Texts(out), (std::vector<std::wstring>{L"one", L"two", L"three"}));
}

TEST(TPropertyList, GetPropertiesStopsAtAValueWithoutTextKeepingThoseBefore) {
  TPropertyList list;
  list.PutProperty(L"a", _value_t("x"));
  list.PutProperty(L"b", _value_t(5));
  list.PutProperty(L"c", _value_t("z"));
  std::vector<_bstr_t> out;
  EXPECT_THROW(list.GetProperties(out), EBadCastException);
  EXPECT_EQ(Texts(out), std::vector<std::wstring>{L"x"});
  // The read was let go on the way out: a writer on another thread gets in.
  struct Writer {
    static DWORD WINAPI Run(void* p) {
      static_cast<TPropertyList*>(p)->PutProperty(L"d", _value_t("w"));
      return 0;
    }
  };
  HANDLE writer = CreateThread(nullptr, 0, &Writer::Run, &list, 0, nullptr);
  EXPECT_EQ(WaitForSingleObject(writer, 10000), WAIT_OBJECT_0);
  CloseHandle(writer);
  EXPECT_EQ(list.GetCount(), 4);
}

TEST(TPropertyList, PutAndGetShareTheStorageButAssigningToTheResultLeavesTheListAlone) {
  TPropertyList list;
  list.PutProperty(L"k", _value_t("stored"));
  _value_t got = list.GetProperty(L"k");
  EXPECT_EQ(got.data(), list.GetProperty(L"K").data());
  got = "changed";
  EXPECT_EQ(list.GetProperty(L"k").as_string(), "stored");
  const _value_t value(std::vector<int>{1, 2});
  list.PutProperty(L"v", value);  // put shares the given value too
  EXPECT_EQ(list.GetProperty(L"v").data(), value.data());
}

TEST(TPropertyList, AssignmentCopiesTheEntries) {
  TPropertyList source, copy;
  source.PutProperty(L"a", _value_t("1"));
  copy.PutProperty(L"old", _value_t("gone"));
  copy = source;
  source.PutProperty(L"b", _value_t("2"));
  EXPECT_EQ(copy.GetCount(), 1);
  EXPECT_FALSE(copy.Have(L"old"));
  EXPECT_EQ(copy.GetProperty(L"A").as_string(), "1");
}

// Writers and readers on several threads through the interface: every
// write lands, and readers never see a half-made entry.
TEST(TPropertyList, ThreadsShareOneListThroughTheInterface) {
  TPropertyList list;
  IPropertyList& shared = list;
  std::atomic<int> bad_reads{0};
  struct Work {
    IPropertyList* list;
    int index;
    std::atomic<int>* bad;
  };
  auto body = [](void* p) -> DWORD {
    auto* w = static_cast<Work*>(p);
    for (int i = 0; i < 200; ++i) {
      const std::wstring name = L"t" + std::to_wstring(w->index) + L"-" + std::to_wstring(i);
      w->list->PutProperty(name.c_str(), _value_t(name));
      if (!w->list->Have(name.c_str()) || w->list->GetProperty(name.c_str()).as_wstring() != name) ++*w->bad;
      std::vector<_bstr_t> all;
      w->list->GetProperties(all);
      if (i % 2) w->list->Delete(name.c_str());
    }
    return 0;
  };
  Work work[4];
  HANDLE threads[4];
  for (int i = 0; i < 4; ++i) {
    work[i] = {&shared, i, &bad_reads};
    threads[i] = CreateThread(nullptr, 0, body, &work[i], 0, nullptr);
  }
  ASSERT_EQ(WaitForMultipleObjects(4, threads, TRUE, 60000), WAIT_OBJECT_0);
  for (HANDLE t : threads) CloseHandle(t);
  EXPECT_EQ(bad_reads.load(), 0);
  EXPECT_EQ(shared.GetCount(), 4 * 100);
}

}  // namespace
