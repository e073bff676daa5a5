#include "mail/cls_get_mail.h"

namespace tavrix::mail {

using base::Text;

bool ClsGetMail::cmdGetMail(const Text& /*host*/, std::int32_t /*port*/, const Text& /*user*/,
                            const base::SecretText& /*Pass*/, bool /*Delete*/, const Text& /*opis*/,
                            const Text& /*temat*/, const Text& /*Katalog*/) noexcept {
    return false;
}

std::shared_ptr<CMessage> ClsGetMail::cmdGetMailM(const Text& /*host*/, std::int32_t /*port*/,
                                                  const Text& /*user*/,
                                                  const base::SecretText& /*Pass*/, bool /*Delete*/,
                                                  const Text& /*Katalog*/,
                                                  bool /*czyssl*/) noexcept {
    return nullptr;
}

}  // namespace tavrix::mail
