#pragma once

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// The type of annotation keys as tokens.
inline const Ref<NSString> AnnoKeyTokenType = "QzAnnoKey"_ns;

/// An object that an archive holds as a type and a name, for a token table of the reader to turn into an object of its
/// own again.
class QzToken : public NSObject {
public:
    /// By which its token table is found.
    virtual Ref<NSString> tokenType() const = 0;
};

/// Turns the tokens of one type into names and names into tokens.
class QzTokenTable {
public:
    virtual ~QzTokenTable() = default;
    /// Of the tokens that the table serves.
    virtual Ref<NSString> tokenType() const = 0;
    /// None when the token has no name here; then none is archived.
    virtual Ref<NSString> nameForToken(const QzToken& token) const = 0;
    /// None when the name stands for no token.
    virtual Ref<QzToken> tokenForName(const Ref<NSString>& name) const = 0;
};

}  // namespace qz
