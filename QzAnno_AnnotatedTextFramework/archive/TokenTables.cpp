#include "QzAnno_AnnotatedTextFramework/archive/TokenTables.h"

namespace qz {

TokenTables::TokenTables(const std::vector<Ref<QzTokenTable>>& tables) {
    for (const Ref<QzTokenTable>& table : tables) {
        if (table && table->tokenType()) tables_[std::u16string(table->tokenType()->characters())] = table;
    }
}

Ref<QzTokenTable> TokenTables::tableForType(const Ref<NSString>& type) const {
    const auto found = type ? tables_.find(type->characters()) : tables_.end();
    return found == tables_.end() ? nullptr : found->second;
}

}  // namespace qz
