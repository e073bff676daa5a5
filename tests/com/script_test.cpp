// Scripts run by the platform's own script host. It reports no unhandled error, so each script's
// last line is a sentinel; before it stands one line for each fact that did not hold.

#include "tests/com/host_database.h"
#include "tests/com/run_program.h"

namespace tavrix::test {
namespace {

// The output of `cscript script argument`, in the console's code page.
std::string run(const base::Text& script, const base::Text& argument) {
    return run_program(u"cscript.exe //nologo \"" + script + u"\" \"" + argument + u"\"");
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

}  // namespace
}  // namespace tavrix::test
