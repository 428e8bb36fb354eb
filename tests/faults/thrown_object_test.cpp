#include <qz/errors/exceptions.h>

#include "diagnostics/internal/gcc_thrown_object_mingw.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace {

// What a vectored handler saw of the last throw on the watching thread.
struct seen_throw {
  DWORD watching_thread = 0;
  const std::type_info* type = nullptr;
  int as_int = 0;
  std::string exception_text = "<none>";
  std::string generic_text = "<none>";
  bool foreign_record_ignored = false;
};
seen_throw seen;

LONG CALLBACK look_at_throw(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD* record = pointers->ExceptionRecord;
  if (GetCurrentThreadId() != seen.watching_thread || record->ExceptionCode != qz_gcc::kThrowCode)
    return EXCEPTION_CONTINUE_SEARCH;
  seen.type = thrown_type(record);
  if (seen.type == &typeid(int)) seen.as_int = *static_cast<int*>(thrown_object(record));
  if (auto* e = static_cast<std::exception*>(thrown_object_as(record, typeid(std::exception))))
    seen.exception_text = e->what();
  if (auto* e = static_cast<EGeneric*>(thrown_object_as(record, typeid(EGeneric))))
    seen.generic_text = std::string(e->get_value("Text"));
  EXCEPTION_RECORD other = *record;
  other.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
  seen.foreign_record_ignored = !thrown_type(&other) && !thrown_object(&other) && !thrown_type(nullptr);
  return EXCEPTION_CONTINUE_SEARCH;
}

template <typename Throw>
seen_throw watch(Throw throw_it) {
  seen = seen_throw();
  seen.watching_thread = GetCurrentThreadId();
  void* handler = AddVectoredExceptionHandler(1, &look_at_throw);
  try {
    throw_it();
  } catch (...) {
  }
  RemoveVectoredExceptionHandler(handler);
  return seen;
}

TEST(ThrownObject, TypeAndObjectOfAGccThrowAsItselfOrAsABase) {
  seen_throw number = watch([] { throw 42; });
  EXPECT_EQ(number.type, &typeid(int));
  EXPECT_EQ(number.as_int, 42);
  EXPECT_EQ(number.exception_text, "<none>");
  EXPECT_TRUE(number.foreign_record_ignored);

  seen_throw standard = watch([] { throw std::runtime_error("disk full"); });
  EXPECT_EQ(standard.type, &typeid(std::runtime_error));
  EXPECT_EQ(standard.exception_text + standard.generic_text, "disk full<none>");

  // A rethrown exception pointer shows the primary object.
  std::exception_ptr held;
  try {
    throw EGeneric({"Text", "kept"});
  } catch (...) {
    held = std::current_exception();
  }
  seen_throw again = watch([&] { std::rethrow_exception(held); });
  EXPECT_EQ(again.type, &typeid(EGeneric));
  EXPECT_EQ(again.generic_text, "kept");
}

}  // namespace
