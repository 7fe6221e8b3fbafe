#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "captions/PlainText.h"

namespace qz {
namespace {

TEST(PlainText, IsOneTitle) {
    const struct {
        std::string file;
        const char* text;
        const char* reason;
    } cases[] = {
        {"one\ntwo\n", "one\ntwo", "the last line end goes"}, {"one\r\ntwo\r\n", "one\ntwo", "line ends of Windows"},
        {"one\rtwo", "one\ntwo", "line ends of old"},         {"one\n\n", "one\n", "an empty last line stays"},
        {"\xEF\xBB\xBFone", "one", "a byte-order mark"},      {"<b>&amp;", "<b>&amp;", "no markup is read"},
        {"", "", "an empty file is an empty title"},
    };
    for (const auto& [file, text, reason] : cases) {
        const auto title = readPlainText(*NSData::dataWithBytes(file));
        ASSERT_TRUE(title && *title) << reason;
        EXPECT_EQ((*title)->string()->utf8(), text) << reason;
    }
}

TEST(PlainText, OtherEncodingsAreNamed) {
    for (const auto& [file, message] :
         std::map<std::string, const char*>{{"one\ntw\xF6\n", "byte 6 begins no character; save it as UTF-8"},
                                            {"\xEF\xBB\xBFone \xE2\x82", "byte 7 begins no character"},
                                            {"\xED\xA0\x80", "byte 0 begins no character"},
                                            {std::string("o\0n\0", 4), "the file is in UTF-16"}}) {
        CaptionProblem error;
        EXPECT_FALSE(readPlainText(*NSData::dataWithBytes(file), &error));
        EXPECT_THAT(error.message, testing::HasSubstr(message));
    }
}

}  // namespace
}  // namespace qz
