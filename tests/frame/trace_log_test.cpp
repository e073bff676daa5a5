#include "frame/trace_log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include "mail/trace_marks.h"
#include "ports/native/adapters.h"
#include "tests/support/failing.h"
#include "tests/support/fake_clock.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::frame {
namespace {

namespace fs = std::filesystem;

class TraceLogTest : public testing::Test {
  protected:
    test::ScratchFolder drive;
    fs::path folder = drive.path() / "quensql";
    fs::path switch_file = folder / "debug-Info.quen";
    fs::path log_file = folder / "debug-info.dta.quen";

    std::unique_ptr<ports::DataFiles> files = ports::make_native_files(drive.path().string());
    std::unique_ptr<ports::Locale> locale = ports::make_native_locale();
    std::unique_ptr<ports::CodePage> code_page = ports::make_native_code_page();
    test::FakeClock clock;
    TraceSwitch is_on = false;
    TraceLog log{is_on, {*files, clock, *locale, *code_page}};

    void SetUp() override { clock.now = {2026, 11, 14, 21, 49, 5}; }
    void turn_on() {
        fs::create_directories(folder);
        std::ofstream(switch_file) << "";
        log.look_for_switch();
    }
    std::string written() const {
        std::ostringstream content;
        content << std::ifstream(log_file, std::ios::binary).rdbuf();
        return content.str();
    }
};

TEST_F(TraceLogTest, WritesALineForEachMarkOnceTheSwitchWasSeen) {
    turn_on();
    ports::Trace& trace = log;
    trace.mark(mail::data_arrival_marks[u"12"]);
    clock.now = {2026, 11, 15, 0, 0, 0};
    trace.mark(mail::socket_error_marks[u"1"], u"10061 Połączenie odrzucone");
    EXPECT_EQ(written(),
              "2026-11-14 21:49:05:10.0.36:C_Getmail:Winsock1_DataArrival:12\r\n"
              "2026-11-15:10.0.36:C_Getmail:Winsock1_Error:1:10061 Po\xB3\xB9"
              "czenie odrzucone\r\n");
}

TEST_F(TraceLogTest, IsOffUntilTheSwitchIsLookedForAndStaysOn) {
    fs::create_directories(switch_file);
    log.look_for_switch();
    EXPECT_FALSE(is_on) << "a folder is no switch";
    fs::remove(switch_file);
    std::ofstream(switch_file) << "";
    log.write(u"x");
    EXPECT_FALSE(fs::exists(log_file)) << "nobody looked for the switch";
    turn_on();
    fs::remove(switch_file);
    TraceLog another(is_on, {*files, clock, *locale, *code_page});
    another.look_for_switch();
    another.write(u"a");
    EXPECT_EQ(written(), "2026-11-14 21:49:05:10.0.36:a\r\n");
}

TEST_F(TraceLogTest, ItsOwnTroubleIsNobodyElses) {
    turn_on();
    test::FailingAt failing;
    test::FailingFiles disk(*files, failing);
    const int calls = test::fail_each_call(failing, test::out_of_space, [&](int) {
        is_on = false;
        TraceLog over_the_disk(is_on, {disk, clock, *locale, *code_page});
        over_the_disk.look_for_switch();
        over_the_disk.write(u"a");
        over_the_disk.write(u"b");
    });
    EXPECT_EQ(calls, 3) << "the switch and two lines";
}

TEST_F(TraceLogTest, TwoInstancesWriteWholeLines) {
    turn_on();
    constexpr int lines = 200;
    const auto write_many = [&](base::TextView entry) {
        const auto own_files = ports::make_native_files(drive.path().string());
        TraceLog own(is_on, {*own_files, clock, *locale, *code_page});
        for (int i = 0; i < lines; ++i) own.write(entry);
    };
    {
        const std::jthread first(write_many, u"first");
        const std::jthread second(write_many, u"second");
    }
    std::map<std::string, int> seen;
    std::istringstream content(written());
    for (std::string line; std::getline(content, line);) ++seen[line];
    EXPECT_EQ(seen.size(), 2u) << "no line in the middle of another";
    EXPECT_EQ(seen["2026-11-14 21:49:05:10.0.36:first\r"], lines);
    EXPECT_EQ(seen["2026-11-14 21:49:05:10.0.36:second\r"], lines);
}

}  // namespace
}  // namespace tavrix::frame
