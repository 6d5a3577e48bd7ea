#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "support/processes.h"
#include "support/temporary_folder.h"

namespace {

using quorvane::test::TemporaryFolder;
using quorvane::test::writeBytes;

/// Set in a process that is to read the file that QUORVANE_PROPERTIES names already.
constexpr char kKeepFile[] = "QUORVANE_TEST_KEEP_PROPERTY_FILE";

// The table is filled once, at the first call, so the file stands before any test runs.
class PropertyFile : public testing::Environment {
  public:
    void SetUp() override {
        if (std::getenv(kKeepFile) != nullptr) return;
        writeBytes(m_folder / "file.prop",
                   "# a comment\n"
                   "\n"
                   "from.file=42\n"
                   "  spaced.key =  spaced value \r\n"
                   "with.equals=a=b\n"
                   "no equals sign\n"
                   "=no key\n"
                   "too.long=" +
                       std::string(92, 'x') +
                       "\n"
                       "longest=" +
                       std::string(91, 'x') +
                       "\n"
                       "after.bad=still read");
        setenv("QUORVANE_PROPERTIES", (m_folder / "file.prop").c_str(), 1);
        testing::internal::CaptureStderr();
        char value[PROPERTY_VALUE_MAX];
        property_get("from.file", value, nullptr);
        s_complaints = testing::internal::GetCapturedStderr();
        s_path = m_folder / "file.prop";
    }

    static inline std::string s_complaints;
    static inline std::string s_path;

  private:
    TemporaryFolder m_folder;
};

[[maybe_unused]] const auto* const kFile = testing::AddGlobalTestEnvironment(new PropertyFile);

struct Found {
    int length;
    std::string value;
};

Found get(const char* key, const char* fallback) {
    char value[PROPERTY_VALUE_MAX];
    std::memset(value, '?', sizeof value);
    const int length = property_get(key, value, fallback);
    return {length, value};
}

TEST(Property, UnsetGivesTheDefault) {
    EXPECT_EQ(get("never.set", "fallback").value, "fallback");
    EXPECT_EQ(get("never.set", "fallback").length, 8);
}

TEST(Property, UnsetWithoutADefaultIsEmpty) {
    EXPECT_EQ(get("never.set", nullptr).value, "");
    EXPECT_EQ(get("never.set", nullptr).length, 0);
}

TEST(Property, SetValueComesBack) {
    EXPECT_EQ(property_set("some.key", "some value"), 0);
    EXPECT_EQ(get("some.key", "fallback").value, "some value");
    EXPECT_EQ(get("some.key", "fallback").length, 10);
}

TEST(Property, EmptyOrNullValueUnsets) {
    property_set("gone", "1");
    EXPECT_EQ(property_set("gone", ""), 0);
    EXPECT_EQ(get("gone", "fallback").value, "fallback");
    property_set("gone", "1");
    EXPECT_EQ(property_set("gone", nullptr), 0);
    EXPECT_EQ(get("gone", "fallback").value, "fallback");
}

TEST(Property, ValueOf91BytesFitsAndOf92IsRefused) {
    property_set("long", "old");
    EXPECT_LT(property_set("long", std::string(92, 'a').c_str()), 0);
    EXPECT_EQ(get("long", "").value, "old");
    EXPECT_EQ(property_set("long", std::string(91, 'a').c_str()), 0);
    EXPECT_EQ(get("long", "").length, 91);
}

TEST(Property, LongDefaultIsCutToTheBuffer) {
    EXPECT_EQ(get("never.set", std::string(300, 'd').c_str()).value, std::string(91, 'd'));
}

TEST(Property, EmptyKeyIsRefused) { EXPECT_LT(property_set("", "1"), 0); }

TEST(PropertyFileLines, FillTheTable) {
    EXPECT_EQ(get("from.file", "").value, "42");
    EXPECT_EQ(get("spaced.key", "").value, "spaced value");
    EXPECT_EQ(get("with.equals", "").value, "a=b");
    EXPECT_EQ(get("longest", "").length, 91);
    EXPECT_EQ(get("after.bad", "").value, "still read");
    EXPECT_EQ(get("too.long", "unset").value, "unset");
}

TEST(PropertyFileLines, BadOnesAreReportedWithTheirNumbers) {
    const std::string& path = PropertyFile::s_path;
    EXPECT_EQ(PropertyFile::s_complaints, path + ":6: expected key=value\n" + path +
                                              ":7: expected key=value\n" + path +
                                              ":8: the value of too.long is longer than 91 bytes\n");
}

// Run in a process of its own, by the next one.
TEST(PropertyFileName, DISABLED_IsReadAtTheFirstLookup) {
    char value[PROPERTY_VALUE_MAX];
    property_get("from.file", value, "none");
    std::fprintf(stderr, "%s\n", value);
}

TEST(PropertyFileName, MissingFileIsReportedAndNoneIsNot) {
    const auto said = [](const std::string& name) {
        char self[4096] = {};
        if (readlink("/proc/self/exe", self, sizeof self - 1) <= 0) return std::string("no program");
        const std::string command = std::string(kKeepFile) + "=1 " + name + " '" + self +
                                    "' --gtest_filter=PropertyFileName.DISABLED_* "
                                    "--gtest_also_run_disabled_tests 2>&1 >/dev/null";
        return quorvane::test::outputOf(command);
    };
    const TemporaryFolder folder;
    writeBytes(folder / "good.prop", "from.file=here");
    EXPECT_EQ(said("QUORVANE_PROPERTIES='" + (folder / "good.prop") + "'"), "here\n");
    const std::string missing = folder / "missing.prop";
    EXPECT_EQ(said("QUORVANE_PROPERTIES='" + missing + "'"),
              missing + ": cannot read the property file: No such file or directory\nnone\n");
    EXPECT_EQ(said("QUORVANE_PROPERTIES="), "none\n");
    EXPECT_EQ(said("env -u QUORVANE_PROPERTIES"), "none\n");
}

TEST(Property, ManyThreadsMaySetAndGet) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            const std::string key = "thread." + std::to_string(t);
            for (int i = 0; i < 2000; ++i) {
                property_set(key.c_str(), std::to_string(i).c_str());
                EXPECT_EQ(get(key.c_str(), "").value, std::to_string(i));
                get("from.file", "");
            }
        });
    for (std::thread& thread : threads) thread.join();
}

TEST(Property, ManyThreadsMaySetAndUnset) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 40000; ++i) {
                const std::string key = std::to_string(i % 61) + ".of." + std::to_string(t);
                property_set(key.c_str(), "set");
                if (i % 8 == 0) {
                    EXPECT_EQ(get(key.c_str(), "").value, "set");
                }
                property_set(key.c_str(), nullptr);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(get("0.of.0", "unset").value, "unset");
}

}  // namespace
