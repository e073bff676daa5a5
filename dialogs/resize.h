#pragma once

#include <memory>
#include <optional>
#include <vector>

namespace tavrix::dialogs {

struct FormSize {
    double width = 0;
    double height = 0;
    bool operator==(const FormSize&) const = default;
};

/// In its form's units, whichever those are.
struct ControlPlace {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
};

/// A control on a form. Whatever any of these throws says that this control has no place, or takes
/// no other one.
class ResizedControl {
  public:
    virtual ~ResizedControl() = default;
    virtual ControlPlace place() = 0;
    virtual void move(const ControlPlace& place) = 0;
    /// Nothing for a control without letters.
    virtual std::optional<double> font_size() = 0;
    virtual void set_font_size(double size) = 0;
};

/// Keeps a form's controls where they were in proportion to the form: place, size and letters. It
/// always scales from the first sizes, because controls answer with another value than they were
/// given, and those errors would pile up.
class Resize {
  public:
    /// `first` is the form's size now. Below `smallest` nothing shrinks any more.
    Resize(FormSize first, FormSize smallest,
           std::vector<std::unique_ptr<ResizedControl>> controls);

    /// Fits the controls to the form's new size. A minimised form, which has none, changes nothing;
    /// a control that refuses once is left alone from then on. A
    /// control's move may tell the form its size again: that one is fitted when this is done.
    void fit(FormSize form) noexcept;

  private:
    struct Remembered {
        std::unique_ptr<ResizedControl> control;
        ControlPlace place;
        std::optional<double> font_size;
        bool refuses;
    };
    void fit_controls(FormSize form) noexcept;

    FormSize first_;
    FormSize smallest_;
    std::vector<Remembered> controls_;
    FormSize newest_;
    bool is_fitting_ = false;
};

}  // namespace tavrix::dialogs
