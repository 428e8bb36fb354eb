// Security attributes for the named kernel objects of qz.
#pragma once

#include <windows.h>

namespace qz_detail {

// Full-length, non-inheritable attributes around a freshly initialised
// descriptor (no owner, no group, no access list). With `open_to_everyone`
// the descriptor says an access list is present but leaves it null, which
// grants every user full access; an event made so can be shared with
// processes of other accounts. Without it the system applies the creator's
// default rights.
class named_object_security {
 public:
  explicit named_object_security(bool open_to_everyone);
  named_object_security(const named_object_security&) = delete;
  named_object_security& operator=(const named_object_security&) = delete;

  SECURITY_ATTRIBUTES* get() noexcept { return &attributes_; }

 private:
  SECURITY_DESCRIPTOR descriptor_;
  SECURITY_ATTRIBUTES attributes_;
};

}  // namespace qz_detail
