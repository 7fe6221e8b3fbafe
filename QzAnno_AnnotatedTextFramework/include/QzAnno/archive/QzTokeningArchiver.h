#pragma once

#include "QzAnno/model/QzToken.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"

namespace qz {

class TokenTables;

/// Writes objects that refer to annotation keys, above all annotated strings: each key, or other token, is written as a
/// type and the name that its table, normally the palette, gives it.
///
/// A token whose type has no table is written as a placeholder that reads back as null. Every token logs a line. For
/// one archive and one thread; owns the tables.
class QzTokeningArchiver final : public NSArchiver {
public:
    /// Returns null if the object cannot be archived, with one line in `error` that says what failed and where in the
    /// object.
    static Ref<NSData> archivedDataWithRootObject(const Ref<NSObject>& rootObject,
                                                  const std::vector<Ref<QzTokenTable>>& tokeners,
                                                  std::string* error = nullptr);
    /// For writing objects one by one.
    static Ref<QzTokeningArchiver> initWithTokeners(const std::vector<Ref<QzTokenTable>>& tokeners);

    /// Writes the three objects that represent the token; called in place of the token's own content. Returns false
    /// after a failure.
    bool encodeTokenObject(const QzToken& token);

    std::string className() const override { return "QzTokeningArchiver"; }

private:
    explicit QzTokeningArchiver(const std::vector<Ref<QzTokenTable>>& tokeners);

    const std::shared_ptr<const TokenTables> tokeners_;
};

/// Reads what a `QzTokeningArchiver` wrote. The tables turn names into tokens: the keys of a string become keys of the
/// reader's palette, and a name missing from the palette becomes its global key.
///
/// For one archive and one thread; owns the tables.
class QzTokeningUnarchiver final : public NSUnarchiver {
public:
    /// Returns the first object of the stream, or null, with one line in `error`, if it cannot be read.
    static Ref<NSObject> unarchiveObjectWithData(const Ref<NSData>& data,
                                                 const std::vector<Ref<QzTokenTable>>& tokeners,
                                                 std::string* error = nullptr);
    /// For reading objects one by one.
    static Ref<QzTokeningUnarchiver> initForReadingWithData(const Ref<NSData>& data,
                                                            const std::vector<Ref<QzTokenTable>>& tokeners);

    /// Reads what `encodeTokenObject` wrote. Returns null, with a log line, if the record's version is not 1 or its
    /// type has no table.
    Ref<QzToken> decodeTokenObject();

    /// Unites two bit sets under one key, as when several names become the global key, in a new one.
    Ref<NSObject> valueUnderRepeatedKey(const Ref<NSObject>& former, const Ref<NSObject>& later) override;

    std::string className() const override { return "QzTokeningUnarchiver"; }

private:
    QzTokeningUnarchiver(const Ref<NSData>& data, const std::vector<Ref<QzTokenTable>>& tokeners);

    const std::shared_ptr<const TokenTables> tokeners_;
};

}  // namespace qz
