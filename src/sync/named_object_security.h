// Security attributes for the named kernel objects of qz.
#pragma once

#include <windows.h>

namespace qz_detail {

// Who may open a named object that qz creates.
enum class named_object_access {
  // The system applies the creator's default rights.
  creator_default,
  // The descriptor says an access list is present but leaves it null, which
  // grants every user full access; an object made so can be shared with
  // processes of other accounts.
  everyone,
};

// Full-length, non-inheritable attributes around a freshly initialised
// descriptor (no owner, no group, no access list), open as `access` says.
class named_object_security {
 public:
  explicit named_object_security(named_object_access access);
  named_object_security(const named_object_security&) = delete;
  named_object_security& operator=(const named_object_security&) = delete;

  SECURITY_ATTRIBUTES* get() noexcept { return &attributes_; }

 private:
  SECURITY_DESCRIPTOR descriptor_;
  SECURITY_ATTRIBUTES attributes_;
};

}  // namespace qz_detail
