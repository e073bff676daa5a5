#pragma once

#include <memory>

#include "com/classes/cmessage_class.h"
#include "com/dispatch_object.h"
#include "com/parameter.h"
#include "mail/cls_send_mail.h"
#include "mail/cmessage.h"

namespace tavrix::com {

/// Arguments only: whatever the system can turn into text in the caller's locale.
template <>
struct Codec<mail::NullableText> {
    static constexpr VARTYPE type = VT_VARIANT;
    static mail::NullableText read(const VARIANT& source, LCID locale) {
        if (source.vt == VT_EMPTY || source.vt == VT_NULL) return {};
        try {
            return {Codec<base::Text>::read(source, locale)};
        } catch (const ArgumentError&) {
            return {};
        }
    }
};

/// Results only: the message as an object of its class, or Nothing.
template <>
struct Codec<std::shared_ptr<mail::CMessage>> {
    static constexpr VARTYPE type = VT_DISPATCH;
    static windows::Variant write(std::shared_ptr<mail::CMessage> message) {
        if (!message) return windows::ComPointer<IDispatch>();
        return make_object(cmessage_class, std::move(message));
    }
};

}  // namespace tavrix::com
