#include "bindings/c/Report.h"

#include <algorithm>
#include <array>

#include "bindings/c/Calls.h"

namespace qz::c {
namespace {

qzanno_report_kind kindOf(const RenderReport::Clipping& clipping) {
    using Part = RenderReport::Clipping::Part;
    switch (clipping.part) {
        case Part::text:
            return QZANNO_REPORT_TEXT_CLIPPED;
        case Part::glyphs:
            return QZANNO_REPORT_GLYPHS_CLIPPED;
        case Part::layer:
            break;
    }
    constexpr std::array kLayers = {QZANNO_REPORT_LAYER1_CLIPPED, QZANNO_REPORT_LAYER2_CLIPPED};
    return kLayers[std::min<size_t>(clipping.layer, kLayers.size()) - 1];
}

qzanno_report_kind kindOf(RenderReport::MissingTrait::Trait trait) {
    using Trait = RenderReport::MissingTrait::Trait;
    switch (trait) {
        case Trait::bold:
            return QZANNO_REPORT_BOLD_SYNTHESISED;
        case Trait::italic:
            return QZANNO_REPORT_ITALIC_SYNTHESISED;
        case Trait::regular:
            return QZANNO_REPORT_REGULAR_MISSING;
        case Trait::upright:
            break;
    }
    return QZANNO_REPORT_UPRIGHT_MISSING;
}

}  // namespace

std::unique_ptr<qzanno_report> newReport(const RenderReport& report, const TextPositions& positions) {
    auto made = std::make_unique<qzanno_report>();
    const auto add = [&](qzanno_report_kind kind, Range range, const std::string& asked, const std::string& used) {
        made->items.push_back({kind, positions.bytesOf(range), asked, used});
    };
    for (const auto& substitution : report.substitutions) {
        const auto kind = substitution.isFontMissing ? QZANNO_REPORT_FONT_MISSING : QZANNO_REPORT_FONT_SUBSTITUTED;
        for (const Range range : substitution.ranges)
            add(kind, range, substitution.fontAskedFor, substitution.fontThatServed);
    }
    for (const auto& missing : report.missingGlyphs) {
        for (const Range range : missing.ranges) add(QZANNO_REPORT_GLYPH_MISSING, range, "", missing.font);
    }
    for (const auto& missing : report.missingTraits) {
        for (const Range range : missing.ranges) add(kindOf(missing.trait), range, "", missing.font);
    }
    for (const auto& clipping : report.clipped) add(kindOf(clipping), clipping.characters, "", "");
    return made;
}

}  // namespace qz::c

using namespace qz::c;

void qzanno_report_free(qzanno_report* report) {
    delete report;
}

size_t qzanno_report_count(const qzanno_report* report) {
    return report ? report->items.size() : 0;
}

qzanno_result qzanno_report_item_at(const qzanno_report* report, size_t index, qzanno_report_item* out) {
    if (!report) return failNull("report");
    if (!out) return failNull("out");
    return guarded([=] {
        if (index >= report->items.size()) return failIndex(index, report->items.size());
        const qzanno_report::Item& item = report->items[index];
        *out = {item.kind, item.bytes.start, item.bytes.length, item.fontAsked.c_str(), item.fontUsed.c_str()};
        return QZANNO_OK;
    });
}
