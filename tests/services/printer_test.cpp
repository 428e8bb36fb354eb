#include <qz/errors/exceptions.h>
#include <qz/services/printer.h>

#include "support/error_code.h"
#include "support/temp_path.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace {

using qz_test::CodeThrownBy;

// Fixed names, so that a run that was cut off is cleaned up by the next.
wchar_t kDriver[] = L"qz test driver";
wchar_t kPrinter[] = L"qz test printer";
wchar_t kDriverFile[] = L"wineps.drv";
wchar_t kPort[] = L"FILE:";
wchar_t kProcessor[] = L"WinPrint";
wchar_t kDataType[] = L"RAW";

void RemoveTestPrinter() {
  PRINTER_DEFAULTSW all = {nullptr, nullptr, PRINTER_ALL_ACCESS};
  HANDLE h = nullptr;
  if (OpenPrinterW(kPrinter, &h, &all)) {
    DeletePrinter(h);
    ClosePrinter(h);
  }
  DeletePrinterDriverW(nullptr, nullptr, kDriver);
}

// A fresh machine has no printers: the suite adds its own on the FILE: port
// with the system's PostScript driver.
class Printers : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    RemoveTestPrinter();
    DRIVER_INFO_3W driver = {3, kDriver, nullptr, kDriverFile, kDriverFile, kDriverFile,
                             nullptr, nullptr, nullptr, nullptr};
    ASSERT_TRUE(AddPrinterDriverW(nullptr, 3, reinterpret_cast<BYTE*>(&driver))) << GetLastError();
    PRINTER_INFO_2W printer = {};
    printer.pPrinterName = kPrinter;
    printer.pPortName = kPort;
    printer.pDriverName = kDriver;
    printer.pPrintProcessor = kProcessor;
    printer.pDatatype = kDataType;
    HANDLE h = AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&printer));
    ASSERT_NE(h, nullptr) << GetLastError();
    ClosePrinter(h);
  }
  static void TearDownTestSuite() { RemoveTestPrinter(); }

  // A TPrinter's destructor may throw, which a fixture's may not.
  std::unique_ptr<TPrinter> owned{new TPrinter(kPrinter, PRINTER_ALL_ACCESS)};
  TPrinter& printer = *owned;
};

TEST_F(Printers, OpeningAMissingPrinterNamesWhatWasAsked) {
  try {
    TPrinter missing(L"qz no such printer", PRINTER_ACCESS_USE);
    FAIL();
  } catch (const ESystemException& e) {
    EXPECT_EQ(qz_test::CodeOf(e), ERROR_INVALID_PRINTER_NAME);
    EXPECT_EQ(static_cast<unsigned long>(e.get_value("Access")), static_cast<unsigned long>(PRINTER_ACCESS_USE));
    EXPECT_EQ(static_cast<std::wstring>(e.get_value("Name")), L"qz no such printer");
  }
}

// One value of each kind the writer tells apart: text (wide, narrow and
// bstr take one path), int and unsigned long, empty, and any other kind,
// which is silently not written: reading it back gives the missing-value code.
TEST_F(Printers, PrinterDataOfTheSupportedKindsReadsBackAndOthersAreNotWritten) {
  const std::pair<_value_t, _value_t> cases[] = {  // written, read (empty: not written)
      {_value_t(L"wide"), _value_t(L"wide")},         {_value_t(L""), _value_t(L"")},
      {_value_t(4000000000ul), _value_t(4000000000ul)}, {_value_t(-2), _value_t(4294967294ul)},
      {_value_t(), _value_t()},                       {_value_t(2.5), _value_t()},
  };
  int n = 0;
  for (const auto& c : cases) {
    const std::wstring name = L"value " + std::to_wstring(n++);
    printer.SetPrinterDataW(name.c_str(), c.first);
    if (c.second.empty()) {
      EXPECT_EQ(CodeThrownBy([&] { printer.GetPrinterDataW(name.c_str()); }), ERROR_FILE_NOT_FOUND) << n;
      continue;
    }
    const _value_t read = printer.GetPrinterDataW(name.c_str());
    EXPECT_EQ(read.type(), c.second.type()) << n;
    EXPECT_TRUE(read == c.second) << n;
  }
}

// Also the listing of printers.
TEST_F(Printers, TheBufferIsReplacedOnlyByAFilledOne) {
  AutoPtr<_PRINTER_INFO_1W> printers;
  _PRINTER_INFO_1W* const before = printers.allocate(16);
  // Nothing to list (no connections to other machines' printers): the first
  // call succeeds and the buffer stays.
  EXPECT_EQ(TPrinter::EnumPrintersW(printers, PRINTER_ENUM_CONNECTIONS, nullptr), 0u);
  EXPECT_EQ(printers.get(), before);
  // A first call refused for another reason than the buffer throws with its
  // code (Windows, without a network provider, too).
  const int refused = CodeThrownBy([&] { TPrinter::EnumPrintersW(printers, PRINTER_ENUM_NETWORK, nullptr); });
  EXPECT_TRUE(refused == -1 || refused == ERROR_INVALID_FLAGS) << refused;
  EXPECT_EQ(printers.get(), before);
  // Something to list: a filled buffer replaces the old one.
  const DWORD count = TPrinter::EnumPrintersW(printers, PRINTER_ENUM_LOCAL, nullptr);
  EXPECT_NE(printers.get(), before);
  bool found = false;
  for (DWORD i = 0; i < count; ++i) found |= std::wstring(printers[i].pName) == kPrinter;
  EXPECT_TRUE(found);
}

TEST_F(Printers, ControlsAJobStartedForTheTest) {
  qz_test::TempPath output(L"", L".prn");
  DOC_INFO_1W document = {const_cast<wchar_t*>(L"qz test document"),
                          const_cast<wchar_t*>(output.wide()), kDataType};
  const DWORD job = StartDocPrinterW(printer, 1, reinterpret_cast<BYTE*>(&document));
  ASSERT_NE(job, 0u) << GetLastError();
  DWORD written = 0;
  WritePrinter(printer, const_cast<char*>("%!PS\n"), 5, &written);

  AutoPtr<_JOB_INFO_1W> info;
  printer.GetJobInfo(info, job);
  EXPECT_EQ(info->JobId, job);
  EXPECT_EQ(std::wstring(info->pDocument), L"qz test document");
  printer.ControlJob(job, JOB_CONTROL_PAUSE);
  printer.ControlJob(job, JOB_CONTROL_RESUME);
  EXPECT_FALSE(printer.ControlJobSilent(job + 1000, JOB_CONTROL_PAUSE));
  EXPECT_TRUE(printer.ControlJobSilent(job, JOB_CONTROL_CANCEL));
  EndDocPrinter(printer);
}

}  // namespace
