// tavrix-sandbox: a KSeF of one's own on loopback. An independent second reading of the published
// interface: nothing here includes anything of the library that is tested against it.
#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>

#include "console/console.h"
#include "sandbox/basics/path.h"
#include "sandbox/command_line.h"
#include "sandbox/http/dispatcher.h"
#include "sandbox/http/http_server.h"
#include "sandbox/store/private_folder.h"

namespace {

using namespace tavrix::sandbox;

void write_file(const std::string& path, const std::string& content) {
    // Beside and then in place, so that whoever waits for the file never reads half of it.
    const std::string partial = path + ".part";
    std::ofstream file(path_of(partial), std::ios::binary);
    file << content;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
    std::filesystem::rename(path_of(partial), path_of(path));
}

std::unique_ptr<Store> open_store(const Options& options) {
    if (options.data_folder.empty()) return std::make_unique<NoStore>();
    const std::filesystem::path folder = path_of(options.data_folder);
    // The file holds private keys. SQLite gives its companions the permissions of the file itself.
    const PrivateFolder nobody_else(folder);
    return open_sqlite_store(utf8_of(folder / "sandbox.sqlite"));
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
        std::cout << std::left << std::setw(32) << route.step << ' ' << std::setw(6) << route.method
                  << ' ' << route.pattern << '\n';
    for (const std::string_view step : processing_steps()) std::cout << step << '\n';
}

}  // namespace

int main(int count, char** arguments) {
    const tavrix::console::Console console(count, arguments);
    CommandLine command_line = read_command_line(console.count(), console.arguments());
    if (!command_line.options) return command_line.exit_status;
    if (command_line.options->list_steps) {
        list_steps();
        return 0;
    }
    // Standard output carries the one line programs wait for; everything else goes beside it.
    spdlog::set_default_logger(std::make_shared<spdlog::logger>(
        "sandbox", std::make_shared<spdlog::sinks::ostream_sink_mt>(std::cerr)));
    spdlog::set_pattern("%H:%M:%S.%e %v");
    try {
        return serve(std::move(*command_line.options));
    } catch (const std::exception& error) {
        std::cerr << "tavrix-sandbox: " << error.what() << "\n";
        return 1;
    }
}
