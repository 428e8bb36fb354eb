#include "sync/named_object_security.h"

#include <qz/core/throw.h>

namespace qz_detail {

named_object_security::named_object_security(named_object_access access) : descriptor_(), attributes_() {
  if (!InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION))
    ThrowSystemException();
  if (access == named_object_access::everyone && !SetSecurityDescriptorDacl(&descriptor_, TRUE, nullptr, FALSE))
    ThrowSystemException();
  attributes_.nLength = sizeof attributes_;
  attributes_.lpSecurityDescriptor = &descriptor_;
  attributes_.bInheritHandle = FALSE;
}

}  // namespace qz_detail
