// Every (stored, requested) read and every (stored, assigned) write, for
// every storage form, against the conversion tables written out by hand.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using ObjectPtr = SmartPtr<SmartPtrObj>;
using ConstObjectPtr = SmartPtr<SmartPtrObj const>;
using Kinds = std::tuple<int, unsigned long, __int64, bool, double, std::string, std::wstring,
                         _bstr_t, ObjectPtr, ConstObjectPtr, _time_t>;
constexpr size_t kKinds = std::tuple_size_v<Kinds>;
using AllKinds = std::make_index_sequence<kKinds>;
template <size_t I>
using Kind = std::tuple_element_t<I, Kinds>;

const char* const kKindNames[kKinds] = {"int",    "unsigned long", "__int64", "bool",
                                        "double", "string",        "wstring", "_bstr_t",
                                        "object", "const object",  "_time_t"};

// Row: stored kind; column: requested kind, both in the order of Kinds.
const char* const kReadTable[kKinds] = {
    "YYY.Y......",  // int: int, unsigned long, __int64, double
    "YYY........",  // unsigned long: unsigned long, int, __int64
    "..Y........",  // __int64
    "YY.Y.......",  // bool: int, unsigned long, bool
    "....Y......",  // double
    ".....YYY...",  // string
    ".....YYY...",  // wstring
    ".....YYY...",  // _bstr_t
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
    ".....YYY...",  // string
    ".....YYY...",  // wstring
    ".....YYY...",  // _bstr_t
    "........Y..",  // object
    "........YY.",  // const object: object, const object
    "..........Y",  // _time_t
};

template <class T>
T sample();
template <> int sample<int>() { return -5; }
template <> unsigned long sample<unsigned long>() { return 0xFFFFFFFFUL; }
template <> __int64 sample<__int64>() { return -9000000000LL; }
template <> bool sample<bool>() { return true; }
template <> double sample<double>() { return 2.5; }
template <> std::string sample<std::string>() { return "text"; }
template <> std::wstring sample<std::wstring>() { return L"wide"; }
template <> _bstr_t sample<_bstr_t>() { return L"bstr"; }
template <> ObjectPtr sample<ObjectPtr>() {
  static const ObjectPtr object(new SmartPtrObj);
  return object;
}
template <> ConstObjectPtr sample<ConstObjectPtr>() { return sample<ObjectPtr>(); }
template <> _time_t sample<_time_t>() { return _time_t(static_cast<__int64>(86400)); }

enum class Form { owned, view, const_view, container };
const Form kForms[] = {Form::owned, Form::view, Form::const_view, Form::container};

const char* form_name(Form form) {
  switch (form) {
    case Form::owned: return "owned scalar";
    case Form::view: return "writable view";
    case Form::const_view: return "read-only view";
    default: return "container";
  }
}

// One storage of kind T in the given form, with the variables it views.
template <class T>
struct Subject {
  explicit Subject(Form form) : variable(sample<T>()), constant(sample<T>()) {
    switch (form) {
      case Form::owned: storage.reset(new _value_t_data_t<T>(sample<T>())); break;
      case Form::view: storage.reset(new _value_t_pdata_t<T>(&variable)); break;
      case Form::const_view: storage.reset(new _value_t_pcdata_t<T>(&constant)); break;
      case Form::container:
        storage.reset(new _value_t_cont_t<T>(std::vector<T>(1, sample<T>())));
        break;
    }
  }
  T variable;
  const T constant;
  std::unique_ptr<_value_t_data> storage;
};

template <class Operation>
char outcome(Operation operation) {
  try {
    operation();
    return 'Y';
  } catch (const EBadCastException&) {
    return '.';
  }
}

template <class T, size_t... R>
std::string read_row(Form form, std::index_sequence<R...>) {
  Subject<T> subject(form);
  const _value_t_data& storage = *subject.storage;
  return {outcome([&] { storage.get(static_cast<const Kind<R>*>(nullptr)); })...};
}

template <class T, size_t... U>
std::string put_row(Form form, std::index_sequence<U...>) {
  return {outcome([&] { Subject<T>(form).storage->put(sample<Kind<U>>()); })...};
}

template <class T, size_t... U>
std::string push_back_row(std::index_sequence<U...>) {
  return {outcome([&] { Subject<T>(Form::container).storage->push_back(sample<Kind<U>>()); })...};
}

void expect_row(const std::string& actual, const std::string& expected, Form form, size_t row) {
  EXPECT_EQ(actual, expected) << form_name(form) << " of " << kKindNames[row];
}

