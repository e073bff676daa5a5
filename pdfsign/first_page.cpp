#include "pdfsign/first_page.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <vector>

namespace tavrix::pdfsign {
namespace {

constexpr int deepest_tree = 100;
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
    std::set<QPDFObjGen> seen;
    const auto descend = [&](const auto& self, QPDFObjectHandle at) -> bool {
        if (!at.isDictionary() || way.size() > deepest_tree) return false;
        if (at.isIndirect() && !seen.insert(at.getObjGen()).second) return false;
        way.push_back(at);
        QPDFObjectHandle kids = at.getKey("/Kids");
        if (!kids.isArray()) return at.isIndirect();
        for (int i = 0; i < kids.getArrayNItems(); ++i) {
            if (self(self, kids.getArrayItem(i))) return true;
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

void expect_resources(QPDFObjectHandle resources) {
    if (!resources.isDictionary()) {
        if (resources.isIndirect()) damaged("resources are missing");
        return;
    }
    for (const char* kind : {"/XObject", "/Font"}) {
        QPDFObjectHandle entries = resources.getKey(kind);
        if (entries.isIndirect() && !entries.isDictionary()) damaged("resources are missing");
        if (!entries.isDictionary()) continue;
        for (const std::string& key : entries.getKeys()) {
            if (entries.getKey(key).isNull()) damaged("a resource is missing");
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
    expect_resources(page.getKey("/Resources"));
}

std::int64_t count_pages(QPDFObjectHandle node, std::set<QPDFObjGen>& seen, int depth) {
    if (!node.isDictionary() || depth > deepest_tree) damaged("a page is missing");
    if (node.isIndirect() && !seen.insert(node.getObjGen()).second) damaged("pages in a circle");
    QPDFObjectHandle kids = node.getKey("/Kids");
    if (!kids.isArray()) {
        expect_content(node);
        return 1;
    }
    std::int64_t count = 0;
    for (int i = 0; i < kids.getArrayNItems(); ++i) {
        count += count_pages(kids.getArrayItem(i), seen, depth + 1);
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
    std::set<QPDFObjGen> seen;
    const std::int64_t found = count_pages(pages, seen, 0);
    QPDFObjectHandle told = pages.getKey("/Count");
    if (!told.isInteger() || told.getIntValue() != found) damaged("a page is missing");
}

}  // namespace tavrix::pdfsign
