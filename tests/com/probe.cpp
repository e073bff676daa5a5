#include "tests/com/probe.h"

#include <new>

#include "base/error.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::test {
namespace {

class Probe {
  public:
    base::Text Echo(const base::Text& text) const { return text; }
    std::int32_t Chop(base::Text& text) const {
        if (!text.empty()) text.pop_back();
        return static_cast<std::int32_t>(text.size());
    }
    void Swap(std::int32_t& left, std::int16_t& right) const {
        const auto before = static_cast<std::int16_t>(left);
        left = right;
        right = before;
    }
    std::uint8_t ToByte(std::uint8_t value) const { return value; }
    bool Not(bool value) const { return !value; }
    double Half(double value) const { return value / 2; }
    base::Bytes Reverse(const base::Bytes& bytes) const { return {bytes.rbegin(), bytes.rend()}; }
    base::Text Join(const std::vector<base::Text>& texts) const {
        base::Text joined;
        for (const base::Text& text : texts) joined += text + u"|";
        return joined;
    }
    std::vector<base::Text> Split(const base::Text& text) const { return base::split(text, u','); }
    void Fill(std::vector<base::Text>& texts, std::int32_t count) const {
        texts.assign(static_cast<std::size_t>(count), u"x");
    }
    base::Value Same(const base::Value& value) const { return value; }
    windows::ComPointer<IDispatch> SameObject(const windows::ComPointer<IDispatch>& object) const {
        return object;
    }
    std::int32_t Power(std::int32_t base, const std::optional<std::int32_t>& exponent) const {
        std::int32_t power = 1;
        for (std::int32_t i = 0; i < exponent.value_or(2); ++i) power *= base;
        return power;
    }
    void Count(const base::Text& text, std::optional<std::int32_t>& length) const {
        length = static_cast<std::int32_t>(text.size());
    }
    void Fail(std::int32_t how, base::Text& changed) const {
        changed = u"changed";
        if (how == 0)
            throw base::AutomationError(base::ErrorNumber::subscript, u"Probe.Fail", u"Zła liczba");
        if (how == 1) throw std::bad_alloc();
        throw std::runtime_error("broken");
    }
    base::Text label() const { return label_; }
    void set_label(const base::Text& label) { label_ = label; }
    base::Text slot(std::int32_t index) const { return slots_.at(static_cast<std::size_t>(index)); }
    void set_slot(std::int32_t index, const base::Text& text) {
        slots_.at(static_cast<std::size_t>(index)) = text;
    }
    windows::ComPointer<IDispatch> inner() const;

  private:
    base::Text label_;
    std::vector<base::Text> slots_ = std::vector<base::Text>(3);
};

constexpr auto probe_members =
    com::members(com::property<&Probe::slot, &Probe::set_slot>(
                     0, u"Slot", u"Default, with an index.", com::by_value(u"Index")),
                 com::method<&Probe::Echo>(1, u"Echo", u"", com::by_value(u"text")),
                 com::method<&Probe::Chop>(2, u"Chop", u"", com::by_reference(u"text")),
                 com::method<&Probe::Swap>(3, u"Swap", u"", com::by_reference(u"left"),
                                           com::by_reference(u"right")),
                 com::method<&Probe::ToByte>(4, u"ToByte", u"", com::by_value(u"value")),
                 com::method<&Probe::Not>(5, u"Not", u"", com::by_value(u"value")),
                 com::method<&Probe::Half>(6, u"Half", u"", com::by_value(u"value")),
                 com::method<&Probe::Reverse>(7, u"Reverse", u"", com::by_reference(u"bytes")),
                 com::method<&Probe::Join>(8, u"Join", u"", com::by_reference(u"texts")),
                 com::method<&Probe::Split>(9, u"Split", u"", com::by_value(u"text")),
                 com::method<&Probe::Same>(10, u"Same", u"", com::by_value(u"value")),
                 com::method<&Probe::SameObject>(11, u"SameObject", u"", com::by_value(u"value")),
                 com::method<&Probe::Power>(12, u"Potęga", u"", com::by_value(u"Podstawa"),
                                            com::by_value(u"Wykładnik")),
                 com::method<&Probe::Count>(13, u"Count", u"", com::by_value(u"text"),
                                            com::by_reference(u"length")),
                 com::method<&Probe::Fail>(14, u"Fail", u"", com::by_value(u"how"),
                                           com::by_reference(u"changed")),
                 com::property<&Probe::label, &Probe::set_label>(15, u"Label", u""),
                 com::read_only<&Probe::inner>(16, u"Inner", u""),
                 com::method<&Probe::Fill>(17, u"Fill", u"", com::by_reference(u"texts"),
                                           com::by_value(u"count")));

windows::ComPointer<IDispatch> Probe::inner() const {
    auto inner = std::make_shared<Probe>();
    inner->set_slot(1, u"inner one");
    return com::make_object(probe_class, inner);
}

}  // namespace

constexpr com::ClassTable probe_class = {
    .class_id = com::guid("F23CEEBD-647A-4A5C-B737-42B2F4B6369C"),
    .interface_id = com::guid("0A13DB8F-C23F-40EB-9C1B-BA72A4DA5B29"),
    .name = u"Probe",
    .help = u"",
    .members = probe_members,
};

windows::ComPointer<IDispatch> make_probe() {
    return com::make_object(probe_class, std::make_shared<Probe>());
}

}  // namespace tavrix::test
