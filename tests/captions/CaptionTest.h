#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QzAnno/model/QzAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "captions/CaptionProblem.h"

namespace qz::test {

/// Captions that are read with a palette of these annotations.
class CaptionTest : public testing::Test {
protected:
    explicit CaptionTest(const std::vector<std::string>& names) {
        // Making a palette prints a line on standard error.
        setStandardErrorHook([](std::string_view) {});
        palette_ = paletteOf(names);
    }
    ~CaptionTest() override { setStandardErrorHook({}); }

    static Ref<QzAnnoPalette> paletteOf(const std::vector<std::string>& names) {
        Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
        palette->setUndoManager(NSUndoManager::init());
        for (const std::string& name : names) palette->createAnno(NSString::stringWithUTF8String(name));
        return palette;
    }

    static std::string namesOf(const NSSet& keys) {
        std::string names;
        for (const auto& key : keys.objects<QzAnnoKey>()) names += (names.empty() ? "" : ",") + key->name()->utf8();
        return names;
    }

    // "b,i|b": the names of the annotations at each character.
    static std::string namesAt(const QzAnnoString& text) {
        std::string result;
        for (uint32_t i = 0; i < text.length(); ++i)
            result += (i > 0 ? "|" : "") + namesOf(*text.annotationsAtIndex(i));
        return result;
    }

    static std::vector<std::string> linesOf(const std::vector<CaptionProblem>& problems) {
        std::vector<std::string> lines;
        for (const CaptionProblem& problem : problems)
            lines.push_back(std::to_string(problem.line) + ": " + problem.message);
        return lines;
    }

    Ref<QzAnnoPalette> palette_;
};

}  // namespace qz::test
