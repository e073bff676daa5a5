#include "dialogs/resize.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tavrix::dialogs {
namespace {

/// Rounds what it is given, as controls do, and may refuse a move.
struct RoundingControl final : ResizedControl {
    RoundingControl(std::string& log, int refused) : told(log), refused_move(refused) {}
    ControlPlace place() override {
        if (refused_move == 0) throw 438;
        return now;
    }
    void move(const ControlPlace& to) override {
        if (moves == 0 && tells) tells->fit({150, 100});
        told += ++moves == refused_move ? "refused " : "";
        if (moves == refused_move) throw 383;
        now = {std::floor(to.left), std::floor(to.top), std::floor(to.width),
               std::floor(to.height)};
        for (const double value : {now.left, now.top, now.width, now.height, size})
            told += std::to_string(std::lround(value)) + ' ';
    }
    std::optional<double> font_size() override { return size; }
    void set_font_size(double points) override { size = std::floor(points); }

    std::string& told;
    int refused_move;
    Resize* tells = nullptr;
    int moves = 0;
    ControlPlace now{10, 20, 33, 15};
    double size = 9;
};

TEST(Resize, ScalesFromTheFirstSizesAndLeavesAloneWhatRefuses) {
    std::string told;
    std::vector<std::unique_ptr<ResizedControl>> controls;
    for (const int refused_move : {99, 2, 0})
        controls.push_back(std::make_unique<RoundingControl>(told, refused_move));
    Resize resize({100, 100}, {80, 90}, std::move(controls));
    // Minimised; below the smallest size; and no error has piled up in the end.
    for (const FormSize form : {FormSize{133, 177}, {0, 0}, {200, 150}, {10, 10}, {100, 100}})
        resize.fit(form);
    EXPECT_EQ(told,
              "13 35 43 26 11 13 35 43 26 11 20 30 66 22 13 refused 8 18 26 13 7 10 20 33 15 9 ");
    resize.fit({NAN, 100});
    told.clear();
    resize.fit({9e9, 9e9});
    EXPECT_TRUE(told.ends_with(" 2160 ")) << told;
}

TEST(Resize, FitsAgainWhenAControlTellsTheFormItsSize) {
    std::string told;
    auto telling = std::make_unique<RoundingControl>(told, 99);
    RoundingControl& control = *telling;
    std::vector<std::unique_ptr<ResizedControl>> controls;
    controls.push_back(std::make_unique<RoundingControl>(told, 1));
    controls.push_back(std::move(telling));
    Resize resize({100, 100}, {1, 1}, std::move(controls));
    control.tells = &resize;
    resize.fit({200, 200});
    EXPECT_EQ(told, "refused 20 40 66 30 18 15 20 49 15 9 ");
}

}  // namespace
}  // namespace tavrix::dialogs
