// The process-wide vectored exception handler, as the rest of the library
// sees it (private to the library).
#pragma once

// Whether the library's vectored handler is registered and UseVEH lets it
// work: then a throw gets its stack and dump from the handler rather than
// from the exception's constructor. (The handler stays registered whatever
// UseVEH says; with UseVEH false it adds nothing at a throw.)
bool vectored_handler_at_work();
