// Requests to the sandbox, "METHOD PATH?SESSION-TYPE", the Authorization, a blank line and the
// body, with a line "---" between them; and invoices, when the input begins as XML.
#include "fuzz/fuzz_target.h"
#include "sandbox/basics/text.h"
#include "sandbox/documents/fa3.h"
#include "sandbox/http/dispatcher.h"
#include "sandbox/pages/invoice_page.h"
#include "tests/sandbox/sample_invoice.h"

using namespace tavrix::sandbox;

namespace {

void read_invoice(const std::string& text) {
    const ParsedXml parsed = parse_xml(text);
    if (parsed.document) summarize_invoice(Element::root_of(parsed.document));
    render_invoice(text);
}

Request request_of(std::string_view text) {
    Request request;
    const std::size_t end_of_line = text.find('\n');
    const std::string_view line = text.substr(0, end_of_line);
    const std::size_t blank = line.find(' ');
    request.method = line.substr(0, blank);
    if (blank != std::string_view::npos) request.target = line.substr(blank + 1);
    const std::size_t question = request.target.find('?');
    request.path = percent_decode(std::string_view(request.target).substr(0, question));
    if (question != std::string::npos) {
        request.query.emplace_back("sessionType", request.target.substr(question + 1));
    }
    if (end_of_line != std::string_view::npos) {
        request.headers.emplace_back("Authorization",
                                     text.substr(end_of_line + 1, text.find("\n\n") - end_of_line));
        if (const std::size_t body = text.find("\n\n"); body != std::string_view::npos)
            request.body = text.substr(body + 2);
    }
    request.remote_address = "127.0.0.1";
    request.origin = "http://127.0.0.1:8517";
    return request;
}

}  // namespace

std::vector<std::string> tavrix::fuzz::seeds() {
    return {
        testing::SampleInvoice{}.xml(),
        "POST /v2/auth/challenge\n\n\n---\nGET /v2/security/public-key-certificates\n",
        R"(POST /v2/auth/ksef-token)"
        "\n\n"
        R"({"challenge":"20261121-CR-1","contextIdentifier":{"type":"Nip","value":"5265877635"},)"
        R"("encryptedToken":"AAAA"})",
        "GET /v2/sessions?Online\nBearer eyJhbGciOiJIUzI1NiJ9.eyJzdWIiOiIxIn0.AAAA\n\n",
        "POST /sandbox/faults\n\n"
        R"({"step":"auth/challenge","kind":"json","path":"status.code","value":7,"skip":1})"
        "\n---\nPOST /v2/auth/challenge\n\n{}\n---\nGET /sandbox/state\n\n",
        "POST /sandbox/reset\n\n{}\n---\nGET /\n\n---\nGET /api/v2/invoices/ksef/1%2F2\n\n",
    };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (text.starts_with('<')) {
        read_invoice(text);
        return 0;
    }
    static Clock clock{*parse_instant("2026-11-21T08:15:30.1234567Z")};
    // Making its keys takes longer than a thousand inputs; what an input left behind is reset.
    static Dispatcher dispatcher(
        [] {
            Options options;
            options.quiet = true;
            return options;
        }(),
        clock, std::make_unique<NoStore>());
    Request reset = request_of("POST /sandbox/reset\n\n{}");
    dispatcher.handle(reset);
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t end = rest.find("\n---\n");
        Request request = request_of(rest.substr(0, end));
        dispatcher.handle(request);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 5);
    }
    return 0;
}
