#pragma once

#include <array>
#include <qpdf/QPDF.hh>

namespace tavrix::pdfsign {

/// Left, bottom, right, top.
using Rectangle = std::array<double, 4>;

/// The rectangle that `object` is, its corners in order; empty (all zero) for anything else.
Rectangle rectangle_of(QPDFObjectHandle object);

struct FirstPage {
    QPDFObjectHandle page;
    /// What of it is shown.
    Rectangle box{};
    /// How far it is turned clockwise to be shown: 0, 90, 180 or 270.
    int turned = 0;
    /// How many points a unit of its space is.
    double unit = 1;
};

/// Reads no other page. Throws std::runtime_error when there is none that an update could change.
FirstPage find_first_page(QPDF& document);

/// Throws std::runtime_error unless there are as many pages as the document says, and everything
/// that they and the form refer to, directly or not. Reads all of it, but no stream.
void expect_all_pages(QPDF& document);

}  // namespace tavrix::pdfsign
