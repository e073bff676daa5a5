#include "ports/portable/curl_http.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <new>

#include "base/error.h"
#include "base/secret.h"
#include "base/version.h"
#include "ports/portable/curl_connection.h"

namespace tavrix::ports {
namespace {

constexpr std::size_t largest_body_bytes = 64u * 1024 * 1024;
constexpr long upload_buffer_bytes = 256 * 1024;

// Scheme, host and port: whoever is asked for a proxy needs no more, and the rest may be secret.
std::string origin_of(std::string_view url) {
    const std::size_t scheme = url.find("://");
    if (scheme == std::string_view::npos) return std::string(url);
    return std::string(url.substr(0, url.find_first_of("/?#", scheme + 3)));
}

struct UrlDeleter {
    void operator()(CURLU* url) const noexcept { curl_url_cleanup(url); }
};

struct CurlFree {
    void operator()(char* text) const noexcept { curl_free(text); }
};

using SteadyTime = std::chrono::steady_clock::time_point;

void refuse_line_end(std::string_view text) {
    if (text.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"HTTP",
                                    u"Nagłówek zawiera koniec wiersza");
    }
}

// A header list that wipes its copies of the lines, one of which carries the Bearer token, before
// it frees them.
class HeaderList {
  public:
    HeaderList() = default;
    ~HeaderList() {
        for (curl_slist* item = list_; item != nullptr; item = item->next) {
            base::wipe(item->data, std::strlen(item->data));
        }
        curl_slist_free_all(list_);
    }
    HeaderList(const HeaderList&) = delete;
    HeaderList& operator=(const HeaderList&) = delete;

    /// A value with a line end would begin another header, or the body: it is refused.
    void add(std::string_view name, std::string_view value) {
        refuse_line_end(name);
        refuse_line_end(value);
        base::SecretUtf8 line;
        line.reserve(name.size() + value.size() + 3);
        line += name;
        line += ":";
        if (!value.empty()) line += " ";
        line += value;
        line += '\0';
        curl_slist* longer = curl_slist_append(list_, line.view().data());
        if (longer == nullptr) throw std::bad_alloc();
        list_ = longer;
    }
    curl_slist* get() const { return list_; }

  private:
    curl_slist* list_ = nullptr;
};

// One transfer's state, reached from libcurl's callbacks.
struct Transfer {
    HttpReply reply;
    bool body_too_large = false;
    std::chrono::milliseconds no_progress_timeout;
    SteadyTime last_progress = std::chrono::steady_clock::now();
    curl_off_t bytes_moved = 0;
    bool stalled = false;
    BodySource* source = nullptr;
    std::exception_ptr source_failure;
};

std::size_t on_body(char* data, std::size_t size, std::size_t count, void* context) noexcept {
    auto& transfer = *static_cast<Transfer*>(context);
    const std::size_t bytes = size * count;
    if (transfer.reply.body.size() + bytes > largest_body_bytes) {
        transfer.body_too_large = true;
        return CURL_WRITEFUNC_ERROR;
    }
    try {
        transfer.reply.body += std::string_view(data, bytes);
    } catch (const std::bad_alloc&) {
        transfer.body_too_large = true;
        return CURL_WRITEFUNC_ERROR;
    }
    return bytes;
}

std::size_t on_source(char* data, std::size_t size, std::size_t count, void* context) noexcept {
    auto& transfer = *static_cast<Transfer*>(context);
    try {
        return transfer.source->read({reinterpret_cast<std::uint8_t*>(data), size * count});
    } catch (...) {
        transfer.source_failure = std::current_exception();
        return CURL_READFUNC_ABORT;
    }
}

std::size_t on_header(char* data, std::size_t size, std::size_t count, void* context) noexcept {
    auto& transfer = *static_cast<Transfer*>(context);
    const std::string_view line(data, size * count);
    // A status line begins a new block: what an interim answer (1xx) or a proxy said before is
    // over.
    if (line.starts_with("HTTP/")) transfer.reply.headers.clear();
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return line.size();
    std::string_view value = line.substr(colon + 1);
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!value.empty() && blank(value.front())) value.remove_prefix(1);
    while (!value.empty() && blank(value.back())) value.remove_suffix(1);
    try {
        transfer.reply.headers.push_back({std::string(line.substr(0, colon)), std::string(value)});
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return line.size();
}

// libcurl asks at least once a second, whatever the network does.
int on_progress(void* context, curl_off_t, curl_off_t received, curl_off_t,
                curl_off_t sent) noexcept {
    auto& transfer = *static_cast<Transfer*>(context);
    const auto now = std::chrono::steady_clock::now();
    if (received + sent != transfer.bytes_moved) {
        transfer.bytes_moved = received + sent;
        transfer.last_progress = now;
    }
    transfer.stalled = now - transfer.last_progress > transfer.no_progress_timeout;
    return transfer.stalled ? 1 : 0;
}

class CurlHttp final : public Http {
  public:
    explicit CurlHttp(const ConnectionSettings& settings)
        : connection_(settings),
          connect_timeout_(settings.connect_timeout),
          no_progress_timeout_(settings.no_progress_timeout) {}

