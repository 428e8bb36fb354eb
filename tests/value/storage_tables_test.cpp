// Every (stored, requested) read and every (stored, assigned) write, for
// every storage form, against the conversion tables written out by hand; every
// refusal names the two kinds.
#include <qz/core/type_name.h>
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include "value/value_test_support.h"

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using value_test::bad_cast_of;
using ObjectPtr = SmartPtr<SmartPtrObj>;
using ConstObjectPtr = SmartPtr<SmartPtrObj const>;
using Kinds = std::tuple<int, unsigned long, __int64, bool, double, std::string, std::wstring,
                         _bstr_t, ObjectPtr, ConstObjectPtr, _time_t>;
constexpr size_t kKinds = std::tuple_size_v<Kinds>;
using AllKinds = std::make_index_sequence<kKinds>;
template <size_t I>
using Kind = std::tuple_element_t<I, Kinds>;

// Row: stored kind; column: requested kind, both in the order of Kinds.
const char* const kReadTable[kKinds] = {
    "YYY.Y......",  // int: int, unsigned long, __int64, double
    "YYY........",  // unsigned long: unsigned long, int, __int64
    "..Y........",  // __int64
    "YY.Y.......",  // bool: int, unsigned long, bool
    "....Y......",  // double
    ".....YYY...", ".....YYY...", ".....YYY...",  // the text kinds read each other
    "........YY.",  // object: itself and const object
    ".........Y.",  // const object
    "..........Y",  // _time_t
};

// Row: stored kind; column: assigned kind.
const char* const kPutTable[kKinds] = {
    "YY.Y.......",  // int: int, unsigned long, bool
    "YY.Y.......",  // unsigned long: unsigned long, int, bool
    "YYY........",  // __int64: int, unsigned long, __int64
    "...Y.......",  // bool
    "Y...Y......",  // double: int, double
    ".....YYY...", ".....YYY...", ".....YYY...",  // the text kinds take each other
    "........Y..",  // object
    "........YY.",  // const object: object, const object
    "..........Y",  // _time_t
};

const ObjectPtr kObject(new SmartPtrObj);
const Kinds kSamples{-5, 0xFFFFFFFFUL, -9000000000LL, true, 2.5, "text", L"wide", _bstr_t(L"bstr"),
                     kObject, kObject, _time_t(static_cast<__int64>(86400))};
template <size_t I>
const Kind<I>& sample() { return std::get<I>(kSamples); }

enum Form { owned, view, const_view, container };
const Form kForms[] = {owned, view, const_view, container};
const char* const kFormNames[] = {"owned scalar", "writable view", "read-only view", "container"};

// One storage of kind T in the given form, with the variables it views.
template <class T>
struct Subject {
  Subject(Form form, const T& value) : variable(value), constant(value) {
    if (form == owned) storage.reset(new _value_t_data_t<T>(value));
    if (form == view) storage.reset(new _value_t_pdata_t<T>(&variable));
    if (form == const_view) storage.reset(new _value_t_pcdata_t<T>(&constant));
    if (form == container) storage.reset(new _value_t_cont_t<T>(std::vector<T>(1, value)));
  }
  T variable;
  const T constant;
  std::unique_ptr<_value_t_data> storage;
};

// Cell U of row S: 'Y' when operation(fresh storage of kind S, sample of kind U) succeeds,
// '.' when it throws a bad cast, which names stored>requested for a read and
// assigned>stored for a write.
template <size_t S, class Operation, size_t... U>
std::string row(Form form, Operation operation, bool read, std::index_sequence<U...>) {
  const auto outcome = [&](const auto& argument) {
    const std::string stored = type_name(typeid(Kind<S>)), other = type_name(typeid(argument));
    const std::string refusal =
        bad_cast_of([&] { operation(*Subject<Kind<S>>(form, sample<S>()).storage, argument); });
    if (refusal == "no exception") return 'Y';
    EXPECT_EQ(refusal, read ? stored + ">" + other : other + ">" + stored) << kFormNames[form];
    return '.';
  };
  return {outcome(sample<U>())...};
}

template <class Operation, class Expected, size_t... S>
void check_table(Form form, Operation operation, bool read, Expected expected, std::index_sequence<S...>) {
  const auto check = [&](size_t stored, const std::string& name, const std::string& actual) {
    EXPECT_EQ(actual, expected(stored)) << kFormNames[form] << " of " << name;
  };
  (check(S, type_name(typeid(Kind<S>)), row<S>(form, operation, read, AllKinds())), ...);
}

