#include "tour.h"

#include <qz/services/com_file_stream.h>
#include <qz/services/com_initialize.h>
#include <qz/services/com_string_stream.h>
#include <qz/services/printer.h>

#include <sstream>
#include <string>

namespace {

// What a COM consumer does with any IStream: read it to the end.
std::string read_all(IStream* stream) {
  std::string text;
  char chunk[8];
  ULONG read = 0;
  HRESULT hr;
  do {
    hr = stream->Read(chunk, sizeof chunk, &read);
    text.append(chunk, read);
  } while (hr == S_OK);
  return text;
}

void file_and_string_streams() {
  section("COM streams: a file and a string as IStream");
  class CoInitialize com;  // the guard, named next to the function of the same name

  wchar_t folder[MAX_PATH];
  GetTempPathW(MAX_PATH, folder);
  const std::wstring name = std::wstring(folder) + L"qz-tour-stream.txt";
  {
    IStreamPtr file = CComFileStream::OpenFileStream(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                                     CREATE_ALWAYS);
    file->Write("streamed through a file", 23, nullptr);
    LARGE_INTEGER start = {};
    file->Seek(start, STREAM_SEEK_SET, nullptr);
    show("file stream read back", read_all(file));
  }
  DeleteFileW(name.c_str());
  IStreamPtr missing = CComFileStream::OpenFileStream(name.c_str(), GENERIC_READ, 0, OPEN_EXISTING);
  show("opening it again after deleting", missing ? "a stream" : "null (and a line on Debug)");

  std::stringstream text;
  text << "and through a string";
  IStreamPtr string_stream = CComStringStream::OpenStringStream(text);
  show("string stream read back", read_all(string_stream));
}

void ports() {
  section("Printers: the spooler's ports");
  AutoPtr<_PORT_INFO_1W> ports;
  const DWORD count = TPrinter::EnumPortsW(ports, nullptr);
  show("ports", std::to_string(count));
  for (DWORD i = 0; i < count; ++i) {
    const std::wstring port = ports[i].pName;
    show("  port", std::string(port.begin(), port.end()));
  }
}

}  // namespace

void tour_com() {
  file_and_string_streams();
  ports();
}
