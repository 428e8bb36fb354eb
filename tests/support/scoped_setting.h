// Sets one of the library's process-wide tuning globals for a test's scope
// and puts the old value back at its end.
#pragma once

namespace qz_test {

template <typename T>
class ScopedSetting {
 public:
  ScopedSetting(T& setting, T value) : setting_(setting), saved_(setting) { setting_ = value; }
  ~ScopedSetting() { setting_ = saved_; }
  ScopedSetting(const ScopedSetting&) = delete;
  ScopedSetting& operator=(const ScopedSetting&) = delete;

 private:
  T& setting_;
  T saved_;
};

}  // namespace qz_test
