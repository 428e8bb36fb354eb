// Placeholder definitions until the fault translator lands.
#include <qz/errors/structured_exceptions.h>

redirect_structured_exceptions::redirect_structured_exceptions() {}
temporary_redirect_structured_exceptions::temporary_redirect_structured_exceptions()
    : previous(nullptr) {}
temporary_redirect_structured_exceptions::~temporary_redirect_structured_exceptions() {}
