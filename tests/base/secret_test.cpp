#include "base/secret.h"

#include <gtest/gtest.h>

#include "tests/support/freed_memory.h"

namespace tavrix::base {
namespace {

static_assert(!std::is_convertible_v<SecretUtf8, std::string> &&
              !std::is_convertible_v<SecretUtf8, std::string_view> &&
              !std::is_convertible_v<std::string_view, SecretUtf8> &&
              !std::is_copy_constructible_v<SecretUtf8>);

TEST(Secret, LeavesNothingBehindHoweverItEnds) {
    test::look_for_in_freed_memory("hunter2");
    SecretUtf8 grown;
    for (int i = 0; i < 100; ++i) grown += "hunter2";
    SecretText wide = from_secret_utf8(grown.view());
    wide = SecretText(u"short");
    SecretUtf8 moved = std::move(grown);
    EXPECT_TRUE(grown.empty());  // NOLINT: what a moved one still has is the question
    moved = moved.copy();
    EXPECT_EQ(moved.size(), 700u);
    moved.clear();
    { const SecretBytes taken = take_secret(Bytes(3, 7)); }
    { const SecretUtf8 utf8 = to_secret_utf8(u"hunter2"); }
    EXPECT_EQ(test::found_in_freed_memory(), 0);
    { const std::string careless("the password is hunter2"); }
    EXPECT_EQ(test::found_in_freed_memory(), 1) << "the watch sees";
}

}  // namespace
}  // namespace tavrix::base
