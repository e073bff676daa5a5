#pragma once

#include <string>

#include "base/error.h"

namespace tavrix::test {

/// What the error says that `call` throws; empty when it throws none.
template <typename Call>
std::string thrown_by(Call call) {
    try {
        call();
    } catch (const base::AutomationError& error) {
        return error.what();
    }
    return {};
}

}  // namespace tavrix::test
