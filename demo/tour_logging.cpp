#include "tour.h"

#include <qz/errors/generic.h>
#include <qz/core/throw.h>
#include <qz/logging/file_writer.h>
#include <qz/logging/global_streams.h>
#include <qz/logging/permanent_file_writer.h>

#include <windows.h>

#include <cstdio>
#include <string>

namespace {

std::string temp_file_name(const char* stem) {
  char folder[MAX_PATH];
  GetTempPathA(MAX_PATH, folder);
  return std::string(folder) + stem;
}

std::string read_file(const std::string& name) {
  std::string bytes;
  if (FILE* file = std::fopen(name.c_str(), "rb")) {
    char buffer[4096];
    for (size_t got; (got = std::fread(buffer, 1, sizeof buffer, file)) > 0;) bytes.append(buffer, got);
    std::fclose(file);
  }
  return bytes;
}

// Line ends made visible, so that CR LF and LF can be told apart.
std::string visible_line_ends(const std::string& text) {
  std::string shown;
  for (char c : text) shown += c == '\r' ? std::string("\\r") : c == '\n' ? std::string("\\n") : std::string(1, c);
  return shown;
}

long long file_size(const char* name) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExA(name, GetFileExInfoStandard, &data)) return 0;
  return (static_cast<long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

void log_some_statements() {
  TDebugStreamSession(Error) << "tour: " << 3 << " items, ratio " << 0.25 << ", done " << true << '\n';
  try {
    ThrowSystemException(ERROR_ACCESS_DENIED);
  } catch (const EGeneric& e) {
    TDebugStreamSession(Error) << "caught " << e << '\n';
  }
  const unsigned char bytes[] = {0x0A, 0xFF, 0x51, 0x7A};
  Error.Dump(bytes, sizeof bytes) << " <- four bytes\n";
}

}  // namespace

void tour_logging() {
  section("Debug streams: Error with a file writer added");
  const std::string plain = temp_file_name("qz-tour-error-copy.log");
  const std::string permanent = temp_file_name("qz-tour-error-permanent.log");
  DeleteFileA(plain.c_str());
  DeleteFileA(permanent.c_str());
  const long long error_log_before = file_size("c:\\error.log");

  // Error also writes to the console: what is printed so far goes out first.
  std::fflush(stdout);
  SmartPtr<TStreamWriter> copy(new TFileWriter(plain));
  SmartPtr<TStreamWriter> kept_open(new TPermanentFileWriter(permanent.c_str()));
  Error.AddWriter(copy);
  Error.AddWriter(kept_open);
  log_some_statements();
  Error.RemoveWriter(kept_open);
  Error.RemoveWriter(copy);
  kept_open.reset();  // closes the file

  const std::string text = read_file(plain);
  int number = 0;
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find('\n', start);
    const size_t stop = end == std::string::npos ? text.size() : end;
    show(("TFileWriter line " + std::to_string(++number)).c_str(), "\"" + text.substr(start, stop - start) + "\"");
    start = stop + 1;
  }
  const std::string expanded = read_file(permanent);
  show("TPermanentFileWriter, first line", "\"" + visible_line_ends(expanded.substr(0, expanded.find('\n') + 1)) + "\"");
  show("bytes: file writer / permanent writer",
       std::to_string(text.size()) + " / " + std::to_string(expanded.size()) + " (each line feed gains a CR)");
  show("c:\\error.log grew by", std::to_string(file_size("c:\\error.log") - error_log_before) + " bytes");
  DeleteFileA(plain.c_str());
  DeleteFileA(permanent.c_str());
}
