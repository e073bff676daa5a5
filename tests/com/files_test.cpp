// Files as a Windows host has them: long paths, Polish letters, other programs that hold them.

#include <utility>

#include "base/error.h"
#include "ports/windows/adapters.h"
#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

using windows::wide;

class WindowsFiles : public testing::Test {
  protected:
    void SetUp() override {
        wchar_t temporary[MAX_PATH];
        GetTempPathW(MAX_PATH, temporary);
        top_ = windows::text_from_wide(temporary) + u"zażółć";
        // Two folders and a name that make more than 260 characters.
        folder_ = u"\\\\?\\" + top_ + u"\\" + base::Text(120, u'ś');
        for (const base::Text& path : {u"\\\\?\\" + top_, folder_, deep()})
            CreateDirectoryW(wide(path), nullptr);
    }
    void TearDown() override {
        for (const char16_t* name : {u"\\p.zip", u"\\p.zip.001"}) DeleteFileW(wide(deep() + name));
        for (const base::Text& path : {deep(), folder_, u"\\\\?\\" + top_})
            RemoveDirectoryW(wide(path));
    }
    base::Text deep() const { return folder_ + u"\\" + base::Text(120, u'ć'); }

    std::unique_ptr<ports::DataFiles> files_ = ports::make_windows_files();
    base::Text top_;
    base::Text folder_;
};

TEST_F(WindowsFiles, AHostCutsAFileAtALongPath) {
    const base::Text path = deep().substr(4) + u"\\p.zip";
    const auto writer = files_->create(path, ports::Readers::owner);
    writer->write(base::bytes_of("PK"));
    EXPECT_FALSE(files_->is_file(path)) << "not before it is whole";
    writer->keep();
    EXPECT_EQ(answer(create(u"Tavrix.KseF_comm"), u"PodzielPlik", {path, deep().substr(4)}),
              "text " + base::to_utf8(path + u".001"));
    const auto piece = files_->open(path + u".001");
    EXPECT_EQ(piece->size(), 2u);
    // What is being read does not change.
    EXPECT_THROW(files_->remove(path + u".001"), base::AutomationError);
    files_->wipe(path);
    EXPECT_FALSE(files_->is_file(path));
}

}  // namespace
}  // namespace tavrix::test
