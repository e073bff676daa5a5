#include <iostream>
#include <memory>

#include "cli/answer.h"
#include "cli/command.h"
#include "cli/for_people.h"
#include "cli/mail_output.h"
#include "cli/ports_bundle.h"
#include "mail/cmessage.h"

namespace tavrix::cli {
namespace {

using mail::CMessage;
using mail::MessageProperty;

struct ParseOptions {
    std::string file;
    std::string folder;
    bool as_dodaj_mail = false;
    bool json = false;
};

struct Shown {
    const char* name;
    const base::Text& (CMessage::*text)() const noexcept;
    // Printed for people too, under this word.
    const char* word = nullptr;
};

// By the names that hosts know.
constexpr Shown shown[] = {
    {"From", &CMessage::text<MessageProperty::From>, "Od"},
    {"MessageTo", &CMessage::text<MessageProperty::MessageTo>, "Do"},
    {"CC", &CMessage::text<MessageProperty::CC>, "Kopia"},
    {"Subject", &CMessage::text<MessageProperty::Subject>, "Temat"},
    {"SendDate", &CMessage::text<MessageProperty::SendDate>, "Data"},
    {"MessageID", &CMessage::text<MessageProperty::MessageID>},
    {"sender", &CMessage::text<MessageProperty::sender>},
    {"ReplyTo", &CMessage::text<MessageProperty::ReplyTo>},
    {"BCC", &CMessage::text<MessageProperty::BCC>},
    {"InReplyTo", &CMessage::text<MessageProperty::InReplyTo>},
    {"References", &CMessage::text<MessageProperty::References>},
    {"Keywords", &CMessage::text<MessageProperty::Keywords>},
    {"Comments", &CMessage::text<MessageProperty::Comments>},
    {"Encrypted", &CMessage::text<MessageProperty::Encrypted>},
    {"Received", &CMessage::text<MessageProperty::Received>},
    {"ReturnPath", &CMessage::text<MessageProperty::ReturnPath>},
    {"Headers", &CMessage::text<MessageProperty::Headers>},
    {"MessageBody", &CMessage::text<MessageProperty::MessageBody>},
    {"MessageText", &CMessage::text<MessageProperty::MessageText>},
};

void print_json(const CMessage& message, std::int32_t result) {
    Json answer;
    answer["result"] = result;
    for (const Shown& property : shown) {
        answer[property.name] = base::to_utf8((message.*property.text)());
    }
    answer["Files"] = files_of(message);
    answer["Size"] = message.Size();
    print(answer);
}

void print_message(const CMessage& message) {
    for (const Shown& property : shown) {
        const base::Text& text = (message.*property.text)();
        if (property.word == nullptr || text.empty()) continue;
        std::cout << property.word << ": " << for_people(text) << '\n';
    }
    for (const std::string& file : files_of(message)) std::cout << "Załącznik: " << file << '\n';
    std::cout << '\n' << for_people(message.text<MessageProperty::MessageText>());
}

// As a server would send it: a file that was saved without CR has none at all.
base::Text sent_text(const base::Bytes& bytes, const ports::CodePage& code_page) {
    base::Text text = code_page.to_text(bytes);
    if (text.find(u"\r\n") != base::Text::npos) return text;
    return base::replace_all(text, u"\n", u"\r\n");
}

ExitCode parse(const ParseOptions& options) {
    PortsBundle bundle;
    CMessage message(bundle.for_messages());
    const base::Bytes bytes = read_file(options.file);
    base::Text folder = base::from_utf8(options.folder);
    if (!folder.empty() && !folder.ends_with(u'/')) folder += u'\\';
    const std::int32_t result =
        options.as_dodaj_mail
            ? message.DodajMail(sent_text(bytes, bundle.code_page()), folder, true)
            : std::int32_t{message.take(bytes, folder)};
    if (options.json) {
        print_json(message, result);
    } else {
        print_message(message);
    }
    if (result == 0) std::cerr << "To nie jest wiadomość, którą można rozłożyć na części\n";
    return result == 0 ? exit_failed : exit_done;
}

void add_parse_command(CLI::App& mail, int& exit_code) {
    auto options = std::make_shared<ParseOptions>();
    CLI::App* command = mail.add_subcommand("parse", "Odczytuje wiadomość zapisaną w pliku");
    command->add_option("file", options->file, "Plik wiadomości (.eml)")->required();
    command->add_option("--folder", options->folder,
                        "Katalog, w którym zapisze załączniki; bez niego nic nie zapisuje");
    command->add_flag("--dodajmail", options->as_dodaj_mail,
                      "Czyta dosłownie tak jak CMessage.DodajMail, z profilem z pliku ustawień");
    add_json_option(*command, options->json);
    command->callback([options, &exit_code] { exit_code = parse(*options); });
}

}  // namespace

void add_mail_command(CLI::App& app, int& exit_code) {
    CLI::App* mail = app.add_subcommand("mail", "Poczta");
    mail->require_subcommand(1);
    add_parse_command(*mail, exit_code);
    add_mail_fetch_command(*mail, exit_code);
    add_mail_send_command(*mail, exit_code);
}

}  // namespace tavrix::cli
