#pragma once

#include "platform/foundation/NSString.h"

namespace qz {

/// The type of annotation keys as tokens.
inline const Ref<NSString> AnnoKeyTokenType = "QzAnnoKey"_ns;

/// An object that an archive holds as a type and a name, for a token table of the reader to turn into an object of its
/// own again.
class QzToken : public NSObject {
public:
    virtual Ref<NSString> tokenType() const = 0;
};

/// Turns the tokens of one type into names and names into tokens.
class QzTokenTable {
public:
    virtual ~QzTokenTable() = default;
    virtual Ref<NSString> tokenType() const = 0;
    virtual Ref<NSString> nameForToken(const QzToken& token) const = 0;
    /// None when the name stands for no token.
    virtual Ref<QzToken> tokenForName(const Ref<NSString>& name) const = 0;
};

}  // namespace qz
