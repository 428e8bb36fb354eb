#include <qz/logging/console_writer.h>

#include <windows.h>

#include <new>
#include <string>

TConsoleWriter::TConsoleWriter(bool allocate) {
  // A process that already has a console keeps it; AllocConsole then fails,
  // which is fine.
  if (allocate) AllocConsole();
  console = GetStdHandle(STD_OUTPUT_HANDLE);
}

TConsoleWriter::~TConsoleWriter() = default;

// Log text is ANSI; a console shows the OEM code page. The conversion works on
// a copy because the caller's text is shared with the other writers.
void TConsoleWriter::StreamWriteString(const char* text, size_t length) {
  if (!text || length == 0) return;
  try {
    std::string oem(text, length);
    CharToOemA(oem.c_str(), &oem[0]);
    DWORD written = 0;
    WriteConsoleA(console, oem.data(), static_cast<DWORD>(oem.size()), &written, nullptr);
  } catch (const std::bad_alloc&) {
    // No memory for the copy: the text is dropped like any unwritable text.
  }
}
