#pragma once

#include <memory>

#include "mail/delivery.h"

namespace tavrix::com {

/// What sending a message takes on Windows, by the settings file as each sending finds it.
class ComposedDelivery {
  public:
    ComposedDelivery();
    /// Valid as long as this object.
    mail::DeliveryPorts ports() const;

  private:
    std::unique_ptr<ports::DataFiles> files_;
    std::unique_ptr<ports::Crypto> crypto_;
    std::unique_ptr<ports::Clock> clock_;
};

}  // namespace tavrix::com
