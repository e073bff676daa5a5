// The trace log where it really stands: on drive C, through the system's own files.

#include "frame/trace_log.h"

#include <fstream>
#include <sstream>

#include "ports/windows/adapters.h"
#include "tests/com/late_host.h"
#include "tests/support/fake_clock.h"
#include "windows/handles.h"

namespace tavrix::test {
namespace {

constexpr const wchar_t* folder = L"C:\\quensql";
constexpr const wchar_t* switch_file = L"C:\\quensql\\debug-Info.quen";
constexpr const wchar_t* log_file = L"C:\\quensql\\debug-info.dta.quen";
constexpr const char* log_file_name = "C:\\quensql\\debug-info.dta.quen";

class TraceOnDriveC : public testing::Test {
  protected:
    const std::unique_ptr<ports::Files> files = ports::make_windows_files();
    const std::unique_ptr<ports::Locale> locale = ports::make_windows_locale();
    const std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    FakeClock clock;
    frame::TraceSwitch is_on = false;
    wchar_t usual_format[80] = L"";
    frame::TraceLog log{is_on, {*files, clock, *locale, *code_page}};

    // The user's own way of writing a date, whatever this system has for Poland.
    static void write_dates(const wchar_t* format) {
        SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, format);
    }
    void SetUp() override {
        GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, usual_format, 80);
        write_dates(L"yyyy-MM-dd");
        clock.now = {2026, 11, 14, 21, 49, 5};
        ASSERT_TRUE(CreateDirectoryW(folder, nullptr));
    }
    void TearDown() override {
        write_dates(usual_format);
        DeleteFileW(log_file);
        DeleteFileW(switch_file);
        RemoveDirectoryW(folder);
    }
    static std::string written() {
        std::ostringstream content;
        content << std::ifstream(log_file_name, std::ios::binary).rdbuf();
        return content.str();
    }
};

TEST_F(TraceOnDriveC, WritesThePolishDateAndTheCodePageBesideOthers) {
    files->append(u"c:\\quensql\\debug-Info.quen", {});
    log.look_for_switch();
    log.write(u"C_Getmail:DisconnectMe:2k");
    {
        // Somebody looks at the log meanwhile, and somebody else writes into it.
        const std::ifstream reader(log_file_name);
        std::ofstream(log_file_name, std::ios::app | std::ios::binary) << "-\r\n";
        clock.now = {2026, 1, 2, 0, 0, 0};
        log.write(u"Połączenie");
    }
    {
        const windows::KernelHandle locked(
            CreateFileW(log_file, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_NE(locked.get(), INVALID_HANDLE_VALUE);
        log.write(u"lost");
    }
    EXPECT_EQ(written(),
              "2026-11-14 21:49:05:10.0.36:C_Getmail:DisconnectMe:2k\r\n"
              "-\r\n"
              "2026-01-02:10.0.36:Po\xB3\xB9"
              "czenie\r\n");
    DeleteFileW(log_file);
    DeleteFileW(switch_file);
    RemoveDirectoryW(folder);
    log.write(u"no folder");
    EXPECT_FALSE(files->is_file(u"C:\\quensql\\debug-info.dta.quen"));
}

}  // namespace
}  // namespace tavrix::test
