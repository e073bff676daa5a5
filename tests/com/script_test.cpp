// Scripts run by the platform's own script host. It reports no unhandled error, so each script's
// last line is a sentinel; before it stands one line for each fact that did not hold.

#include "tests/com/host_database.h"

namespace tavrix::test {
namespace {

// The output of `cscript script argument`, in the console's code page.
std::string run(const base::Text& script, const base::Text& argument) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    EXPECT_TRUE(CreatePipe(&reader, &writer, &inherited, 0));
    SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writer;
    startup.hStdError = writer;
    base::Text command = u"cscript.exe //nologo \"" + script + u"\" \"" + argument + u"\"";
    PROCESS_INFORMATION process{};
    const BOOL started =
        CreateProcessW(nullptr, reinterpret_cast<wchar_t*>(command.data()), nullptr, nullptr, TRUE,
                       0, nullptr, nullptr, &startup, &process);
    CloseHandle(writer);
    EXPECT_TRUE(started);
    std::string output;
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(reader, buffer, sizeof buffer, &read, nullptr) && read > 0)
        output.append(buffer, read);
    CloseHandle(reader);
    if (started) {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    return output;
}

base::Text script(base::TextView file) {
    return beside_program(u"scripts\\" + base::Text(file));
}

TEST(Scripts, VbScriptUsesTheLibraryAndAdo) {
    HostDatabase database;
    EXPECT_EQ(run(script(u"library.vbs"), database.path()), "KONIEC\r\n");
    EXPECT_EQ(database.stored(u"numer_ksef", 1), ports::Value(u"VBS-1"));
}

TEST(Scripts, JScriptUsesTheLibraryAndAdo) {
    HostDatabase database;
    EXPECT_EQ(run(script(u"library.js"), database.path()), "KONIEC\r\n");
    EXPECT_EQ(database.stored(u"numer_ksef", 1), ports::Value(u"JS-1"));
}

TEST(Scripts, VbScriptCreatesEachClass) {
    EXPECT_EQ(run(script(u"classes.vbs"), beside_program(u"scripts")),
              "CInfo\r\nRejestr\r\nKseF_comm\r\nDrk_Wyd_Ean_cls\r\nDrk_Wyd_Ean_cls813\r\n"
              "Drk_Wyd_Ean_cls128\r\nClsGetMail\r\nCMessage\r\nClsSendMail\r\nclsSocket\r\n"
              "ClsPdfPodpis\r\nKONIEC\r\n");
}

}  // namespace
}  // namespace tavrix::test
