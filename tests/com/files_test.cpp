// Files as a Windows host has them: long paths, Polish letters, programs that hold them.

#include "base/error.h"
#include "ports/windows/adapters.h"
#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

TEST(WindowsFiles, AHostCutsAFileAtALongPath) {
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    const base::Text top = windows::text_from_wide(temporary) + base::Text(120, u'ś');
    const base::Text folder = top + u"\\" + base::Text(120, u'ć');
    for (const base::Text& path : {top, folder})
        CreateDirectoryW(windows::wide(u"\\\\?\\" + path), nullptr);
    const base::Text path = folder + u"\\p.zip";
    const auto files = ports::make_windows_files();
    const auto writer = files->create(path, ports::Readers::owner);
    writer->write(base::bytes_of("PK"));
    EXPECT_FALSE(files->is_file(path)) << "not before it is whole";
    writer->keep();
    EXPECT_EQ(answer(create(u"Tavrix.KseF_comm"), u"PodzielPlik", {path, folder}),
              "text " + base::to_utf8(path + u".001"));
    {
        const auto piece = files->open(path + u".001");
        EXPECT_EQ(piece->size(), 2u);
        EXPECT_THROW(files->remove(path + u".001"), base::AutomationError) << "it is being read";
    }
    files->remove(path + u".001");
    files->wipe(path);
    for (const base::Text& made : {folder, top})
        EXPECT_TRUE(RemoveDirectoryW(windows::wide(u"\\\\?\\" + made))) << "nothing is left";
}

}  // namespace
}  // namespace tavrix::test
