#include "dialogs/informator.h"

#include <gtest/gtest.h>

#include "dialogs/button_rows.h"

namespace tavrix::dialogs {
namespace {

using base::Text;
using Buttons = std::vector<InformatorButton>;

TEST(Informator, ButtonsKeepTheirNumbersAndNoTwoTheSameKey) {
    const InformatorForm form = informator_form(InformatorRecord{
        u" Uwaga\r\n!",
        u"a\rb\nc\r\nd",
        {u"&Tak", u"  ", u"&Nie i & tyle", u"A && &t &u", u"x\r\ny&", u"&ł", u"&Ł"}});
    EXPECT_EQ(form.title, u"Uwaga  !");
    EXPECT_EQ(form.text, u"a\r\nb\r\nc\r\nd");
    EXPECT_EQ(form.buttons, (Buttons{{0, u"&Tak"},
                                     {2, u"&Nie i  tyle"},
                                     {3, u"A && t &u"},
                                     {4, u"x  y"},
                                     {5, u"&ł"},
                                     {6, u"Ł"}}));
    EXPECT_TRUE(informator_form(InformatorRecord{u"", u"", {u"", u" "}}).buttons.empty());
    EXPECT_EQ(copied_text(form),
              u"---------------------------\r\nUwaga  !\r\n---------------------------\r\n"
              u"a\r\nb\r\nc\r\nd\r\n---------------------------\r\n"
              u"Tak   Nie i  tyle   A & t u   x  y   ł   Ł   \r\n---------------------------\r\n");
}

TEST(Informator, OutcomesAreAtMostFiveAndAnUnknownOneIsNotChosen) {
    struct Case {
        std::int32_t count, outcome;
        std::vector<std::int32_t> numbers;
        std::optional<std::int32_t> chosen;
    };
    for (const Case& c : {Case{-7, 0, {}, {}}, Case{3, 2, {0, 2}, 2}, Case{3, 1, {0, 2}, {}},
                          Case{9, 4, {0, 2, 3, 4}, 4}, Case{4, -1, {0, 2, 3}, {}}}) {
        SCOPED_TRACE(c.count);
        const InformatorForm form =
            informator_form(OrderInformatorRecord{u"",
                                                  u"",
                                                  {u"", u"dwa"},
                                                  {u"&a", u" ", u"&a", u"d", u"e"},
                                                  c.count,
                                                  u"w\0x",
                                                  c.outcome});
        ASSERT_TRUE(form.order);
        std::vector<std::int32_t> numbers;
        for (const InformatorButton& outcome : form.order->outcomes)
            numbers.push_back(outcome.number);
        EXPECT_EQ(numbers, c.numbers);
        EXPECT_EQ(form.order->outcome, c.chosen);
        EXPECT_EQ(form.buttons, (Buttons{{2, u"dwa"}})) << "the first one's number is 1";
    }
}

TEST(Informator, CutsWhatNoWindowCanShow) {
    const auto shown = [](Text text) {
        return informator_form(InformatorRecord{u"", std::move(text), {}});
    };
    EXPECT_EQ(shown(Text(64'000, u'x')).text, Text(64'000, u'x'));
    const InformatorForm large = shown(Text(63'999, u'x') + u"\U0001F600" + Text(1'000'000, u'\0'));
    EXPECT_EQ(large.text, Text(63'999, u'x') +
                              u"…\r\n\r\n[Tekst skrócony: pokazano 64\u00A0000 z "
                              u"1\u00A0064\u00A0001 znaków. Ctrl+C kopiuje całość.]");
    EXPECT_EQ(large.whole_text, Text(63'999, u'x') + u"\U0001F600" + Text(1'000'000, u' '));

    EXPECT_EQ(cut_caption(u"123456", 5), u"1234…");
    EXPECT_EQ(cut_caption(u"123&456", 5), u"123…");
    EXPECT_EQ(cut_caption(u"12 && 56", 6), u"12 &&…");
}

TEST(ButtonRows, StandInOneRowOrInColumnsThatFillTheRoom) {
    EXPECT_EQ(ButtonRows({{50, 14}, {70, 22}}, 200, 4).places,
              (std::vector<PixelPlace>{{76, 0, {50, 22}}, {130, 0, {70, 22}}}));
    const ButtonRows rows({{50, 14}, {90, 14}, {60, 30}}, 196, 4);
    EXPECT_EQ(rows.places,
              (std::vector<PixelPlace>{{0, 0, {96, 14}}, {100, 0, {96, 14}}, {0, 18, {96, 30}}}));
    EXPECT_EQ(rows.height, 48);
    EXPECT_EQ(ButtonRows({{500, 14}}, 100, 4).places, (std::vector<PixelPlace>{{0, 0, {100, 14}}}))
        << "never wider than the room";
    EXPECT_EQ(ButtonRows({}, 100, 4).height, 0);
}

}  // namespace
}  // namespace tavrix::dialogs
