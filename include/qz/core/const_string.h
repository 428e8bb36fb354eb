// basic_const_string<T> and const_array<T>: light, non-owning views.
//
// Text enters the library's formatters, converters, value constructors and
// log sessions through basic_const_string, so that a literal, a standard
// string, a _bstr_t or any counted buffer is handed over without a copy. The
// caller keeps the viewed text alive for as long as the view is used.
//
// Thread safety: a view is an immutable value; it may be copied and read on
// any thread as long as the viewed text does not change.
#pragma once

#include <qz/export.h>

#include <cstddef>
#include <cwchar>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <qz/core/com_types.h>

template <class T>
class basic_const_string {
 public:
  using value_type = T;
  using size_type = unsigned long long;

  basic_const_string() noexcept : _data(empty_text()), length_(0) {}
  // A null pointer is taken as the empty text.
  basic_const_string(const T* text) noexcept
      : _data(text ? text : empty_text()), length_(text ? traits::length(text) : 0) {}
  basic_const_string(const T* data, size_type length) noexcept : _data(data), length_(length) {}
  basic_const_string(const std::basic_string<T>& text) noexcept
      : _data(text.c_str()), length_(text.size()) {}
  // Wide views only: the text of a _bstr_t (a null _bstr_t is the empty text).
  template <class B, class = std::enable_if_t<std::is_same_v<B, _bstr_t> && std::is_same_v<T, wchar_t>>>
  basic_const_string(const B& text) noexcept
      : basic_const_string(static_cast<const wchar_t*>(text)) {}

  const T* data() const noexcept { return _data; }
  size_type length() const noexcept { return length_; }
  size_type size() const noexcept { return length_; }
  bool empty() const noexcept { return length_ == 0; }
  const T* begin() const noexcept { return _data; }
  const T* end() const noexcept { return _data + length_; }
  T operator[](size_type i) const noexcept { return _data[i]; }

  // The viewed text as a terminated string. A view over part of a longer text
  // has no terminator at its length: that throws std::logic_error.
  const T* c_str() const {
    if (_data[length_] != T()) throw std::logic_error("Invalid _data of const_string for c_str()");
    return _data;
  }

  std::basic_string<T> str() const { return std::basic_string<T>(_data, length_); }

 private:
  using traits = std::char_traits<T>;
  static const T* empty_text() noexcept {
    static const T nothing[1] = {T()};
    return nothing;
  }

  const T* _data;
  size_type length_;
};

using const_string = basic_const_string<char>;
using const_wstring = basic_const_string<wchar_t>;

// A non-owning view of `count` contiguous elements of T.
template <class T>
class const_array {
 public:
  using value_type = T;
  using size_type = unsigned long long;

  const_array() noexcept : data_(nullptr), count_(0) {}
  const_array(const T* data, size_type count) noexcept : data_(data), count_(count) {}
  template <size_type N>
  const_array(const T (&items)[N]) noexcept : data_(items), count_(N) {}
  const_array(const std::vector<T>& items) noexcept : data_(items.data()), count_(items.size()) {}

  const T* data() const noexcept { return data_; }
  size_type size() const noexcept { return count_; }
  bool empty() const noexcept { return count_ == 0; }
  const T* begin() const noexcept { return data_; }
  const T* end() const noexcept { return data_ + count_; }
  const T& operator[](size_type i) const noexcept { return data_[i]; }

 private:
  const T* data_;
  size_type count_;
};
