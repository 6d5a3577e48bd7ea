// What apps on a device get instead of libcutils, over a device's look-up played here. It is compiled under
// another name, as Linux's stand-in has the same one.

#include <gtest/gtest.h>
#include <sys/system_properties.h>

#include <cstring>
#include <map>
#include <string>

extern "C" int android_property_get(const char* key, char* value, const char* default_value);

namespace {

std::map<std::string, std::string> s_properties;

}  // namespace

// As the device's: empty, and 0, where nothing is set.
extern "C" int __system_property_get(const char* name, char* value) {
    const auto found = s_properties.find(name);
    const std::string text = found != s_properties.end() ? found->second : "";
    std::memcpy(value, text.c_str(), text.size() + 1);
    return static_cast<int>(text.size());
}

namespace {

class AndroidProperty : public testing::Test {
  protected:
    ~AndroidProperty() override { s_properties.clear(); }

    struct Found {
        int length;
        std::string value;
    };
    /// Looks up into a buffer with a mark behind it.
    static Found get(const char* key, const char* fallback) {
        char buffer[PROP_VALUE_MAX + 1];
        std::memset(buffer, '?', sizeof buffer);
        const int length = android_property_get(key, buffer, fallback);
        EXPECT_EQ(buffer[PROP_VALUE_MAX], '?') << "written past the buffer";
        return {length, buffer};
    }
};

TEST_F(AndroidProperty, SetValueComesBack) {
    s_properties["quorvane.para2"] = "20";
    EXPECT_EQ(get("quorvane.para2", "12.000000").value, "20");
    EXPECT_EQ(get("quorvane.para2", "12.000000").length, 2);
    EXPECT_EQ(get("quorvane.para2", nullptr).value, "20");
}

TEST_F(AndroidProperty, ValueThatFillsTheBufferComesBackWhole) {
    s_properties["long"] = std::string(PROP_VALUE_MAX - 1, 'v');
    EXPECT_EQ(get("long", "short").value, std::string(91, 'v'));
    EXPECT_EQ(get("long", "short").length, 91);
}

TEST_F(AndroidProperty, UnsetOrEmptyGivesTheDefault) {
    s_properties["empty"] = "";
    for (const char* key : {"never.set", "empty"}) {
        EXPECT_EQ(get(key, "fallback").value, "fallback") << key;
        EXPECT_EQ(get(key, "fallback").length, 8) << key;
    }
}

TEST_F(AndroidProperty, UnsetWithoutADefaultIsEmpty) {
    for (const char* fallback : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(get("never.set", fallback).value, "");
        EXPECT_EQ(get("never.set", fallback).length, 0);
    }
}

TEST_F(AndroidProperty, LongDefaultIsCutToTheBuffer) {
    const std::string fallback(300, 'd');
    EXPECT_EQ(get("never.set", fallback.c_str()).value, std::string(91, 'd'));
    EXPECT_EQ(get("never.set", fallback.c_str()).length, 91);
}

}  // namespace