template <size_t... S>
void check_reads(Form form, std::index_sequence<S...>) {
  (expect_row(read_row<Kind<S>>(form, AllKinds()), kReadTable[S], form, S), ...);
}

// A read-only view refuses every write; the other forms follow the table.
template <size_t... S>
void check_puts(Form form, std::index_sequence<S...>) {
  const std::string refused(kKinds, '.');
  (expect_row(put_row<Kind<S>>(form, AllKinds()),
              form == Form::const_view ? refused : std::string(kPutTable[S]), form, S),
   ...);
}

// A container appends its own kind only: the diagonal.
template <size_t... S>
void check_push_backs(std::index_sequence<S...>) {
  auto diagonal = [](size_t row) {
    std::string text(kKinds, '.');
    text[row] = 'Y';
    return text;
  };
  (expect_row(push_back_row<Kind<S>>(AllKinds()), diagonal(S), Form::container, S), ...);
}

TEST(StorageTables, EveryFormReadsExactlyTheReadTable) {
  for (Form form : kForms) check_reads(form, AllKinds());
}

TEST(StorageTables, EveryFormWritesExactlyThePutTable) {
  for (Form form : kForms) check_puts(form, AllKinds());
}

TEST(StorageTables, ContainerAppendsOnlyItsOwnKind) { check_push_backs(AllKinds()); }

TEST(StorageTables, ScalarsNeverGrow) {
  _value_t_data_t<int> scalar(1);
  EXPECT_THROW(scalar.push_back(2), EBadCastException);
}

template <class Storage, class Operation>
std::pair<std::string, std::string> bad_cast_of(Storage& storage, Operation operation) {
  try {
    operation(storage);
  } catch (const EBadCastException& e) {
    return {std::string(e.get_value("From")), std::string(e.get_value("To"))};
  }
  return {"no exception", ""};
}

using Names = std::pair<std::string, std::string>;

TEST(StorageTables, RefusedReadNamesStoredThenRequestedKind) {
  _value_t_data_t<int> number(1);
  EXPECT_EQ(bad_cast_of(number, [](auto& s) { s.get(static_cast<const bool*>(nullptr)); }),
            Names("int", "bool"));
  EXPECT_EQ(bad_cast_of(number, [](auto& s) { s.getp(static_cast<const double*>(nullptr)); }),
            Names("int", "double"));
  ConstObjectPtr object = sample<ConstObjectPtr>();
  _value_t_pcdata_t<ConstObjectPtr> view(&object);
  EXPECT_EQ(bad_cast_of(view, [](auto& s) { s.get(static_cast<const ObjectPtr*>(nullptr)); }),
            Names("SmartPtr<SmartPtrObj const>", "SmartPtr<SmartPtrObj>"));
}

TEST(StorageTables, RefusedWriteNamesAssignedThenStoredKind) {
  _value_t_data_t<bool> flag(true);
  EXPECT_EQ(bad_cast_of(flag, [](auto& s) { s.put(1); }), Names("int", "bool"));
  _value_t_cont_t<std::string> texts(std::vector<std::string>{"a"});
  EXPECT_EQ(bad_cast_of(texts, [](auto& s) { s.put(2.5); }), Names("double", "std::string"));
  EXPECT_EQ(bad_cast_of(texts, [](auto& s) { s.push_back(std::wstring(L"b")); }),
            Names("std::wstring", "std::string"));
  const double constant = 1;
  _value_t_pcdata_t<double> view(&constant);
  EXPECT_EQ(bad_cast_of(view, [](auto& s) { s.put(2.5); }), Names("double", "double"));
  EXPECT_EQ(bad_cast_of(view, [](auto& s) { s.get(0ULL); }),
            Names("double", "_value_t_data const*"));
}

TEST(StorageConversions, ThirtyTwoBitKindsKeepTheirBitsAndWidenBySignedness) {
  _value_t_data_t<int> negative(-5);
  EXPECT_EQ(negative.get(static_cast<const unsigned long*>(nullptr)), 0xFFFFFFFBUL);
  EXPECT_EQ(negative.get(static_cast<const __int64*>(nullptr)), -5);
  EXPECT_EQ(negative.get(static_cast<const double*>(nullptr)), -5.0);
  _value_t_data_t<unsigned long> all_bits(0xFFFFFFFFUL);
  EXPECT_EQ(all_bits.get(static_cast<const int*>(nullptr)), -1);
  EXPECT_EQ(all_bits.get(static_cast<const __int64*>(nullptr)), 0xFFFFFFFFLL);
  _value_t_data_t<bool> flag(true);
  EXPECT_EQ(flag.get(static_cast<const int*>(nullptr)), 1);
  EXPECT_EQ(flag.get(static_cast<const unsigned long*>(nullptr)), 1UL);
}

