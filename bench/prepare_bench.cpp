// Preparing an invoice of 3 MB as the sending does (normalise, hash, encrypt, hash, Base64) against
// the command line tools openssl and base64 on the same bytes; the peer's time includes starting
// its processes, so they are timed on 48 MB too.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "base/base64.h"
#include "ksef/encoding.h"
#include "ports/native/adapters.h"
#include "ports/portable/openssl_crypto.h"

namespace {

using namespace tavrix;

double milliseconds_of(const auto& work) {
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        best = std::min(best, std::chrono::duration<double, std::milli>(
                                  std::chrono::steady_clock::now() - begin)
                                  .count());
    }
    return best;
}

void compare(std::size_t megabytes, const std::string& folder) {
    const std::string line = "  <P_7>Krzesło biurowe „Żuraw”, tapicerka łososiowa</P_7>\n";
    std::string file;
    while (file.size() < megabytes * 1'000'000) file += line;
    std::ofstream(folder + "/invoice.xml", std::ios::binary) << file;

    const auto crypto = ports::make_openssl_crypto();
    const auto code_page = ports::make_native_code_page();
    const base::Text text = code_page->to_text(base::bytes_of(file));
    base::Bytes key(32);
    base::Bytes iv(16);
    crypto->fill_random(key);
    crypto->fill_random(iv);
    std::size_t produced = 0;
    const double ours = milliseconds_of([&] {
        const base::Bytes plain = ksef::invoice_bytes(*code_page, text);
        const base::Bytes encrypted = crypto->aes_256_cbc_encrypt(key, iv, plain);
        produced = ksef::sha256_base64(*crypto, plain).size() +
                   ksef::sha256_base64(*crypto, encrypted).size() +
                   base::base64_encode(encrypted).size();
    });
    const std::string zeros(64, '0');
    const std::string commands =
        "cd '" + folder + "' && openssl dgst -sha256 -binary invoice.xml > hash && openssl enc " +
        "-aes-256-cbc -K " + zeros + " -iv " + zeros.substr(32) +
        " -in invoice.xml -out encrypted && openssl dgst -sha256 -binary encrypted > hash2 && " +
        "base64 -w 0 encrypted > content";
    bool peer_worked = true;
    const double peer =
        milliseconds_of([&] { peer_worked = std::system(commands.c_str()) == 0 && peer_worked; });
    if (!peer_worked || produced == 0) {
        std::puts("prepare: the peer did not run");
        std::exit(1);
    }
    std::printf("prepare %zu MB: %.1f ms; openssl and base64: %.1f ms; ratio %.2f\n", megabytes,
                ours, peer, ours / peer);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    compare(3, argv[1]);
    compare(48, argv[1]);
}
