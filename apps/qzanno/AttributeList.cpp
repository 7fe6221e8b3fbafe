#include "apps/qzanno/AttributeList.h"

#include <cmath>
#include <iostream>

#include <nlohmann/json.hpp>

#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"
#include "apps/qzanno/TextTable.h"

namespace qz::tool {
namespace {

/// The kind of its value in a property list.
const char* kindOf(const Attribute& attribute) {
    switch (attribute.kind) {
        case Attribute::Kind::string:
        case Attribute::Kind::point:
        case Attribute::Kind::rectangle:
            return "string";
        case Attribute::Kind::number:
            return "real";
        case Attribute::Kind::flag:
        case Attribute::Kind::choice:
            return "integer";
        case Attribute::Kind::color:
            return "colour";
        case Attribute::Kind::margins:
            return "array of four reals";
        case Attribute::Kind::box:
            break;
    }
    return "box";
}

const char* scopeOf(const Attribute& attribute) {
    return attribute.isOfFrame ? "title" : "run";
}

nlohmann::ordered_json textOrNull(const char* text) {
    return *text ? nlohmann::ordered_json(text) : nlohmann::ordered_json();
}

nlohmann::ordered_json boundOrNull(double bound) {
    return std::isfinite(bound) ? nlohmann::ordered_json(bound) : nlohmann::ordered_json();
}

nlohmann::ordered_json json(const Attribute& attribute) {
    return {{"name", attribute.name->utf8()},
            {"constant", attribute.constant},
            {"label", attribute.label},
            {"value", kindOf(attribute)},
            {"meaning", attribute.meaning},
            {"unit", textOrNull(attribute.unit)},
            {"least", boundOrNull(attribute.least)},
            {"most", boundOrNull(attribute.most)},
            {"choices", attribute.choices},
            {"without", attribute.absent},
            {"of", scopeOf(attribute)},
            {"layer", attribute.layer > 0 ? nlohmann::ordered_json(attribute.layer) : nlohmann::ordered_json()},
            {"field", textOrNull(attribute.field.name)},
            {"ass", textOrNull(attribute.inAss)}};
}

}  // namespace

int listAttributes(bool asJson) {
    if (asJson) {
        auto list = nlohmann::ordered_json::array();
        for (const Attribute& attribute : attributeVocabulary()) list.push_back(json(attribute));
        std::cout << list.dump(2) << "\n";
        return 0;
    }
    std::vector<TableRow> rows = {{"NAME", "VALUE", "OF", "MEANING"}};
    for (const Attribute& attribute : attributeVocabulary()) {
        rows.push_back({attribute.name->utf8(), kindOf(attribute), scopeOf(attribute), attribute.meaning});
    }
    printTable(rows);
    return 0;
}

}  // namespace qz::tool