    HttpReply send(const HttpRequest& request) override {
        Transfer transfer;
        transfer.no_progress_timeout = no_progress_timeout_;
        transfer.source = request.source;
        HeaderList headers;
        for (const HttpHeader& header : request.headers) headers.add(header.name, header.value);
        if (!request.authorization.empty()) {
            headers.add("Authorization", request.authorization.view());
        }
        // Without this a large body waits a second for a "100 Continue" that the service never
        // sends.
        headers.add("Expect", {});

        curl_easy_reset(easy_.get());  // options only: connections, sessions and DNS answers stay
        set_connection_options(easy_.get(), connection_, origin_of(request.url.view()) + "/");
        set_transfer_options();
        // Not even a time that is up means no limit, which 0 would.
        if (request.time_limit)
            set(CURLOPT_TIMEOUT_MS, std::max(1L, static_cast<long>(request.time_limit->count())));
        if (request.only_once) set(CURLOPT_FRESH_CONNECT, 1L);
        base::SecretUtf8 url = request.url.copy();
        url += '\0';
        // A segment of dots that a server gave stays one.
        set(CURLOPT_PATH_AS_IS, 1L);
        set(CURLOPT_URL, url.view().data());
        set(CURLOPT_HTTPHEADER, headers.get());
        set_method(request);
        set_callbacks(transfer);

        char words[CURL_ERROR_SIZE] = "";
        set(CURLOPT_ERRORBUFFER, words);
        const CURLcode code = curl_easy_perform(easy_.get());
        set(CURLOPT_ERRORBUFFER, static_cast<char*>(nullptr));
        set(CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
        if (transfer.source_failure) std::rethrow_exception(transfer.source_failure);

        long status = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
        transfer.reply.status = static_cast<int>(status);
        transfer.reply.completed = code == CURLE_OK;
        if (code != CURLE_OK) transfer.reply.error = words_for(code, words, transfer);
        return std::move(transfer.reply);
    }

    AddressKind kind_of(std::string_view url) const override {
        const auto is_odd = [](char c) { return c <= ' ' || c > '~' || c == '\\'; };
        // libcurl mends "http:/host" and "http:///host".
        const std::size_t host = url.find("://");
        if (std::ranges::any_of(url, is_odd) || host == std::string_view::npos ||
            url.substr(host + 3).starts_with('/')) {
            return AddressKind::refused;
        }
        const std::unique_ptr<CURLU, UrlDeleter> parsed(curl_url());
        if (!parsed) throw std::bad_alloc();
        char* scheme = nullptr;
        if (curl_url_set(parsed.get(), CURLUPART_URL, std::string(url).c_str(),
                         CURLU_DISALLOW_USER) != CURLUE_OK ||
            curl_url_get(parsed.get(), CURLUPART_SCHEME, &scheme, 0) != CURLUE_OK) {
            return AddressKind::refused;
        }
        const std::unique_ptr<char, CurlFree> name(scheme);
        if (std::string_view(scheme) == "https") return AddressKind::https;
        return std::string_view(scheme) == "http" ? AddressKind::http : AddressKind::refused;
    }

  private:
    template <typename Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(easy_.get(), option, value);
    }

    void set_transfer_options() {
        set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connect_timeout_.count()));
        static const std::string agent = "Tavrix/" + std::to_string(base::version_major) + "." +
                                         std::to_string(base::version_minor) + "." +
                                         std::to_string(base::version_revision);
        set(CURLOPT_USERAGENT, agent.c_str());
    }

    void set_method(const HttpRequest& request) {
        if (request.method == "GET" && request.source == nullptr) {
            set(CURLOPT_HTTPGET, 1L);
            return;
        }
        refuse_line_end(request.method);
        if (request.source != nullptr) {
            set(CURLOPT_UPLOAD, 1L);
            set(CURLOPT_UPLOAD_BUFFERSIZE, upload_buffer_bytes);
            set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(request.source->size()));
            set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
            return;
        }
        set(CURLOPT_POST, 1L);
        set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
        set(CURLOPT_POSTFIELDS, request.body.c_str());
    }

    void set_callbacks(Transfer& transfer) {
        set(CURLOPT_WRITEFUNCTION, &on_body);
        set(CURLOPT_WRITEDATA, &transfer);
        set(CURLOPT_READFUNCTION, &on_source);
        set(CURLOPT_READDATA, &transfer);
        set(CURLOPT_HEADERFUNCTION, &on_header);
        set(CURLOPT_HEADERDATA, &transfer);
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_XFERINFOFUNCTION, &on_progress);
        set(CURLOPT_XFERINFODATA, &transfer);
    }

    static std::string words_for(CURLcode code, const char* words, const Transfer& transfer) {
        if (transfer.body_too_large) return "the answer is larger than 64 MiB";
        if (transfer.stalled) return "the connection made no progress";
        return *words != '\0' ? words : curl_easy_strerror(code);
    }

    CurlEasy easy_ = make_curl_easy();
    ConnectionSettings connection_;
    std::chrono::milliseconds connect_timeout_;
    std::chrono::milliseconds no_progress_timeout_;
};

}  // namespace

std::unique_ptr<Http> make_curl_http(const ConnectionSettings& settings) {
    return std::make_unique<CurlHttp>(settings);
}

}  // namespace tavrix::ports
