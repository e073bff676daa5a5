#pragma once

#include <string>

#include "pdfsign/first_page.h"

namespace tavrix::pdfsign {

/// Where a box stands on a page, and how it is turned to be shown upright.
struct Placement {
    Rectangle rectangle;
    /// The first four numbers of a form's matrix.
    std::string matrix;
};

/// A box of that size in points in the page's top left corner as it is shown, made smaller where
/// the page is too narrow, below other fields that stand there.
Placement place_box(FirstPage& page, double width, double height);

}  // namespace tavrix::pdfsign