const auto kRead = [](const _value_t_data& s, const auto& x) { s.get(static_cast<decltype(&x)>(nullptr)); };
const auto kPut = [](_value_t_data& s, const auto& x) { s.put(x); };

TEST(StorageTables, EveryFormReadsExactlyTheReadTable) {
  for (Form form : kForms)
    check_table(form, kRead, true, [](size_t s) { return std::string(kReadTable[s]); }, AllKinds());
}

// A read-only view refuses every write; the other forms follow the table.
TEST(StorageTables, EveryFormWritesExactlyThePutTable) {
  for (Form form : kForms)
    check_table(form, kPut, false, [&](size_t s) {
      return form == const_view ? std::string(kKinds, '.') : std::string(kPutTable[s]);
    }, AllKinds());
}

TEST(StorageTables, ContainerAppendsOnlyItsOwnKindAndScalarsNeverGrow) {
  const auto diagonal = [](size_t s) { return std::string(kKinds, '.').replace(s, 1, "Y"); };
  check_table(container, [](_value_t_data& s, const auto& x) { s.push_back(x); }, false, diagonal, AllKinds());
  _value_t_data_t<int> scalar(1);
  EXPECT_THROW(scalar.push_back(2), EBadCastException);
}

// Accesses to the stored object or element, which the tables leave out.
TEST(StorageTables, RefusedAccessNamesTheStoredKindFirst) {
  _value_t_data_t<int> number(1);
  EXPECT_EQ(bad_cast_of([&] { number.getp(static_cast<const double*>(nullptr)); }), "int>double");
  const double constant = 1;
  _value_t_pcdata_t<double> view(&constant);
  EXPECT_EQ(bad_cast_of([&] { view.get(0ULL); }), "double>_value_t_data const*");
  _value_t_cont_t<bool> bits(std::vector<bool>{true});  // no element array to point into
  EXPECT_EQ(bad_cast_of([&] { bits.getp(static_cast<const bool*>(nullptr)); }),
            "std::vector<bool, std::allocator<bool> >>bool const*");
}

template <class R, class T>
R read(const T& stored) {
  return _value_t_data_t<T>(stored).get(static_cast<const R*>(nullptr));
}

template <class T, class A>
T written(const A& assigned) {
  _value_t_data_t<T> storage{T()};
  storage.put(assigned);
  return *storage.getp(static_cast<const T*>(nullptr));
}

// 32-bit kinds keep their bits and widen by their signedness; text keeps its
// embedded nulls.
TEST(StorageConversions, AcceptedReadsAndWritesConvertTheValue) {
  EXPECT_EQ(read<unsigned long>(-5), 0xFFFFFFFBUL);
  EXPECT_EQ(read<__int64>(-5), -5);
  EXPECT_EQ(read<__int64>(0xFFFFFFFFUL), 0xFFFFFFFFLL);
  EXPECT_EQ(read<unsigned long>(true), 1UL);
  EXPECT_EQ(written<int>(0xFFFFFFFFUL), -1);
  EXPECT_EQ(written<__int64>(-1), -1);
  EXPECT_EQ(written<ConstObjectPtr>(kObject).get(), kObject.get());
  EXPECT_EQ(written<std::wstring>(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
}

template <size_t... S>
void check_structure(std::index_sequence<S...>) {
  const unsigned short codes[kKinds] = {22, 19, 20, 11, 5, 8, 8, 8, 13, 13, 7};
  const auto check = [&](size_t kind, const auto& value) {
    for (Form form : kForms) {
      const Subject<std::decay_t<decltype(value)>> subject(form, value);
      const _value_t_data& storage = *subject.storage;
      SCOPED_TRACE(std::string(kFormNames[form]) + " of " + type_name(typeid(value)));
      EXPECT_EQ(storage.type(), typeid(value));
      EXPECT_EQ(storage.vartype(), codes[kind]);
      EXPECT_EQ(storage.object(), codes[kind] == 13);
      EXPECT_EQ(storage.container(), form == container);
      EXPECT_EQ(storage.size(), 1u);
    }
  };
  (check(S, sample<S>()), ...);
}

TEST(StorageStructure, FormsOfOneKindShareTypeCodeAndObjectFlag) { check_structure(AllKinds()); }

}  // namespace
