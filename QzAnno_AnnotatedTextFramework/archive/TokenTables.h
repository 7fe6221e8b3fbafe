#pragma once

#include <map>
#include <string>
#include <vector>

#include "QzAnno/model/QzToken.h"

namespace qz {

/// Token tables by the type of their tokens; of two tables for one type, the later one is used. Owns the tables.
class TokenTables {
public:
    /// Skips null tables and tables without a type.
    explicit TokenTables(const std::vector<Ref<QzTokenTable>>& tables);

    /// Returns null if there is no table for the type.
    Ref<QzTokenTable> tableForType(const Ref<NSString>& type) const;

private:
    std::map<std::u16string, Ref<QzTokenTable>, std::less<>> tables_;
};

}  // namespace qz
