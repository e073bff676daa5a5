#pragma once

#include <cstdlib>

#include "tests/support/scratch_folder.h"

namespace tavrix::test {

/// Runs shell commands in a folder. Throws unless all succeed.
inline void run_in(const ScratchFolder& folder, const std::string& commands) {
    const std::string script =
        "set -e; cd '" + folder.path().string() + "'; { " + commands + "\n} >/dev/null 2>&1";
    if (std::system(("bash -c \"$(cat <<'END'\n" + script + "\nEND\n)\"").c_str()) != 0)
        throw std::runtime_error("failed: " + commands);
}

/// Lets the openssl program judge the last element of a certificate link over the text before it,
/// from the host on. `key` is a private key in `folder`; throws unless it made the signature.
/// openssl reads r and s from ASN.1, links have them side by side.
inline void verify_link(const ScratchFolder& folder, const std::string& link,
                        const std::string& key) {
    run_in(folder, "link='" + link + "'; key='" + key + "'\n" + R"(
text=${link#*://}; signature=${text#*/*/*/*/*/*/*/}
printf %s "${text%"/$signature"}" > text
padded=$(tr -- -_ +/ <<<"$signature==")
base64 -d <<<"${padded:0:(${#signature}+3)/4*4}" > signature
options="-sigopt rsa_padding_mode:pss -sigopt rsa_pss_saltlen:32"
if [ $(stat -c %s signature) = 64 ]; then
  pair=$(od -An -v -tx1 signature | tr -d ' \n'); options=
  printf 'asn1=SEQUENCE:p\n[p]\nr=INTEGER:0x%s\ns=INTEGER:0x%s\n' ${pair:0:64} ${pair:64} > pair
  openssl asn1parse -genconf pair -out signature
fi
openssl pkey -in "$key" -pubout -out public
openssl dgst -sha256 $options -verify public -signature signature text)");
}

}  // namespace tavrix::test
