#include "tour.h"

#include <qz/qz.h>

#include <list>
#include <set>

namespace {

class Greeter : public SmartPtrObj {
 public:
  ~Greeter() override { std::printf("  (the last holder let go: Greeter destroyed)\n"); }
};

std::string quoted(const std::string& text) { return "[" + text + "]"; }

}  // namespace

void tour_core() {
  section("Shared objects");
  SmartPtr<Greeter> first(new Greeter);
  {
    SmartPtr<const Greeter> second = first;
    show("two holders, count", itoa(second->ref_count(), 10));
  }
  show("one holder again, count", itoa(first->ref_count(), 10));
  show("ToString (type and low address bits)", first->ToString());
  first.reset();

  section("Formatting and code pages");
  show("format_string(\"%s=%I64d\")", format_string("%s=%I64d", "big", 1ll << 40));
  const std::string cafe = as_string(L"caf\u00e9", CP_UTF8);
  show("as_string(L\"caf\\u00e9\", CP_UTF8) bytes", itoa(static_cast<int>(cafe.size()), 10));
  show("as_wstring back, length", itoa(static_cast<int>(as_wstring(cafe, CP_UTF8).size()), 10));

  section("String utilities");
  std::list<std::string> words;
  divide_string(std::string("alpha, \"beta, gamma\",,delta"), words, ", ");
  std::string listed;
  for (const auto& word : words) listed += quoted(word);
  show("divide_string (quotes group words)", listed);
  std::string joined;
  consolidate_string(words, joined, ",");
  show("consolidate_string (quotes where needed)", joined);
  std::set<std::string> sorted;
  divide_string(std::string("b a c a"), sorted, " ");
  consolidate_string(sorted, joined, " ");
  show("divide_string into a set", joined);
  show("trim(\"  padded  \", \" \")", quoted(trim(std::string("  padded  "), " ")));
  show("escape(\"a;b\", \";\", '\\\\')", escape(std::string("a;b"), ";", '\\'));
  show("strupper(\"mixed Case\")", strupper(std::string("mixed Case")));
  show("i64toa(-1, 16)", i64toa(-1, 16));
  show("isxdigit(\"0aF\")", isxdigit(std::string("0aF")) ? "true" : "false");
}
