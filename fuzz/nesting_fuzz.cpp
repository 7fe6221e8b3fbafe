// Compares, describes, writes and frees objects nested deeply or in cycles. Whatever the shape, the stack must not
// overflow, nothing may leak, and any refusal must be one line.
#include <algorithm>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "QzAnno/model/QzAnno.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "fuzz/Fuzzing.h"
#include "fuzz/TypedStreamCheck.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/ObjectMap.h"

namespace {

using namespace qz;
using fuzz::require;

constexpr size_t kNodesMax = 24;
// Limit for steps of a walk that visits shared objects each time; more would only take time.
constexpr uint64_t kUnfoldedMax = 200;

struct Node {
    Ref<NSObject> object;
    std::vector<size_t> holds;
    bool isFixed = true;  // neither it nor its contents can be edited
};
using Nodes = std::vector<Node>;

/// The number of objects visited by a walk from the node, where a cycle ends at the object that it returns to.
uint64_t unfolded(const Nodes& nodes, size_t node, std::vector<bool>& isOpen) {
    if (isOpen[node]) return 1;
    isOpen[node] = true;
    uint64_t sum = 1;
    for (const size_t held : nodes[node].holds) {
        if (sum <= kUnfoldedMax) sum += unfolded(nodes, held, isOpen);
    }
    isOpen[node] = false;
    return sum;
}

Ref<NSDictionary> dictionaryOf(const Ref<NSString>& key, const Ref<NSObject>& value) {
    ObjectMap map;
    map.set(key, value);
    return NSDictionary::dictionaryWithMap(std::move(map));
}

/// Wraps the object in levels of collections.
Ref<NSObject> wrapped(Ref<NSObject> object, uint32_t levels, int kind) {
    for (uint32_t level = 0; level < levels; ++level) {
        switch (kind == 3 ? static_cast<int>(level % 3) : kind) {
            case 0:
                object = NSArray::arrayWithObjects({object});
                break;
            case 1:
                object = dictionaryOf("k"_ns, object);
                break;
            default:
                object = NSSet::setWithObject(object);
        }
    }
    return object;
}

class Builder {
public:
    explicit Builder(FuzzedDataProvider& input) : input_(input) {}
    ~Builder() {
        // The host must break cycles.
        for (const Node& node : nodes_) hold(node, {});
    }

    const Nodes& nodes() const { return nodes_; }

