#include "base/base64.h"

#include <gtest/gtest.h>

namespace tavrix::base {
namespace {

// RFC 4648, section 10.
constexpr std::pair<const char*, const char*> vectors[] = {
    {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"},
};

TEST(Base64, PublishedVectorsBothWays) {
    for (const auto& [plain, base64] : vectors) {
        EXPECT_EQ(base64_encode(bytes_of(plain)), base64);
        const ByteView bytes = bytes_of(plain);
        EXPECT_EQ(base64_decode(base64), Bytes(bytes.begin(), bytes.end()));
    }
}

TEST(Base64, GivesBackEveryByteAndSkipsWhiteSpace) {
    Bytes all(256);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i);
    std::string base64 = base64_encode(all);
    for (std::size_t i = 4; i < base64.size(); i += 7) base64.insert(i, "\r\n\t ");
    EXPECT_EQ(base64_decode(base64), all);
}

TEST(Base64, RefusesWhatIsNot) {
    for (const char* bad : {"Zg", "Zg=", "Z===", "Zm9v=", "====", "Zm=v", "Zg==Zg==", "Zm9*",
                            "Zh==", "Zm9=", "Zg-_"}) {
        EXPECT_FALSE(base64_decode(bad)) << bad;
    }
}

}  // namespace
}  // namespace tavrix::base
