#include <string>

#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSNotificationCenter.h"

namespace qz {
namespace {

class NSNotificationCenterTest : public testing::Test {
protected:
    NSNotificationCenter::Handler logs(char letter) {
        return [this, letter](const NSNotification& notification) {
            log_ += letter;
            EXPECT_EQ(notification.userInfo, info_);
        };
    }
    std::string logOfPost(const Ref<NSString>& name, const Ref<NSObject>& object) {
        log_.clear();
        center_.postNotificationName(name, object, info_);
        return log_;
    }

    NSNotificationCenter center_;
    std::string log_;
    const Ref<NSDictionary> info_ = NSDictionary::dictionary();
    const Ref<NSObject> palette_ = NSDictionary::dictionary();
    const Ref<NSObject> other_ = NSDictionary::dictionary();
    int observer_ = 0;
    int secondObserver_ = 0;
};

TEST_F(NSNotificationCenterTest, FiltersByNameAndObjectInTheOrderOfAddition) {
    center_.addObserver(&observer_, logs('n'), "Changed"_ns, nullptr);
    center_.addObserver(&observer_, logs('o'), {}, palette_.get());
    center_.addObserver(&observer_, logs('*'), {}, nullptr);
    center_.addObserver(&observer_, logs('b'), "Changed"_ns, palette_.get());
    center_.addObserver(&observer_, {}, {}, nullptr);
    EXPECT_EQ(logOfPost("Changed"_ns, palette_), "no*b");
    EXPECT_EQ(logOfPost("Changed"_ns, other_), "n*") << "an equal object is another object";
    EXPECT_EQ(logOfPost("Loaded"_ns, palette_), "o*");
    EXPECT_EQ(logOfPost("Loaded"_ns, {}), "*");
}

TEST_F(NSNotificationCenterTest, RemovesWhatMatchesOnly) {
    const auto addAll = [&] {
        center_.removeObserver(&observer_);
        center_.removeObserver(&secondObserver_);
        center_.addObserver(&observer_, logs('a'), "Changed"_ns, palette_.get());
        center_.addObserver(&observer_, logs('b'), "Changed"_ns, nullptr);
        center_.addObserver(&observer_, logs('c'), {}, palette_.get());
        center_.addObserver(&secondObserver_, logs('d'), "Changed"_ns, palette_.get());
    };
    addAll();
    center_.removeObserver(&observer_, "Changed"_ns);
    EXPECT_EQ(logOfPost("Changed"_ns, palette_), "cd");
    addAll();
    center_.removeObserver(&observer_, {}, palette_.get());
    EXPECT_EQ(logOfPost("Changed"_ns, palette_), "bd");
    addAll();
    center_.removeObserver(&observer_);
    EXPECT_EQ(logOfPost("Changed"_ns, palette_), "d");
}

TEST_F(NSNotificationCenterTest, HandlersMayAddAndRemove) {
    center_.addObserver(
        &observer_,
        [&](const NSNotification&) {
            log_ += '1';
            center_.removeObserver(&observer_);
            center_.removeObserver(&secondObserver_);
            center_.addObserver(&log_, logs('3'), {}, nullptr);
        },
        {}, nullptr);
    center_.addObserver(&secondObserver_, logs('2'), {}, nullptr);
    EXPECT_EQ(logOfPost("Changed"_ns, {}), "1") << "removed: not called any more; added: not called yet";
    EXPECT_EQ(logOfPost("Changed"_ns, {}), "3");
}

TEST_F(NSNotificationCenterTest, HandlersThatCallBackWhenTheyDieDoNotBlock) {
    struct Guest {
        NSNotificationCenter& center;
        ~Guest() { center.removeObserver(this); }
    };
    center_.addObserver(
        &observer_, [guest = std::make_shared<Guest>(center_)](const NSNotification&) {}, {}, nullptr);
    center_.removeObserver(&observer_);
    EXPECT_EQ(logOfPost("Changed"_ns, {}), "");
}

}  // namespace
}  // namespace qz
