#include "com/classes/delivery_composition.h"

#include "com/classes/installed_settings.h"
#include "ports/portable/curl_stream.h"
#include "ports/portable/openssl_crypto.h"
#include "ports/portable/time_zone.h"
#include "ports/windows/adapters.h"

namespace tavrix::com {

ComposedDelivery::ComposedDelivery()
    : files_(ports::make_windows_files()),
      crypto_(ports::make_openssl_crypto()),
      clock_(ports::make_windows_clock()) {}

mail::DeliveryPorts ComposedDelivery::ports() const {
    return {{*files_, *crypto_, *clock_, &ports::utc_offset_at}, &ports::make_curl_mail_stream, [] {
                return load_installed_settings().connection;
            }};
}

}  // namespace tavrix::com
