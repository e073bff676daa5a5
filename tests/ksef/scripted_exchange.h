#pragma once

#include "tests/ksef/send_faults.h"
#include "tests/support/failing.h"

namespace tavrix::ksef {

/// An answer to play: the status and the body; 0 for a connection that breaks.
struct Answer {
    int status = 200;
    std::string body;
};

/// A login at a real sandbox, and behind it the answers of a script: those of one path in their
/// order, the last of them again and again.
class ScriptedExchange : public SendFixture {
  protected:
    using Script = std::map<std::string, std::vector<Answer>>;

    class Http final : public ports::Http {
      public:
        Http(std::unique_ptr<ports::Http> real, ScriptedExchange& owner)
            : real_(std::move(real)), owner_(owner) {}
        ports::HttpReply send(const ports::HttpRequest& request) override {
            std::string path(request.url.view().substr(owner_.sandbox->origin().size()));
            if (path.starts_with("/api/v2/auth") || path.starts_with("/api/v2/security")) {
                return real_->send(request);
            }
            owner_.asked.push_back(path + (request.body.empty() ? "" : " " + request.body));
            for (const auto& [name, value] : request.headers) {
                if (name.starts_with("x-")) owner_.asked.back() += " " + name + "=" + value;
            }
            auto found = owner_.script.find(path);
            if (found == owner_.script.end()) return {true, 404, {}, {}, {}};
            auto& answers = found->second;
            const Answer answer = answers.front();
            if (answers.size() > 1) answers.erase(answers.begin());
            return {answer.status != 0, answer.status, base::SecretUtf8(answer.body), {}, {}};
        }
        ports::AddressKind kind_of(std::string_view url) const override {
            return real_->kind_of(url);
        }

      private:
        std::unique_ptr<ports::Http> real_;
        ScriptedExchange& owner_;
    };

    void SetUp() override {
        SendFixture::SetUp();
        settings.service.demo = settings.service.test;
        make_http = [this] {
            return std::make_unique<Http>(ports::make_curl_http(connection_settings), *this);
        };
    }

    /// The rows of a query: fields with a "|" between, rows with a blank.
    std::string rows(const char16_t* sql) {
        std::string text;
        for (const auto rows = connection->open_recordset(sql); !rows->at_end();
             rows->move_next()) {
            if (!text.empty()) text += ' ';
            for (std::size_t i = 0; i < rows->columns().size(); ++i) {
                text += (i == 0 ? "" : "|") + base::to_utf8(ports::text_of(rows->field_at(i)));
            }
        }
        return text;
    }

    Script script;
    std::vector<std::string> asked;
};

}  // namespace tavrix::ksef
