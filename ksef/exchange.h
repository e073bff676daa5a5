#pragma once

#include <utility>

#include "ksef/client.h"

namespace tavrix::ksef {

/// An exchange with the service in steps, one function each, which answers whether the next one
/// follows: `challenge() && encrypt() && send()`. Its outcome is a text of the host; nothing is
/// raised.
class Exchange {
  protected:
    /// `unknown` is the text of a failure that no step told of.
    Exchange(KsefPorts& ports, Client& client, base::TextView unknown)
        : ports_(ports), client_(client), result_(unknown) {}

    /// Runs the steps. What one of them throws leaves the text as it stands.
    template <typename Steps>
    base::Text outcome_of(Steps steps) {
        try {
            steps();
        } catch (const std::exception&) {
            // The text says what was known.
        }
        return std::move(result_);
    }

    /// How a step ends the exchange.
    bool fail(base::Text text) {
        result_ = std::move(text);
        return false;
    }

    KsefPorts& ports_;
    Client& client_;
    base::Text result_;
};

}  // namespace tavrix::ksef