    void step() {
        switch (input_.ConsumeIntegralInRange<int>(0, 8)) {
            case 0:
                return add({NSString::stringWithUTF8String(input_.ConsumeRandomLengthString(3)), {}});
            case 1:
                return add({NSNumber::numberWithInt(input_.ConsumeIntegral<int8_t>()), {}});
            case 2:
                return addCollection();
            case 3: {
                const size_t held = any();
                // A few, about the limit, or enough to overflow a stack.
                const auto levels =
                    input_.PickValueInArray({1u, 1u, 2u, 2u, 3u, 3u, 5u, 5u, 8u, 8u, 508u, 510u, 511u, 512u, 20'000u});
                const int kind = input_.ConsumeIntegralInRange<int>(nodes_[held].isFixed ? 0 : 1, 1);
                return add({wrapped(nodes_[held].object, levels, nodes_[held].isFixed && kind ? 3 : kind),
                            {held},
                            nodes_[held].isFixed});
            }
            case 4: {
                const size_t base = any();
                return add(
                    {NSURL::URLWithString("u"_ns, std::dynamic_pointer_cast<NSURL>(nodes_[base].object)), {base}});
            }
            case 5:
                return add({NSMutableAttributedString::initWithAttributedString(
                                *NSAttributedString::initWithString("text"_ns)),
                            {},
                            false});
            case 6:
                return add({QzAnno::initWithKey(QzAnnoKey::keyWithName("a"_ns))->mutableCopy(), {}, false});
            default: {
                const size_t holder = any(), held = any();
                if (!hold(nodes_[holder], dictionaryOf("held"_ns, nodes_[held].object))) return;
                nodes_[holder].holds = {held};
            }
        }
    }

private:
    size_t any() {
        if (nodes_.empty()) add({"leaf"_ns, {}});
        return input_.ConsumeIntegralInRange<size_t>(0, nodes_.size() - 1);
    }

    void add(Node node) {
        if (nodes_.size() < kNodesMax) nodes_.push_back(std::move(node));
    }

    void addCollection() {
        Node node;
        std::vector<Ref<NSObject>> objects;
        for (int count = input_.ConsumeIntegralInRange<int>(0, 3); count > 0; --count) {
            node.holds.push_back(any());
            const Node& held = nodes_[node.holds.back()];
            objects.push_back(held.object);
            node.isFixed = node.isFixed && held.isFixed;
        }
        const int kind = input_.ConsumeIntegralInRange<int>(0, 2);
        if (kind == 0) {
            ObjectMap map;
            for (const Ref<NSObject>& object : objects)
                map.set(NSString::stringWithUTF8String(std::to_string(map.size())), object);
            node.object = NSDictionary::dictionaryWithMap(std::move(map));
        } else if (kind == 1 && node.isFixed) {
            // Members edited later could become equal without the set noticing.
            node.object = NSSet::setWithObjects(objects);
        } else {
            node.object = NSArray::arrayWithObjects(std::move(objects));
        }
        add(std::move(node));
    }

    /// Sets the attributes of an editable object.
    static bool hold(const Node& node, const Ref<NSDictionary>& attributes) {
        if (const auto text = std::dynamic_pointer_cast<NSMutableAttributedString>(node.object))
            return text->setAttributes(attributes, {0, text->length()});
        const auto anno = std::dynamic_pointer_cast<QzMutableAnno>(node.object);
        if (anno) anno->setAttributes(attributes);
        return anno != nullptr;
    }

    FuzzedDataProvider& input_;
    Nodes nodes_;
};

void requireOneLine(const std::string& error) {
    require(!error.empty() && error.find('\n') == std::string::npos, "a refusal is one line");
}

void write(const Ref<NSObject>& object) {
    std::string error;
    if (const Ref<NSData> archive = NSArchiver::archivedDataWithRootObject(object, &error)) {
        bool wasRead = false;
        error = test::checkTypedStream(archive->view(), &wasRead);
        if (!error.empty()) std::fprintf(stderr, "%s\n", error.c_str());
        require(error.empty() && wasRead, "what is written can be read");
    } else {
        requireOneLine(error);
    }
    error.clear();
    if (const Ref<NSData> list =
            NSPropertyListSerialization::dataFromPropertyList(object, NSPropertyListFormat::xml, &error)) {
        const Ref<NSObject> read = NSPropertyListSerialization::propertyListFromData(*list, &error);
        require(read && read->isEqual(*object), "a list comes back as it was");
    } else {
        requireOneLine(error);
    }
}

void check(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    Builder builder(input);
    while (input.remaining_bytes() > 0) {
        builder.step();
        if (input.ConsumeIntegralInRange<int>(0, 3) > 0 || builder.nodes().empty()) continue;
        const Nodes& nodes = builder.nodes();
        const size_t a = input.ConsumeIntegralInRange<size_t>(0, nodes.size() - 1);
        const size_t b = input.ConsumeIntegralInRange<size_t>(0, nodes.size() - 1);
        std::vector<bool> isOpen(nodes.size());
        if (unfolded(nodes, a, isOpen) > kUnfoldedMax || unfolded(nodes, b, isOpen) > kUnfoldedMax) continue;
        const NSObject &first = *nodes[a].object, &second = *nodes[b].object;
        require(first.isEqual(first), "an object is equal to itself");
        const bool areAlike = first.isEqual(second);
        require(areAlike == second.isEqual(first), "equality goes both ways");
        require(!areAlike || first.hash() == second.hash(), "equal objects have equal hashes");
        require(!first.description().empty() || !nodes[a].holds.empty() || first.className() == "NSString",
                "an object describes itself");
        write(nodes[a].object);
    }
}

}  // namespace

QZ_FUZZ(check)
