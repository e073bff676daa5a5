// The trace log where it really stands: on drive C, through the system's own files.

#include "frame/trace_log.h"

#include <fstream>
#include <sstream>

#include "ports/windows/adapters.h"
#include "tests/com/late_host.h"
#include "tests/support/fake_clock.h"

namespace tavrix::test {
namespace {

constexpr const wchar_t* folder = L"C:\\quensql";
constexpr const wchar_t* switch_file = L"C:\\quensql\\debug-Info.quen";
constexpr const char* log_file = "C:\\quensql\\debug-info.dta.quen";

TEST(TraceOnDriveC, WritesThePolishDateAndTheCodePageBesideOthers) {
    const auto files = ports::make_windows_files();
    const auto locale = ports::make_windows_locale();
    const auto code_page = ports::make_windows_code_page();
    FakeClock clock;
    frame::TraceSwitch is_on = false;
    frame::TraceLog log{is_on, {*files, clock, *locale, *code_page}};
    // The user's own way of writing a date, whatever this system has for Poland.
    wchar_t usual_format[80] = L"";
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, usual_format, 80);
    SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, L"yyyy-MM-dd");
    EXPECT_TRUE(CreateDirectoryW(folder, nullptr));
    files->append(windows::text_from_wide(switch_file), {});

    clock.now = {2026, 11, 14, 21, 49, 5};
    log.look_for_switch();
    log.write(u"C_Getmail:DisconnectMe:2k");
    {
        // Somebody looks at the log meanwhile, and somebody else writes into it.
        const std::ifstream reader(log_file);
        std::ofstream(log_file, std::ios::app | std::ios::binary) << "-\r\n";
        clock.now = {2026, 1, 2, 0, 0, 0};
        log.write(u"Połączenie");
    }
    std::ostringstream written;
    written << std::ifstream(log_file, std::ios::binary).rdbuf();
    EXPECT_EQ(written.str(),
              "2026-11-14 21:49:05:10.0.36:C_Getmail:DisconnectMe:2k\r\n"
              "-\r\n"
              "2026-01-02:10.0.36:Po\xB3\xB9"
              "czenie\r\n");
    DeleteFileA(log_file);
    DeleteFileW(switch_file);
    RemoveDirectoryW(folder);
    SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, usual_format);
}

}  // namespace
}  // namespace tavrix::test
