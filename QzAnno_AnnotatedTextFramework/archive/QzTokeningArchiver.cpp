#include "QzAnno/archive/QzTokeningArchiver.h"

#include <algorithm>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno_AnnotatedTextFramework/archive/TokenTables.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"

namespace qz {
namespace {

constexpr int32_t kTokeningVersion = 1;

// Type and name of a token without a name.
const Ref<NSString> kPlaceholder = "__IGotFarkle"_ns;

}  // namespace

QzTokeningArchiver::QzTokeningArchiver(const std::vector<Ref<QzTokenTable>>& tokeners)
    : tokeners_(std::make_shared<const TokenTables>(tokeners)) {}

Ref<QzTokeningArchiver> QzTokeningArchiver::initWithTokeners(const std::vector<Ref<QzTokenTable>>& tokeners) {
    return Ref<QzTokeningArchiver>(new QzTokeningArchiver(tokeners));
}

Ref<NSData> QzTokeningArchiver::archivedDataWithRootObject(const Ref<NSObject>& rootObject,
                                                           const std::vector<Ref<QzTokenTable>>& tokeners,
                                                           std::string* error) {
    const Ref<QzTokeningArchiver> archiver = initWithTokeners(tokeners);
    archiver->encodeRootObject(rootObject);
    if (error && archiver->hasFailed()) *error = archiver->error();
    return archiver->archiverData();
}

bool QzTokeningArchiver::encodeTokenObject(const QzToken& token) {
    const Ref<QzTokenTable> table = tokeners_->tableForType(token.tokenType());
    encodeObject(NSNumber::numberWithInt(kTokeningVersion));
    if (!table) {
        NSLog("No table to encode token of type %@\n", {token.tokenType()});
        return encodeObject(kPlaceholder) && encodeObject(kPlaceholder);
    }
    const Ref<NSString> name = table->nameForToken(token);
    encodeObject(table->tokenType());
    encodeObject(name);
    NSLog("Encoded %@ for %@\n", {name, token});
    return !hasFailed();
}

QzTokeningUnarchiver::QzTokeningUnarchiver(const Ref<NSData>& data, const std::vector<Ref<QzTokenTable>>& tokeners)
    : NSUnarchiver(data), tokeners_(std::make_shared<const TokenTables>(tokeners)) {}

Ref<QzTokeningUnarchiver> QzTokeningUnarchiver::initForReadingWithData(const Ref<NSData>& data,
                                                                       const std::vector<Ref<QzTokenTable>>& tokeners) {
    return Ref<QzTokeningUnarchiver>(new QzTokeningUnarchiver(data, tokeners));
}

Ref<NSObject> QzTokeningUnarchiver::unarchiveObjectWithData(const Ref<NSData>& data,
                                                            const std::vector<Ref<QzTokenTable>>& tokeners,
                                                            std::string* error) {
    const Ref<QzTokeningUnarchiver> unarchiver = initForReadingWithData(data, tokeners);
    const Ref<NSObject> object = unarchiver->decodeObject();
    if (error && unarchiver->hasFailed()) *error = unarchiver->error();
    return object;
}

Ref<QzToken> QzTokeningUnarchiver::decodeTokenObject() {
    const auto version = decodeObjectOfClass<NSNumber>("NSNumber");
    if (hasFailed()) return {};
    if (!version || version->intValue() != kTokeningVersion) {
        NSLog("unknown tokening version\n");
        return {};
    }
    const auto type = decodeObjectOfClass<NSString>("NSString");
    const auto name = decodeObjectOfClass<NSString>("NSString");
    if (hasFailed()) return {};
    const Ref<QzTokenTable> table = tokeners_->tableForType(type);
    if (!table) {
        NSLog("No table to decode token of type %@\n", {type});
        return {};
    }
    Ref<QzToken> token = table->tokenForName(name);
    NSLog("Decoded %@ for %@\n", {token, name});
    return token;
}

Ref<NSObject> QzTokeningUnarchiver::valueUnderRepeatedKey(const Ref<NSObject>& former, const Ref<NSObject>& later) {
    const auto bits = std::dynamic_pointer_cast<QzAnnoBits>(former);
    const auto others = std::dynamic_pointer_cast<QzAnnoBits>(later);
    if (!bits || !others || bits == others) return later;
    const uint32_t size = std::max(bits->size(), others->size());
    if (!countMemory(uint64_t{size} + 1)) return {};
    const Ref<QzAnnoBits> united = bits->copy();
    Range run;
    for (uint64_t i = 0; i < size; i = run.end()) {
        if (others->getValueAtIndex(static_cast<uint32_t>(i), &run))
            united->setRange(
                {static_cast<uint32_t>(i), static_cast<uint32_t>(std::min<uint64_t>(run.end(), size) - i)});
    }
    return united;
}

}  // namespace qz
