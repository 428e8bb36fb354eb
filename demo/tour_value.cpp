#include "tour.h"

#include <qz/qz.h>

#include <vector>

void tour_value() {
  section("Values");
  _value_t number = 42;
  _value_t text = "hello";
  _value_t flag = true;
  _value_t ratio = 2.5;
  show("int, text, bool, double", number.as_string() + ", " + text.as_string() + ", " + flag.as_string() +
                                      ", " + ratio.as_string());

  _value_t list;
  list.push_back(1);
  show("push_back(1) gives a scalar", list.as_string());
  list.push_back(2);
  list.push_back(3);
  show("two more push_backs give a container", list.as_string());
  show("from a std::vector<std::string>", _value_t(std::vector<std::string>{"x", "y"}).as_string());

  section("Copy on write");
  _value_t original = 1;
  _value_t copy = original;
  copy = 3;
  show("copy assigned 3; original still", original.as_string());

  int watched = 10;
  _value_t view = _value_t::view(watched);
  view = 11;
  show("a view writes through to the variable", itoa(watched, 10));

  section("Strict conversions");
  _value_t small = 7;
  show("int read as double", itoa(static_cast<int>(static_cast<double>(small)), 10));
  try {
    _value_t kind_fixed = 5;
    kind_fixed = 7.5;  // an int storage refuses a double
  } catch (const EBadCastException& e) {
    show("int assigned a double:", "");
    std::printf("%s\n", e.what());
  }
}
