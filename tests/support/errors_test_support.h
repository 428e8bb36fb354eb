// Helpers shared by the error tests: texts read off exceptions, the symbol
// engine kept started for a suite, and crash dump files.
#pragma once

#include <qz/errors/exceptions.h>
#include <qz/diagnostics/symbols.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <regex>
#include <string>

namespace errors_test {

inline bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

// A value of an exception as text; "<none>" when it is missing.
inline std::string TextOf(const EGeneric& e, const char* name) {
  _value_t value = e.get_value(name);
  return value.empty() ? "<none>" : value.as_string();
}

// The value names of an exception in order: "A,B,".
inline std::string NamesOf(const EGeneric& e) {
  std::string names;
  for (const auto& entry : e.values()) names += entry.first + ",";
  return names;
}

// Keeps the engine started for a whole suite: each start reads the modules'
// debug information again, which takes seconds under Wine.
class SymbolEngineTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(SymInitialize()); }
  static void TearDownTestSuite() { SymCleanup(); }
};

inline bool FileExists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Whether the file is a crash dump: it starts with the dump signature.
inline bool IsDump(const std::string& path) {
  FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  char signature[4] = {};
  const bool read = std::fread(signature, 1, 4, file) == 4;
  std::fclose(file);
  return read && std::string(signature, 4) == "MDMP";
}

// "Dumps\<module>_<kind>_" then the local time as 2024_01_31_23_59_58_123.
inline bool NamedAsADumpOf(const std::string& path, const std::string& module_and_kind) {
  static const std::regex time("_\\d{4}_\\d\\d_\\d\\d_\\d\\d_\\d\\d_\\d\\d_\\d{3}\\.dmp");
  const std::string prefix = "Dumps\\" + module_and_kind;
  return StartsWith(path, prefix) && std::regex_match(path.substr(prefix.size()), time);
}

// Leaves the dump folder as it found it (removed when a test made it).
class DumpDirectory {
 public:
  DumpDirectory() : existed_(FileExists("Dumps")) {}
  ~DumpDirectory() {
    if (!existed_) RemoveDirectoryA("Dumps");
  }

 private:
  bool existed_;
};

}  // namespace errors_test
