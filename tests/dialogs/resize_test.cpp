#include "dialogs/resize.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace tavrix::dialogs {
namespace {

/// Rounds what it is given, as controls do; refuses from the `refuses_at`th move on.
struct RoundingControl final : ResizedControl {
    RoundingControl(std::string& log, int refusing_move, bool is_placed)
        : told(log), refuses_at(refusing_move), has_place(is_placed) {}
    ControlPlace place() override {
        if (!has_place) throw std::runtime_error("no Left");
        return now;
    }
    void move(const ControlPlace& to) override {
        if (++moves >= refuses_at) {
            told += "refused ";
            throw std::runtime_error("383");
        }
        now = {std::floor(to.left), std::floor(to.top), std::floor(to.width),
               std::floor(to.height)};
        for (const double value : {now.left, now.top, now.width, now.height, size}) {
            told += std::to_string(std::lround(value)) + ' ';
        }
    }
    std::optional<double> font_size() override { return size; }
    void set_font_size(double points) override { size = std::floor(points); }

    std::string& told;
    int refuses_at;
    bool has_place;
    int moves = 0;
    ControlPlace now{10, 20, 33, 15};
    double size = 9;
};

TEST(Resize, ScalesFromTheFirstSizesAndLeavesAloneWhatRefuses) {
    std::string told;
    std::vector<std::unique_ptr<ResizedControl>> controls;
    controls.push_back(std::make_unique<RoundingControl>(told, 99, true));
    controls.push_back(std::make_unique<RoundingControl>(told, 2, true));
    controls.push_back(std::make_unique<RoundingControl>(told, 99, false));
    Resize resize({100, 100}, {80, 90}, std::move(controls));
    const auto fit = [&](FormSize form) {
        told.clear();
        resize.fit(form);
        return told;
    };
    EXPECT_EQ(fit({133, 177}), "13 35 43 26 11 13 35 43 26 11 ");
    EXPECT_EQ(fit({0, 0}), "") << "minimised";
    EXPECT_EQ(fit({200, 150}), "20 30 66 22 13 refused ");
    EXPECT_EQ(fit({10, 10}), "8 18 26 13 7 ") << "the smallest size";
    for (int i = 0; i < 5; ++i) fit({133, 177});
    EXPECT_EQ(fit({100, 100}), "10 20 33 15 9 ") << "no error has piled up";
}

}  // namespace
}  // namespace tavrix::dialogs
