// EGeneric: the root of every error qz raises.
//
// An EGeneric carries no message string of its own but an ordered list of
// named values ("Text", "Code", "SourceFile", ...), and builds what() from
// that list on demand. Whoever catches one may add or edit values; names are
// looked up with the ASCII letters folded ("Code", "code" and "CODE" are one
// name) and the first match wins.
//
// what() text: a list holding exactly one entry named "Text" prints that
// value's text alone; otherwise each entry prints as "name: value" on its own
// line, with "int" and "unsigned long" values followed by " (0x<hex>)". The
// text lives in one process-wide buffer, valid until the next what() call on
// any exception in any thread.
//
// Thread safety: an exception object has no lock of its own; use one object
// on one thread at a time. what() is serialised process-wide.
#pragma once

#include <qz/core/throw.h>  // QZ_ASSERT and the throw helpers
#include <qz/export.h>
#include <qz/value/value.h>

#include <exception>
#include <string>
#include <utility>
#include <vector>

struct _CONTEXT;
struct _EXCEPTION_POINTERS;

class QZ_API EGeneric : public std::exception {
 public:
  using value_pair = std::pair<std::string, _value_t>;
  using value_list = std::vector<value_pair>;

  EGeneric();
  // An empty list; with `extend` true, ExtendDebugInformation at the
  // caller's position: "MiniDump" when SaveMiniDumpOnCppException is set,
  // "ModuleName", "AddressName" and "Stack" when
  // ExtendDebugInformationFromException is. While the library's vectored
  // handler is at work (UseVEH set, the default) the constructor adds
  // neither: the handler adds both when the exception is thrown, as seen at
  // the throw. With UseVEH false the constructor adds them itself.
  explicit EGeneric(bool extend);
  // Appends the pairs in argument order, without looking for duplicates.
  explicit EGeneric(const value_pair& a);
  EGeneric(const value_pair& a, const value_pair& b);
  EGeneric(const value_pair& a, const value_pair& b, const value_pair& c);
  EGeneric(const value_pair& a, const value_pair& b, const value_pair& c, const value_pair& d);
  EGeneric(const value_pair& a, const value_pair& b, const value_pair& c, const value_pair& d,
           const value_pair& e);
  EGeneric(const value_pair& a, const value_pair& b, const value_pair& c, const value_pair& d,
           const value_pair& e, const value_pair& f);
  EGeneric(const EGeneric& other);
  EGeneric& operator=(const EGeneric& other);
  ~EGeneric() override;

  // The value of the first entry named `name`; a missing name is first
  // appended with an empty value.
  _value_t& operator[](const std::string& name);
  // Same as get_value: never adds an entry.
  _value_t operator[](const std::string& name) const;

  // Replaces the value of an existing entry in place (keeping its position
  // and spelling), or appends a new entry.
  void put_value(const std::string& name, const _value_t& value);
  // A copy of the first matching value, or an empty value.
  const _value_t get_value(const std::string& name) const;
  void clear_values();
  const value_list& values() const noexcept { return values_; }

  // Deletes the crash-dump file named by "MiniDump" (errors ignored) and
  // removes that entry.
  void cancel_minidump();

  const char* what() const noexcept override;

  // The text of up to 64 frames walked on `thread` from the context of
  // `pointers`, the first `skip` frames dropped: "\n-> <name>" per frame.
  static std::string BuildStack(_EXCEPTION_POINTERS* pointers, unsigned int skip, void* thread);
  // Writes a crash dump as the dump settings say and returns its path, or ""
  // when none was written. `pointers` may be null (a dump without a fault).
  static std::string SaveMiniDump(_EXCEPTION_POINTERS* pointers, unsigned long type,
                                  unsigned long thread_id);

 protected:
  // Add "MiniDump", "ModuleName", "AddressName" and "Stack" as the dump and
  // debug-information settings ask: the first form at a throw (a null
  // context means the caller's position), the second at a processor fault.
  void ExtendDebugInformation(_CONTEXT* context);
  void ExtendDebugInformation(_EXCEPTION_POINTERS* pointers);

  value_list::iterator find_value(const std::string& name);
  value_list::const_iterator find_value(const std::string& name) const;
  // Exchanges the named entry with the last one (a swap, not a rotation).
  void move_to_back(const std::string& name);

 private:
  // The library's fault and throw diagnostics edit exceptions at the raise.
  friend class exception_diagnostics;

  value_list values_;
};
