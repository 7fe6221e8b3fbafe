#pragma once

#include "QzAnno/model/QzToken.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"

namespace qz {

class TokenTables;

/// Writes what refers to annotation keys, annotated strings above all: each key, or other token, is written as a type
/// and the name that its table, normally the palette, gives it.
///
/// A token for whose type there is no table is written as a placeholder that reads back as no object. Every token
/// leaves a line in the log. Made for one archive; owns the tables. Used from one thread.
class QzTokeningArchiver final : public NSArchiver {
public:
    /// None, with one line in `error` that says what failed and where in the object it stands.
    static Ref<NSData> archivedDataWithRootObject(const Ref<NSObject>& rootObject,
                                                  const std::vector<Ref<QzTokenTable>>& tokeners,
                                                  std::string* error = nullptr);
    /// For objects that are written one by one.
    static Ref<QzTokeningArchiver> initWithTokeners(const std::vector<Ref<QzTokenTable>>& tokeners);

    /// Writes the three objects that stand for the token; called where the token's own content goes. False after a
    /// failure.
    bool encodeTokenObject(const QzToken& token);

    std::string className() const override { return "QzTokeningArchiver"; }

private:
    explicit QzTokeningArchiver(const std::vector<Ref<QzTokenTable>>& tokeners);

    const std::shared_ptr<const TokenTables> tokeners_;
};

/// Reads what a `QzTokeningArchiver` wrote. The tables turn the names into tokens of their own: the keys of a string
/// become the keys of the reader's palette, and a name that the palette lacks becomes its global key.
///
/// Made for one archive; owns the tables. Used from one thread.
class QzTokeningUnarchiver final : public NSUnarchiver {
public:
    /// The first object of the stream; none, with one line in `error`, when it cannot be read.
    static Ref<NSObject> unarchiveObjectWithData(const Ref<NSData>& data,
                                                 const std::vector<Ref<QzTokenTable>>& tokeners,
                                                 std::string* error = nullptr);
    /// For objects that are read one by one.
    static Ref<QzTokeningUnarchiver> initForReadingWithData(const Ref<NSData>& data,
                                                            const std::vector<Ref<QzTokenTable>>& tokeners);

    /// Reads what `encodeTokenObject` wrote. None, with a line in the log, when the record is of another version than
    /// 1 or there is no table for its type.
    Ref<QzToken> decodeTokenObject();

    /// Of two bit sets, as of names that all become the global key, a new one with the positions of both.
    Ref<NSObject> valueUnderRepeatedKey(const Ref<NSObject>& former, const Ref<NSObject>& later) override;

    std::string className() const override { return "QzTokeningUnarchiver"; }

private:
    QzTokeningUnarchiver(const Ref<NSData>& data, const std::vector<Ref<QzTokenTable>>& tokeners);

    const std::shared_ptr<const TokenTables> tokeners_;
};

}  // namespace qz
