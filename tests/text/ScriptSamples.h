#pragma once

#include <algorithm>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "platform/foundation/ObjectMap.h"
#include "platform/text/TextBreaker.h"
#include "tests/text/TextSystem.h"

namespace qz {

/// A line of data/scripts.txt.
struct ScriptSample {
    std::string script;
    std::vector<Ref<NSFont>> fonts;
    std::string text;  ///< UTF-8
    int line;

    Ref<NSAttributedString> attributedText() const {
        const auto result = NSMutableAttributedString::init();
        const std::u16string characters = NSString::stringWithUTF8String(text)->characters();
        const std::vector<uint8_t> clusters = TextBreaker::clustersInText(characters);
        for (size_t start = 0, end = 0; start < characters.size(); start = end) {
            end = start + 1;
            while (end < characters.size() && !clusters[end]) ++end;
            const auto cluster = std::u16string_view(characters).substr(start, end - start);
            const auto font = std::ranges::find_if(fonts, [&](const auto& f) { return f->coversText(cluster); });
            ObjectMap attributes;
            attributes.set(NSFontAttributeName, font != fonts.end() ? *font : fonts.front());
            result->appendString(cluster, NSDictionary::dictionaryWithMap(std::move(attributes)));
        }
        return result;
    }
};

inline constexpr float kSampleSize = 32;

inline std::vector<ScriptSample> scriptSamples() {
    std::vector<ScriptSample> samples;
    std::ifstream file(QZANNO_SCRIPT_SAMPLES);
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (line.empty() || line[0] == '#') continue;
        const size_t first = line.find('\t'), second = line.find('\t', first + 1);
        ScriptSample sample{line.substr(0, first), {}, line.substr(second + 1), number};
        std::istringstream names(line.substr(first + 1, second - first - 1));
        for (std::string name; names >> name;) {
            const auto font = NSFont::fontWithName(*NSString::stringWithUTF8String(name), kSampleSize);
            EXPECT_TRUE(font) << "line " << number << ": the font " << name << " is not installed";
            if (font) sample.fonts.push_back(font);
        }
        if (!sample.fonts.empty()) samples.push_back(std::move(sample));
    }
    EXPECT_GE(samples.size(), 149u);
    return samples;
}

}  // namespace qz
