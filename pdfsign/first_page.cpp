#include "pdfsign/first_page.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "pdfsign/visits.h"

namespace tavrix::pdfsign {
namespace {

constexpr int deepest_tree = 100;
constexpr std::size_t most_nodes = 100'000;
constexpr std::size_t most_objects = 10'000'000;
constexpr Rectangle a4{0, 0, 595, 842};

[[noreturn]] void damaged(const char* what) {
    throw std::runtime_error(what);
}

bool is_empty(const Rectangle& box) {
    return box[2] - box[0] <= 0 || box[3] - box[1] <= 0;
}

Rectangle common(const Rectangle& left, const Rectangle& right) {
    return {std::max(left[0], right[0]), std::max(left[1], right[1]), std::min(left[2], right[2]),
            std::min(left[3], right[3])};
}

// The nodes from the root to the first page.
std::vector<QPDFObjectHandle> way_to_first_page(QPDF& document) {
    std::vector<QPDFObjectHandle> way;
    QPDFObjectHandle node = document.getRoot().getKey("/Pages");
    // A tree may have branches without a page.
    Visits visits;
    const auto descend = [&](const auto& self, QPDFObjectHandle at) -> bool {
        if (!at.isDictionary() || way.size() > deepest_tree) return false;
        if (visits.count() > most_nodes) damaged("too many nodes");
        if (!visits.is_first(at)) return false;
        QPDFObjectHandle kids = at.getKey("/Kids");
        way.push_back(at);
        if (!kids.isArray()) return at.isIndirect();
        if (visits.is_first(kids)) {
            for (int i = 0; i < kids.getArrayNItems(); ++i) {
                if (self(self, kids.getArrayItem(i))) return true;
            }
        }
        way.pop_back();
        return false;
    };
    if (!descend(descend, node)) damaged("no page");
    return way;
}

QPDFObjectHandle inherited(const std::vector<QPDFObjectHandle>& way, const char* key) {
    for (auto node = way.rbegin(); node != way.rend(); ++node) {
        QPDFObjectHandle dictionary = *node;
        if (dictionary.hasKey(key)) return dictionary.getKey(key);
    }
    return QPDFObjectHandle::newNull();
}

// All that can be reached from `object`. An object that is not there is read as null.
void expect_all_of(QPDFObjectHandle object, Visits& visits) {
    std::vector<QPDFObjectHandle> left{object};
    while (!left.empty()) {
        QPDFObjectHandle at = left.back();
        left.pop_back();
        if (at.isIndirect() && at.isNull()) damaged("an object is missing");
        if (!at.isArray() && !at.isDictionary() && !at.isStream()) continue;
        if (visits.count() > most_objects) damaged("too many objects");
        if (!visits.is_first(at)) continue;
        if (at.isArray()) {
            for (QPDFObjectHandle item : at.getArrayAsVector()) left.push_back(item);
            continue;
        }
        for (const auto& [key, value] : (at.isStream() ? at.getDict() : at).getDictAsMap()) {
            left.push_back(value);
        }
    }
}

void expect_content(QPDFObjectHandle page) {
    QPDFObjectHandle content = page.getKey("/Contents");
    if (content.isArray()) {
        for (QPDFObjectHandle part : content.getArrayAsVector()) {
            if (!part.isStream()) damaged("content is missing");
        }
    } else if (!content.isStream() && content.isIndirect()) {
        damaged("content is missing");
    }
}

std::int64_t count_pages(QPDFObjectHandle node, Visits& visits, int depth) {
    if (!node.isDictionary() || depth > deepest_tree) damaged("a page is missing");
    if (visits.count() > most_nodes) damaged("too many nodes");
    if (!visits.is_first(node)) damaged("pages in a circle");
    QPDFObjectHandle kids = node.getKey("/Kids");
    if (!kids.isArray()) {
        expect_content(node);
        return 1;
    }
    if (!visits.is_first(kids)) damaged("pages in a circle");
    std::int64_t count = 0;
    for (int i = 0; i < kids.getArrayNItems(); ++i) {
        count += count_pages(kids.getArrayItem(i), visits, depth + 1);
    }
    return count;
}

}  // namespace

Rectangle rectangle_of(QPDFObjectHandle object) {
    if (!object.isRectangle()) return {};
    const auto corners = object.getArrayAsRectangle();
    return {corners.llx, corners.lly, corners.urx, corners.ury};
}

FirstPage find_first_page(QPDF& document) {
    const std::vector<QPDFObjectHandle> way = way_to_first_page(document);
    FirstPage found{way.back()};
    Rectangle media = rectangle_of(inherited(way, "/MediaBox"));
    if (is_empty(media)) media = a4;
    const Rectangle crop = rectangle_of(inherited(way, "/CropBox"));
    found.box = is_empty(crop) ? media : common(media, crop);
    if (is_empty(found.box)) found.box = media;
    if (QPDFObjectHandle turn = inherited(way, "/Rotate"); turn.isNumber()) {
        const int degrees = static_cast<int>(turn.getNumericValue()) % 360;
        found.turned = (degrees + 360) % 360 / 90 * 90;
    }
    // Not inherited.
    if (QPDFObjectHandle unit = found.page.getKey("/UserUnit"); unit.isNumber()) {
        if (const double points = unit.getNumericValue(); points > 0) found.unit = points;
    }
    return found;
}

void expect_all_pages(QPDF& document) {
    QPDFObjectHandle pages = document.getRoot().getKey("/Pages");
    Visits nodes;
    const std::int64_t found = count_pages(pages, nodes, 0);
    QPDFObjectHandle told = pages.getKey("/Count");
    if (!told.isInteger() || told.getIntValue() != found) damaged("a page is missing");
    Visits objects;
    expect_all_of(pages, objects);
    expect_all_of(document.getRoot().getKey("/AcroForm"), objects);
}

}  // namespace tavrix::pdfsign
