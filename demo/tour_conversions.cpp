// The tour of the value model's lenient readers, sequences and comparisons.
#include "tour.h"

#include <qz/qz.h>

#include <set>
#include <vector>

namespace {

std::string yes_no(bool answer) { return answer ? "true" : "false"; }

void lenient_readers() {
  section("Lenient conversions");
  show("as_int of the text \"42 apples\"", itoa(_value_t("42 apples").as_int(), 10));
  show("as_bool of the text \"TRUE\"", yes_no(_value_t("TRUE").as_bool()));
  show("as_bool of the text \"yes\"", yes_no(_value_t("yes").as_bool()));
  show("as_double of the bool true", _value_t(_value_t(true).as_double()).as_string());
  const _value_t big = 3e10;
  show("as_ulong of 3e10 (low 32 bits)", _value_t(big.as_ulong()).as_string());
  show("as_int64 of 3e10 (through 32 bits)", _value_t(big.as_int64()).as_string());
  show("as_ulong of the __int64 2^32 + 5", _value_t(_value_t(0x100000005LL).as_ulong()).as_string());
  try {
    _value_t(0x100000005LL).as_int();
  } catch (const EBadCastException&) {
    show("as_int of an __int64", "refused (EBadCastException)");
  }
  const _time_t moment = _value_t("2020-01-02T03:04:05.000").as_time();
  show("as_time of \"2020-01-02T03:04:05.000\"", moment.iso8601time());
  const _variant_t variant = _value_t(moment).as_variant();
  show("as_variant of that time is VT_DATE", yes_no(V_VT(&variant) == VT_DATE));
}

void sequences_and_comparisons() {
  section("Sequences and comparisons");
  const _value_t numbers = std::vector<int>{3, 1, 3, 2};
  const std::set<int> distinct = numbers;
  show("{3,1,3,2} read as a std::set<int>", _value_t(distinct).as_string());
  const std::vector<double> doubles = numbers;
  show("... and as a std::vector<double>", _value_t(doubles).as_string());
  show("5 == 5UL (read as the left kind)", yes_no(_value_t(5) == _value_t(5UL)));
  show("{1,2} < {1,2,0}", yes_no(_value_t(std::vector<int>{1, 2}) < std::vector<int>{1, 2, 0}));
  show("<void> < 1", yes_no(_value_t() < 1));
  try {
    static_cast<void>(_value_t(5) == "5");
  } catch (const EBadCastException&) {
    show("5 == \"5\"", "refused (EBadCastException)");
  }
  std::set<_value_t> ordered;
  for (const char* word : {"pear", "apple", "fig"}) ordered.insert(word);
  std::string text;
  for (const _value_t& word : ordered) text += _value_t(word).as_string() + " ";
  show("a std::set<_value_t> of words", text);
}

}  // namespace

void tour_conversions() {
  lenient_readers();
  sequences_and_comparisons();
}
