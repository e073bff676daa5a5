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
    struct Http final : ports::Http {
        explicit Http(ScriptedExchange& owner) : test(owner) {}
        ports::HttpReply send(const ports::HttpRequest& request) override {
            std::string path(request.url.view().substr(test.sandbox->origin().size()));
            if (path.find("/auth") < 8 || path.find("/security") < 8) return real->send(request);
            auto& answers = test.script[path];
            test.asked.push_back(path + request.body);
            if (!request.headers[0].name.find("x-")) test.asked.back() += request.headers[0].value;
            if (answers.empty()) answers = {{404, ""}};
            const Answer answer = answers.front();
            if (answers.size() > 1) answers.erase(answers.begin());
            return {answer.status != 0, answer.status, base::SecretUtf8(answer.body), {}, {}};
        }
        ports::AddressKind kind_of(std::string_view) const override { return {}; }
        ScriptedExchange& test;
        std::unique_ptr<ports::Http> real = ports::make_curl_http(test.connection_settings);
    };

    void SetUp() override {
        SendFixture::SetUp();
        settings.service.demo = settings.service.test;
        make_http = [this] { return std::make_unique<Http>(*this); };
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

    std::map<std::string, std::vector<Answer>> script;
    std::vector<std::string> asked;
};

}  // namespace tavrix::ksef
