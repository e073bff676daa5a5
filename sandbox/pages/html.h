// What the pages are put together of. Everything that comes from a client is escaped on its way in:
// functions take texts unless they say that they take HTML.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/exchange/exchange.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

/// A whole page. Its headers forbid it to load or run anything but its own script, should a
/// document slip past the escaping.
/// \param content HTML.
/// \param trail where the reader came from, HTML links in order; empty on the first page.
Answer page(const std::string& title, const std::string& content,
            const std::vector<std::string>& trail = {});
/// A page that says one sentence.
Answer notice_page(int status, const std::string& title, const std::string& sentence);

/// A file to save, never to be shown in place: a stranger's XML may carry a script.
Answer download(std::string content, const std::string& file_name);

/// The beginning of a text in UTF-8, of so many bytes at most, not cut inside a character.
std::string shortened(std::string_view text, std::size_t most);

/// \param content HTML.
std::string section(const std::string& title, const std::string& content);
/// A part of a page that its script keeps up to date; no form that takes text stands in one.
/// \param name its own within the page, the same as long as the page is the same.
/// \param content HTML.
std::string live(const char* name, const std::string& content);
std::string link(const std::string& address, const std::string& text);
/// `/faktura/{reference}` and its like.
std::string address_of(const char* kind, const std::string& reference);

/// The status in the colour of its outcome.
std::string badge(const Status& status);
std::string badge(const char* css_class, const std::string& text);
/// A reason beside a status: Polish, or marked as the words of the program that checks.
/// \param most bytes of it.
std::string detail_html(const std::string& detail, std::size_t most = std::string::npos);

/// One row of a list of facts, nothing without a value.
std::string fact(const std::string& label, const std::string& value);
/// \param value HTML.
std::string fact_html(const std::string& label, const std::string& value);
/// \param rows what fact() made.
std::string facts(const std::string& rows);

/// A table that becomes a pile of cards where the screen is narrow; each cell then carries its
/// column's title.
class Table {
  public:
    struct Column {
        std::string title;
        bool numeric = false;
    };
    Table(std::string name, std::vector<Column> columns);

    /// \param cells HTML, one for each column.
    void row(const std::vector<std::string>& cells);
    std::string html() const;

  private:
    std::string name_;
    std::vector<Column> columns_;
    std::string rows_;
};

/// Part of a long list, newest first: the indexes from `to - 1` down to `from`.
struct Slice {
    std::size_t number = 1;
    std::size_t count = 1;
    std::size_t from = 0;
    std::size_t to = 0;
};
/// The part that `?strona=N` of the request asks for; the nearest there is for any other N.
Slice slice_of(const Request& request, std::size_t total, std::size_t size);
/// Links to the parts before and after; nothing when there is one part only.
/// \param address of the list, with or without a query.
std::string slice_links(const std::string& address, const Slice& slice);

/// The beginning of a long text in a frame of its own.
/// \param when_cut what is said below it when there is more.
std::string excerpt(const std::string& text, const std::string& when_cut = "");

}  // namespace tavrix::sandbox
