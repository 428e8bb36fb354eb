// Placeholder until the vectored handler lands: no handler is registered.
#include "errors/vectored_handler.h"

bool vectored_handler_installed() { return false; }
