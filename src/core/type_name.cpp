#include <qz/core/type_name.h>

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace {

void replace_all(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

}  // namespace

std::string type_name(const std::type_info& type) {
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> demangled(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  std::string name = status == 0 && demangled ? demangled.get() : type.name();
  // The standard strings' full template names drown every message they are in.
  replace_all(name, "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >",
              "std::string");
  replace_all(name,
              "std::__cxx11::basic_string<wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t> >",
              "std::wstring");
  return name;
}
