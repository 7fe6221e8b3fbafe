#pragma once

#include <map>
#include <string>
#include <vector>

#include "QzAnno/model/QzToken.h"

namespace qz {

/// Token tables by the type of their tokens; of two tables for one type the later one serves. Owns the tables.
class TokenTables {
public:
    /// A table that is none, or has no type, is passed over.
    explicit TokenTables(const std::vector<Ref<QzTokenTable>>& tables);

    /// None when there is no table for the type.
    Ref<QzTokenTable> tableForType(const Ref<NSString>& type) const;

private:
    std::map<std::u16string, Ref<QzTokenTable>, std::less<>> tables_;
};

}  // namespace qz