TEST(StorageConversions, AcceptedWritesConvertToTheStoredKind) {
  _value_t_data_t<int> number(0);
  number.put(0xFFFFFFFFUL);
  EXPECT_EQ(*number.getp(static_cast<const int*>(nullptr)), -1);
  number.put(true);
  EXPECT_EQ(*number.getp(static_cast<const int*>(nullptr)), 1);
  _value_t_data_t<__int64> wide(0);
  wide.put(-1);
  EXPECT_EQ(*wide.getp(static_cast<const __int64*>(nullptr)), -1);
  wide.put(0xFFFFFFFFUL);
  EXPECT_EQ(*wide.getp(static_cast<const __int64*>(nullptr)), 0xFFFFFFFFLL);
  _value_t_data_t<double> real(0);
  real.put(3);
  EXPECT_EQ(*real.getp(static_cast<const double*>(nullptr)), 3.0);
  _value_t_data_t<ConstObjectPtr> object(nullptr);
  object.put(sample<ObjectPtr>());
  const ConstObjectPtr* stored = object.getp(static_cast<const ConstObjectPtr*>(nullptr));
  EXPECT_EQ(stored->get(), sample<ObjectPtr>().get());
}

TEST(StorageConversions, TextKindsConvertAmongThemselves) {
  _value_t_data_t<std::string> narrow("abc");
  EXPECT_EQ(narrow.get(static_cast<const std::wstring*>(nullptr)), L"abc");
  EXPECT_EQ(narrow.get(static_cast<const _bstr_t*>(nullptr)), _bstr_t(L"abc"));
  _value_t_data_t<_bstr_t> bstr(_bstr_t(L"de"));
  EXPECT_EQ(bstr.get(static_cast<const std::string*>(nullptr)), "de");
  narrow.put(std::wstring(L"wide"));
  EXPECT_EQ(*narrow.getp(static_cast<const std::string*>(nullptr)), "wide");
  _value_t_data_t<std::wstring> wide(L"");
  wide.put(std::string("a\0b", 3));  // embedded nulls survive
  EXPECT_EQ(wide.getp(static_cast<const std::wstring*>(nullptr))->size(), 3u);
}

template <size_t... S>
void check_structure(std::index_sequence<S...>) {
  const unsigned short codes[kKinds] = {22, 19, 20, 11, 5, 8, 8, 8, 13, 13, 7};
  auto check = [&](size_t row, auto kind) {
    using T = decltype(kind);
    for (Form form : kForms) {
      Subject<T> subject(form);
      const _value_t_data& storage = *subject.storage;
      SCOPED_TRACE(std::string(form_name(form)) + " of " + kKindNames[row]);
      EXPECT_EQ(storage.type(), typeid(T));
      EXPECT_EQ(storage.vartype(), codes[row]);
      EXPECT_EQ(storage.object(), codes[row] == 13);
      EXPECT_EQ(storage.container(), form == Form::container);
      EXPECT_EQ(storage.size(), 1u);
    }
  };
  (check(S, Kind<S>()), ...);
}

TEST(StorageStructure, FormsOfOneKindShareTypeCodeAndObjectFlag) { check_structure(AllKinds()); }

TEST(StorageStructure, EmptyContainerHasSizeZeroAndRefusesFirstElementAccess) {
  _value_t_cont_t<int> empty;
  EXPECT_EQ(empty.size(), 0u);
  EXPECT_THROW(empty.get(static_cast<const int*>(nullptr)), std::out_of_range);
  EXPECT_THROW(empty.put(1), std::out_of_range);
}

TEST(StorageStructure, ScalarViewsIndexZeroOnly) {
  _value_t_data_t<int> scalar(4);
  std::unique_ptr<_value_t_data> element(scalar.get(0ULL));
  element->put(5);
  EXPECT_EQ(*scalar.getp(static_cast<const int*>(nullptr)), 5);
  EXPECT_THROW(scalar.get(1ULL), std::out_of_range);
  _value_t_cont_t<int> one(std::vector<int>{1});
  std::unique_ptr<_value_t_data> unchecked(one.get(1ULL));
  EXPECT_TRUE(unchecked != nullptr);
}

TEST(StorageStructure, BoolContainerHasNoElementArray) {
  _value_t_cont_t<bool> bits(std::vector<bool>{true});
  EXPECT_EQ(bad_cast_of(bits, [](auto& s) { s.getp(static_cast<const bool*>(nullptr)); }).first,
            "std::vector<bool, std::allocator<bool> >");
}

}  // namespace
