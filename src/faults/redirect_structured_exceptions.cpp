#include <qz/faults/structured_exceptions.h>

#include "faults/fault_translator.h"
#include "faults/stack_guarantee.h"

// A thread that translates faults also keeps stack back for its overflow,
// or the translation of a stack overflow would itself overflow.
redirect_structured_exceptions::redirect_structured_exceptions() {
  GuaranteeStackForOverflow();
  exchange_fault_translator(&translate_fault);
}

temporary_redirect_structured_exceptions::temporary_redirect_structured_exceptions() {
  GuaranteeStackForOverflow();
  previous = reinterpret_cast<void*>(exchange_fault_translator(&translate_fault));
}

temporary_redirect_structured_exceptions::~temporary_redirect_structured_exceptions() {
  exchange_fault_translator(reinterpret_cast<fault_translator>(previous));
}
