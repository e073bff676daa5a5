#pragma once

#include "stand_ins/cdo/configuration.h"

namespace tavrix::cdo {

/// What of a message has a character set of its own.
class BodyPart {
  public:
    BodyPart(Record record, base::Text name) : record_(std::move(record)), name_(std::move(name)) {}
    base::Text charset() const { return u"us-ascii"; }
    void set_charset(const base::Text& charset) { note(record_, name_ + u".Charset", charset); }

  private:
    Record record_;
    base::Text name_;
};

/// A message that keeps what it is told and sends itself by SMTP. Send writes the record, the
/// password included, to the file that %TAVRIX_CDO_RECORD% names.
class Message {
  public:
    base::Text to() const { return to_; }
    void set_to(const base::Text& to);
    base::Text from() const { return from_; }
    void set_from(const base::Text& from);
    base::Text subject() const { return subject_; }
    void set_subject(const base::Text& subject);
    base::Text text_body() const { return body_; }
    void set_text_body(const base::Text& body);
    base::Text html_body() const { return body_; }
    void set_html_body(const base::Text& body);
    windows::ComPointer<IDispatch> body_part() const { return part(u"BodyPart"); }
    windows::ComPointer<IDispatch> html_body_part() const { return part(u"HTMLBodyPart"); }
    windows::ComPointer<IDispatch> text_body_part() const { return part(u"TextBodyPart"); }
    windows::ComPointer<IDispatch> configuration() const;
    /// Of one file, by its path.
    windows::ComPointer<IDispatch> AddAttachment(const base::Text& url);
    void Send();

  private:
    windows::ComPointer<IDispatch> part(base::TextView name) const;
    base::Text setting(base::TextView name) const;

    Record record_ = std::make_shared<base::Text>();
    std::shared_ptr<Fields> fields_ = std::make_shared<Fields>(record_);
    base::Text to_;
    base::Text from_;
    base::Text subject_;
    base::Text body_;
    bool is_html_ = false;
    base::Text file_;
};

extern const com::ClassTable message_class;
windows::ComPointer<IDispatch> create_message();

}  // namespace tavrix::cdo
