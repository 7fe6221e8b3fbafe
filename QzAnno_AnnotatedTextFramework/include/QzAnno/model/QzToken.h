#pragma once

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// The type of annotation keys as tokens.
inline const Ref<NSString> AnnoKeyTokenType = "QzAnnoKey"_ns;

/// An object that an archive stores as a type and a name, which a token table of the reader turns back into one of the
/// reader's objects.
class QzToken : public NSObject {
public:
    /// Selects the token table.
    virtual Ref<NSString> tokenType() const = 0;
};

/// Turns the tokens of one type into names and names into tokens.
class QzTokenTable {
public:
    virtual ~QzTokenTable() = default;
    /// The type of the tokens in the table.
    virtual Ref<NSString> tokenType() const = 0;
    /// Returns null if the token has no name here; it is then archived as null.
    virtual Ref<NSString> nameForToken(const QzToken& token) const = 0;
    /// Returns null if no token has that name.
    virtual Ref<QzToken> tokenForName(const Ref<NSString>& name) const = 0;
};

}  // namespace qz
