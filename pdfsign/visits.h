#pragma once

#include <qpdf/QPDFObjectHandle.hh>
#include <set>

namespace tavrix::pdfsign {

/// Remembers where a walk through a document has been: references may lead in circles, and to one
/// place by so many ways that the walk would never end.
class Visits {
  public:
    /// True the first time that it is asked about `object`. One without a number stands in one
    /// place only, so it is always new.
    bool is_first(QPDFObjectHandle object) {
        ++count_;
        return !object.isIndirect() || seen_.insert(object.getObjGen()).second;
    }
    /// How often it was asked.
    std::size_t count() const { return count_; }

  private:
    std::set<QPDFObjGen> seen_;
    std::size_t count_ = 0;
};

}  // namespace tavrix::pdfsign
