#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QzAnno/render/RenderReport.h"
#include "bindings/c/TextPositions.h"
#include "bindings/c/qzanno.h"

struct qzanno_report {
    struct Item {
        qzanno_report_kind kind;
        qz::c::TextPositions::Bytes bytes;
        std::string fontAsked;
        std::string fontUsed;
    };

    std::vector<Item> items;
};

namespace qz::c {

/// Makes one item for each stretch in the report; `positions` are those of the title's text.
std::unique_ptr<qzanno_report> newReport(const RenderReport& report, const TextPositions& positions);

}  // namespace qz::c
