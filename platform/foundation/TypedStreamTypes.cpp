#include "platform/foundation/TypedStreamTypes.h"

#include <algorithm>

#include "platform/foundation/DiagnosticText.h"

namespace qz {

using namespace TypedStreamLimits;

std::optional<IntegerForm> integerFormOf(char code) {
    switch (code) {
        case 'c':
            return IntegerForm{8, true};
        case 'C':
        case 'B':
            return IntegerForm{8, false};
        case 's':
            return IntegerForm{16, true};
        case 'S':
            return IntegerForm{16, false};
        // A long has 32 bits in the stream, whatever its size on this machine.
        case 'i':
        case 'l':
            return IntegerForm{32, true};
        case 'I':
        case 'L':
            return IntegerForm{32, false};
        case 'q':
            return IntegerForm{64, true};
        case 'Q':
            return IntegerForm{64, false};
        default:
            return {};
    }
}

class EncodedTypes::Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    bool parse() {
        if (text_.empty()) return fail("it is empty");
        if (text_.size() > kTypesLengthMax) {
            return fail("it is longer than " + std::to_string(kTypesLengthMax) + " characters");
        }
        while (at_ < text_.size()) {
            if (!parseOne(types_.leastBytes_)) return false;
        }
        return true;
    }

    EncodedTypes& types() { return types_; }
    const std::string& error() const { return error_; }

private:
    bool fail(const std::string& what) {
        if (error_.empty()) error_ = "the type string " + quotedExcerpt(text_) + " is not understood: " + what;
        return false;
    }

    // Recurses as deep as the brackets, which is bounded. Adds the width of the type to `leastBytes`.
    bool parseOne(uint64_t& leastBytes) {
        const char code = text_[at_++];
        const size_t node = types_.nodes_.size();
        types_.nodes_.push_back({code, 0, 0});
        if (code == '[' || code == '{') {
            if (++depth_ > kBracketDepthMax) {
                return fail("more than " + std::to_string(kBracketDepthMax) + " brackets inside each other");
            }
            if (!(code == '[' ? parseArray(node, leastBytes) : parseStructure(leastBytes))) return false;
            --depth_;
        } else if (code != '!') {
            if (std::string_view("cCBsSiIlLqQfd*%:#@+").find(code) == std::string_view::npos) {
                return fail("no type has the code " + quotedExcerpt({&code, 1}));
            }
            ++leastBytes;
        }
        types_.nodes_[node].end = static_cast<uint32_t>(types_.nodes_.size());
        return true;
    }

    bool parseArray(size_t node, uint64_t& leastBytes) {
        uint64_t count = 0;
        const size_t digits = at_;
        for (; at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9'; ++at_) {
            count = count * 10 + static_cast<uint64_t>(text_[at_] - '0');
            if (count > UINT32_MAX) return fail("an array of more than 4,294,967,295 elements");
        }
        if (at_ == digits) return fail("an array without a number of elements");
        uint64_t width = 0;
        if (at_ == text_.size() || text_[at_] == ']' || !parseOne(width)) return fail("an array without a type");
        if (at_ == text_.size() || text_[at_++] != ']')
            return fail("an array of more than one type, or without its end");
        if (count > 0 && width == 0) return fail("an array of a type that takes no space");
        // No data is that large, and the sum must not wrap.
        constexpr uint64_t bytesMax = uint64_t{1} << 62;
        leastBytes = width > bytesMax / (count + 1) ? bytesMax : std::min(bytesMax, leastBytes + count * width);
        types_.nodes_[node].count = static_cast<uint32_t>(count);
        return true;
    }

    bool parseStructure(uint64_t& leastBytes) {
        const size_t name = text_.find_first_of("={}[]", at_);
        if (name == std::string_view::npos || text_[name] != '=')
            return fail("a structure without \"=\" after its name");
        at_ = name + 1;
        while (at_ < text_.size() && text_[at_] != '}') {
            if (!parseOne(leastBytes)) return false;
        }
        if (at_ == text_.size()) return fail("a structure without its end");
        ++at_;
        return true;
    }

    const std::string_view text_;
    size_t at_ = 0;
    size_t depth_ = 0;
    EncodedTypes types_;
    std::string error_;
};

std::optional<EncodedTypes> EncodedTypes::parse(std::string_view text, std::string* error) {
    Parser parser(text);
    if (parser.parse()) return std::move(parser.types());
    if (error) *error = parser.error();
    return {};
}

TypeLeaves::TypeLeaves(const EncodedTypes& types) : types_(types) {}

std::optional<TypeLeaves::Leaf> TypeLeaves::next() {
    const auto& nodes = types_.nodes_;
    for (;;) {
        if (depth_ > 0 && node_ == open_[depth_ - 1].end) {
            Bracket& bracket = open_[depth_ - 1];
            if (--bracket.roundsLeft > 0)
                node_ = bracket.first;
            else
                --depth_;
            continue;
        }
        if (node_ == nodes.size()) return {};
        const auto& [code, count, end] = nodes[node_++];
        ++steps_;
        if (code == '!') continue;
        if (code == '[' && (nodes[node_].code == 'c' || nodes[node_].code == 'C')) {
            node_ = end;
            return Leaf{code, count};
        }
        if (code != '[' && code != '{') return Leaf{code, 0};
        const uint32_t rounds = code == '[' ? count : 1;
        if (rounds == 0)
            node_ = end;
        else
            open_[depth_++] = {node_, end, rounds};
    }
}

}  // namespace qz
