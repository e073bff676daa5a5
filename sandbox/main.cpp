// tavrix-sandbox: a KSeF of one's own on loopback. An independent second reading of the published
// interface: nothing here includes anything of the library that is tested against it.
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "sandbox/command_line.h"
#include "sandbox/http/dispatcher.h"
#include "sandbox/http/http_server.h"

namespace {

using namespace tavrix::sandbox;

void write_file(const std::string& path, const std::string& content) {
    // Beside and then in place, so that whoever waits for the file never reads half of it.
    const std::string partial = path + ".part";
    std::ofstream file(partial, std::ios::binary);
    file << content;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
    std::filesystem::rename(partial, path);
}

std::unique_ptr<Store> open_store(const Options& options) {
    if (options.data_folder.empty()) return std::make_unique<NoStore>();
    std::filesystem::create_directories(options.data_folder);
    const std::string file =
        (std::filesystem::path(options.data_folder) / "sandbox.sqlite").string();
    // The file holds private keys. SQLite gives its companions the permissions of the file itself.
    const mode_t usual = umask(077);
    auto store = open_sqlite_store(file);
    umask(usual);
    return store;
}

/// The same identity after a restart, so that clients that trust its authority go on doing so.
ServerIdentity server_identity(Store& store, Instant now) {
    if (const auto saved = store.read("setting", "server-identity")) {
        const Json json = parse_json(*saved);
        return {json.at("authority"), {json.at("privateKey"), json.at("certificate")}};
    }
    ServerIdentity identity =
        make_server_identity({now - std::chrono::days(1), now + std::chrono::days(3650)});
    store.write("setting", "server-identity",
                dump(Json{{"authority", identity.authority_pem},
                          {"privateKey", identity.server.private_key_pem},
                          {"certificate", identity.server.certificate_pem}}));
    return identity;
}

int serve(Options options) {
    Clock clock;
    auto store = open_store(options);
    std::optional<ServerIdentity> identity;
    if (options.https) identity = server_identity(*store, clock.now());
    if (!options.ca_file_out.empty()) write_file(options.ca_file_out, identity->authority_pem);

    HttpServer server(identity ? &identity->server : nullptr);
    server.stop_on_signals();
    Dispatcher dispatcher(options, clock, std::move(store));
    const int port = server.bind(options.bind_address, options.port);
    const std::string host = options.bind_address.find(':') == std::string::npos
                                 ? options.bind_address
                                 : "[" + options.bind_address + "]";
    std::cout << "listening on " << (options.https ? "https" : "http") << "://" << host << ":"
              << port << std::endl;
    if (!options.port_file.empty()) write_file(options.port_file, std::to_string(port) + "\n");
    server.run(dispatcher);
    return 0;
}

void list_steps() {
    for (const Route& route : interface_routes())
        std::printf("%-32s %-6s %s\n", std::string(route.step).c_str(),
                    std::string(route.method).c_str(), std::string(route.pattern).c_str());
    for (const std::string_view step : processing_steps())
        std::printf("%s\n", std::string(step).c_str());
}

}  // namespace

int main(int count, char** arguments) {
    CommandLine command_line = read_command_line(count, arguments);
    if (!command_line.options) return command_line.exit_status;
    if (command_line.options->list_steps) {
        list_steps();
        return 0;
    }
    // Standard output carries the one line programs wait for; everything else goes beside it.
    spdlog::set_default_logger(spdlog::stderr_color_mt("sandbox"));
    spdlog::set_pattern("%H:%M:%S.%e %v");
#ifdef SIGPIPE
    // Whoever reads standard error may go before the sandbox does.
    std::signal(SIGPIPE, SIG_IGN);
#endif
    try {
        return serve(std::move(*command_line.options));
    } catch (const std::exception& error) {
        std::cerr << "tavrix-sandbox: " << error.what() << "\n";
        return 1;
    }
}
