#include <qz/logging/file_writer.h>

#include <stdio.h>

TFileWriter::TFileWriter(const std::string& name_) : name(name_) {}

TFileWriter::~TFileWriter() = default;

// Opening for every write leaves the file free between writes: it can be
// moved, deleted or read by others. Binary append keeps the line feeds as the
// caller wrote them, whatever translation mode the process set as default.
void TFileWriter::StreamWriteString(const char* text, size_t length) {
  if (!text || length == 0) return;
  FILE* file = fopen(name.c_str(), "a+b");
  if (!file) return;
  fwrite(text, 1, length, file);
  fclose(file);
}
