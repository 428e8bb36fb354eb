#include <qz/logging/permanent_file_writer.h>

#include <windows.h>

#include <cstring>
#include <new>
#include <string>

namespace {

// Append-only access makes every write land at the end, even when the file
// grows by other means; write-through takes each line to the disk before the
// write returns, so a crash right after logging loses nothing.
const DWORD kAccess = FILE_APPEND_DATA;
const DWORD kShare = FILE_SHARE_READ | FILE_SHARE_DELETE;
const DWORD kFlags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH;

// Most log lines fit here, which spares the heap on every write.
const size_t kStackText = 1024;

size_t count_line_feeds(const char* text, size_t length) {
  size_t count = 0;
  for (const char* end = text + length; (text = static_cast<const char*>(std::memchr(text, '\n', end - text)));
       ++text)
    ++count;
  return count;
}

// Every line feed becomes carriage return + line feed, even one that already
// follows a carriage return: the text is expanded exactly as written.
void expand_line_feeds(const char* text, size_t length, char* out) {
  const char* const end = text + length;
  while (text < end) {
    const char* feed = static_cast<const char*>(std::memchr(text, '\n', end - text));
    const char* stop = feed ? feed : end;
    std::memcpy(out, text, stop - text);
    out += stop - text;
    if (!feed) break;
    *out++ = '\r';
    *out++ = '\n';
    text = feed + 1;
  }
}

}  // namespace

TPermanentFileWriter::TPermanentFileWriter(const char* name) {
  Open(name ? CreateFileA(name, kAccess, kShare, nullptr, OPEN_ALWAYS, kFlags, nullptr) : INVALID_HANDLE_VALUE);
}

TPermanentFileWriter::TPermanentFileWriter(const wchar_t* name) {
  Open(name ? CreateFileW(name, kAccess, kShare, nullptr, OPEN_ALWAYS, kFlags, nullptr) : INVALID_HANDLE_VALUE);
}

void TPermanentFileWriter::Open(void* opened) {
  if (opened == INVALID_HANDLE_VALUE) {
    file.AttachHandle(nullptr);
    return;
  }
  file.AttachHandle(opened);
  LARGE_INTEGER distance = {};
  SetFilePointerEx(opened, distance, nullptr, FILE_END);
}

TPermanentFileWriter::~TPermanentFileWriter() noexcept {
  void* h = file.DetachHandle();
  if (THandle::IsValidHandle(h)) CloseHandle(h);
}

void TPermanentFileWriter::StreamWriteString(const char* text, size_t length) {
  if (!file.IsValidHandle() || !text || length == 0) return;
  try {
    const size_t expanded = length + count_line_feeds(text, length);
    char stack_text[kStackText];
    std::string heap_text;
    char* out = stack_text;
    if (expanded > kStackText) {
      heap_text.resize(expanded);
      out = &heap_text[0];
    }
    expand_line_feeds(text, length, out);
    DWORD written = 0;
    WriteFile(file, out, static_cast<DWORD>(expanded), &written, nullptr);
  } catch (const std::bad_alloc&) {
    // No memory for a long line's copy: dropped like any unwritable text.
  }
}
