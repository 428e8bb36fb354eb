// The system's message text for an error code (private to the errors subsystem).
#pragma once

#include <windows.h>

#include <string>

// FormatMessageW from the system table with `flags` added to
// FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, language
// neutral/default. Returns false (and leaves `text` empty) when the system has
// no message for `code`.
bool system_message(DWORD code, DWORD flags, std::wstring& text);

// The message for ESystemException: inserts ignored, trailing carriage
// returns and line feeds stripped (blanks and full stops stay); may be empty.
std::wstring system_error_text(DWORD code);
