#include "tour.h"

#include <qz/qz.h>

void tour_errors() {
  section("Exceptions carry named values");
  try {
    SetLastError(ERROR_FILE_NOT_FOUND);
    ThrowSystemException();
  } catch (ESystemException& e) {
    e.put_value("File", "c:\\missing.txt");
    std::printf("%s\n", e.what());
  }

  section("A single \"Text\" prints bare");
  std::printf("%s\n", EGeneric({"Text", "nothing else to say"}).what());

  section("COM errors");
  try {
    _com_issue_error(E_ACCESSDENIED);
  } catch (const EComException& e) {
    std::printf("%s\n", e.what());
  }
}
