#include "tour.h"

#include <qz/qz.h>

#include <cstdint>

namespace {

__attribute__((noinline)) int read_sensor(std::uintptr_t address) {
  return *reinterpret_cast<volatile int*>(address);  // a bad pointer: an access violation
}
int (*volatile sensor)(std::uintptr_t) = &read_sensor;

__attribute__((noinline)) void open_config() {
  throw EGeneric({"Text", "configuration missing"}, {"File", "app.ini"});
}
void (*volatile opener)() = &open_config;

__attribute__((noinline)) void check_quota() { throw EGeneric(true); }
void (*volatile checker)() = &check_quota;

std::string value_of(const EGeneric& e, const char* name) {
  _value_t value = e.get_value(name);
  return value.empty() ? "<none>" : value.as_string();
}

// A stack value ("\n-> frame" per frame) indented under its heading.
void show_stack(const EGeneric& e) {
  std::string stack = value_of(e, "Stack");
  for (size_t at = stack.find('\n'); at != std::string::npos; at = stack.find('\n', at + 1))
    stack.insert(at + 1, "    ");
  std::printf("  Stack:%s\n", stack.c_str());
}

}  // namespace

void tour_diagnostics() {
  const bool saved_dumps = SaveMiniDumpOnStructuredException;
  const bool saved_extend = ExtendDebugInformationFromException;
  temporary_redirect_structured_exceptions translate;  // this thread's faults become exceptions

  section("A processor fault caught as an exception");
  SaveMiniDumpOnStructuredException = false;
  ExtendDebugInformationFromException = true;
  try {
    sensor(0x10);
  } catch (const EStructuredException& e) {
    show("Text", value_of(e, "Text"));
    show("ModuleName", value_of(e, "ModuleName"));
    show("AddressName", value_of(e, "AddressName"));
    show_stack(e);
  }

  section("A crash dump written at the fault, then cancelled");
  SaveMiniDumpOnStructuredException = true;
  ExtendDebugInformationFromException = false;
  try {
    sensor(0x20);
  } catch (EStructuredException& e) {
    const std::string path = value_of(e, "MiniDump");
    show("MiniDump", path);
    e.cancel_minidump();  // the fault was harmless after all
    show("after cancel_minidump, the file exists",
         GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES ? "yes" : "no");
    RemoveDirectoryW(L"Dumps");  // only when empty
  }

  section("A thrown exception carries the stack of its throw");
  SaveMiniDumpOnStructuredException = false;
  ExtendDebugInformationFromException = true;
  try {
    opener();
  } catch (const EGeneric& e) {
    show("Text", value_of(e, "Text"));
    show("AddressName", value_of(e, "AddressName"));
    show_stack(e);
  }

  section("With UseVEH off, EGeneric(true) takes its location where it is built");
  UseVEH = false;
  try {
    checker();
  } catch (const EGeneric& e) {
    show("AddressName", value_of(e, "AddressName"));
  }
  UseVEH = true;

  SaveMiniDumpOnStructuredException = saved_dumps;
  ExtendDebugInformationFromException = saved_extend;
}
