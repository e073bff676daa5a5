#include "com/classes/compose.h"
#include "com/classes/compositions.h"
#include "com/classes/delivery_composition.h"
#include "com/classes/installed_settings.h"
#include "com/forms/forms.h"
#include "ports/portable/curl_stream.h"
#include "ports/windows/adapters.h"

namespace tavrix::com {
namespace {

/// A stream that takes the settings as they are when it first connects.
class StreamOnDemand final : public ports::Stream {
  public:
    explicit StreamOnDemand(const SettingsOnDemand& settings) : settings_(settings) {}

    void connect(const ports::StreamAddress& address, ports::Security security) override {
        if (!stream_) stream_ = ports::make_curl_stream(settings_.get().connection);
        stream_->connect(address, security);
    }
    bool connected_within(std::chrono::milliseconds slice) override {
        return stream_->connected_within(slice);
    }
    ports::Sent send(base::ByteView bytes, std::chrono::milliseconds slice) override {
        return stream_->send(bytes, slice);
    }
    ports::Received receive(std::chrono::milliseconds slice) override {
        return stream_->receive(slice);
    }
    void close() noexcept override {
        if (stream_) stream_->close();
    }

  private:
    const SettingsOnDemand& settings_;
    std::unique_ptr<ports::Stream> stream_;
};

struct ComposedSocket {
    explicit ComposedSocket(std::unique_ptr<mail::SocketEvents> listener)
        : events(std::move(listener)) {}

    std::unique_ptr<mail::SocketEvents> events;
    SettingsOnDemand settings;
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    mail::clsSocket object{{std::make_unique<StreamOnDemand>(settings), *code_page,
                            settings.get().connection, *events, [this] { settings.read(); }}};
};

struct ComposedMessage {
    std::unique_ptr<ports::FileStore> store = ports::make_windows_file_store();
    std::unique_ptr<ports::Files> files = ports::make_windows_files();
    std::unique_ptr<ports::Clock> clock = ports::make_windows_clock();
    std::unique_ptr<ports::Locale> locale = ports::make_windows_locale();
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    frame::TraceLog trace{library_state().trace_switch, {*files, *clock, *locale, *code_page}};
    SettingsOnDemand settings;
    mail::CMessage object{{*store, *clock, *code_page, trace, ports::windows_version(), [this] {
                               settings.read();
                               return settings.get().mail.profile;
                           }}};
};

struct ComposedSendMail {
    ComposedDelivery delivery;
    mail::ClsSendMail object{delivery.ports()};
};

struct ComposedGetMail {
    mail::RetrievalPorts for_retrieval(mail::RetrievalForm form) {
        // The socket form needs nothing that could not be read.
        const bool manager = form == mail::RetrievalForm::manager;
        return {ports::make_curl_mail_stream(manager ? load_installed_settings().connection
                                                     : ports::ConnectionSettings{}),
                *clock, trace, *code_page, &compose_cmessage};
    }

    std::unique_ptr<mail::RetrievalWindow> window = make_retrieval_window();
    std::unique_ptr<ports::FileStore> store = ports::make_windows_file_store();
    std::unique_ptr<ports::Files> files = ports::make_windows_files();
    std::unique_ptr<ports::Clock> clock = ports::make_windows_clock();
    std::unique_ptr<ports::Locale> locale = ports::make_windows_locale();
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    frame::TraceLog trace{library_state().trace_switch, {*files, *clock, *locale, *code_page}};
    mail::ClsGetMail object{{*window, *store, trace,
                             [this](mail::RetrievalForm form) { return for_retrieval(form); },
                             library_state().hand_over.retrieval}};
};

}  // namespace

std::shared_ptr<mail::ClsSendMail> compose_cls_send_mail() {
    return compose<ComposedSendMail>();
}

std::shared_ptr<mail::clsSocket> compose_cls_socket(std::unique_ptr<mail::SocketEvents> events) {
    return compose<ComposedSocket>(std::move(events));
}

std::shared_ptr<mail::CMessage> compose_cmessage() {
    return compose<ComposedMessage>();
}

std::shared_ptr<mail::ClsGetMail> compose_cls_get_mail() {
    return compose<ComposedGetMail>();
}

}  // namespace tavrix::com
