#include "renderer/chosen_path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "../each_path.h"
#include "kernels/paths.h"
#include "quorvane/guided_filter.h"
#include "support/guarded_bytes.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

/// What chosen_path prints with QUORVANE_LANES at `lanes`, or with it unset where that is null.
Lines told(const char* lanes, const std::string& question = "") {
    const std::string variable =
        lanes != nullptr ? "QUORVANE_LANES='" + std::string(lanes) + "' " : "unset QUORVANE_LANES; ";
    // What this program runs in runs that one as well.
    const char* emulator = std::getenv("QUORVANE_EMULATOR");
    const std::string program =
        (emulator != nullptr ? emulator : "") + std::string(" " QUORVANE_CHOSEN_PATH " ");
    FILE* pipe = popen((variable + program + question).c_str(), "r");
    Lines lines;
    char line[256];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        lines.emplace_back(line);
        if (lines.back().back() == '\n') lines.back().pop_back();
    }
    EXPECT_EQ(pclose(pipe), 0);
    return lines;
}

std::string fastest() { return vectorPaths().back().name; }

TEST(Paths, StandInTheOrderOfTheirSpeed) {
    Lines names;
    for (const Path& path : paths()) names.push_back(path.name);
#if defined(__x86_64__)
    EXPECT_THAT(names, ElementsAre("reference", "plain", "sse2", "sse4.1", "avx2"));
#elif defined(__aarch64__)
    EXPECT_THAT(names, ElementsAre("reference", "plain", "neon"));
#else
    EXPECT_THAT(names, ElementsAre("reference", "plain"));
#endif
}

TEST(Paths, EachHasKernelsOfItsOwn) {
    std::set<void*> kernels;
    for (const Path& path : paths())
        kernels.insert({reinterpret_cast<void*>(path.downsize), reinterpret_cast<void*>(path.crossDenoise),
                        reinterpret_cast<void*>(path.lookUp), reinterpret_cast<void*>(path.guidedFilter),
                        reinterpret_cast<void*>(path.createVertices),
                        reinterpret_cast<void*>(path.createIndices)});
    EXPECT_THAT(kernels, SizeIs(6 * paths().size()));
}

TEST(Paths, AllRunOnThisProcessor) {
    EXPECT_TRUE(paths()[0].runsHere());
    EXPECT_TRUE(paths()[1].runsHere());
    std::string missing;
    for (const Path& path : paths())
        if (!path.runsHere()) missing += std::string(" ") + path.name;
    if (!missing.empty()) GTEST_SKIP() << "not tested, for this processor lacks the instructions:" << missing;
}

TEST(ChosenPath, IsTheFastestWhereNoneIsNamed) {
    EXPECT_THAT(told(nullptr), ElementsAre(fastest()));
    EXPECT_THAT(told(""), ElementsAre(fastest()));
}

TEST(ChosenPath, IsTheOneThatIsNamed) {
    for (const Path& path : everyPath()) EXPECT_THAT(told(path.name), ElementsAre(path.name));
}

TEST(ChosenPath, NameOfNoPathIsOneDebugLineAndTheFastest) {
    for (const std::string name : {"avx512", "AVX2", "sse41", "neon2", "0", "sse", "plain "}) {
        const Lines lines = told(name.c_str());
        ASSERT_THAT(lines, SizeIs(2)) << name;
        EXPECT_THAT(lines[0], StartsWith("3 AppQRVN "));
        EXPECT_THAT(lines[0], HasSubstr("QUORVANE_LANES=" + name + ":"));
        EXPECT_THAT(lines[0], HasSubstr(fastest()));
        EXPECT_EQ(lines[1], fastest());
    }
}

TEST(ChosenPath, OneThatDoesNotRunHereIsOneDebugLineAndTheFastest) {
    // On a processor of today all do; the emulated older ones lack some.
    for (const Path& path : paths()) {
        if (path.runsHere()) continue;
        const Lines lines = told(path.name);
        ASSERT_THAT(lines, SizeIs(2)) << path.name;
        EXPECT_THAT(lines[0], StartsWith("3 AppQRVN QUORVANE_LANES=" + std::string(path.name) + ":"));
        EXPECT_EQ(lines[1], fastest());
    }
}

TEST(ChosenPath, StaysForTheWholeProcess) {
    EXPECT_THAT(told("plain", "twice reference"), ElementsAre("plain", "plain"));
    EXPECT_THAT(told(nullptr, "twice plain"), ElementsAre(fastest(), fastest()));
    EXPECT_THAT(told("nonsense", "twice plain"), SizeIs(3)) << "one log line, not two";
}

// The test programs run once a path; this is how such a run knows that its path is in use.
TEST(ChosenPath, OfThisProcessIsTheOneInItsEnvironment) {
    const char* lanes = std::getenv("QUORVANE_LANES");
    const std::string chosen = chosenPath().name;
    EXPECT_EQ(chosen, lanes != nullptr && *lanes != '\0' ? lanes : fastest());
}

// Windows of a flat guide with noise of one level have the widest range of slopes; there the reference, which
// adds in another order, differs from the paths in a byte here and there.
TEST(ChosenPath, IsTheOneThatTheRendererUses) {
    const int w = 200, h = 160;
    std::vector<uint8_t> guide = noise(w * h, 1), input = noise(w * h, 2);
    for (uint8_t& level : guide) level = static_cast<uint8_t>(127 + level % 3);
    std::vector<uint8_t> working(20 * w * h + 8 * (w + 1) * (h + 1)), wanted(w * h), actual(w * h);
    chosenPath().guidedFilter({guide.data(), input.data(), wanted.data(), w, h, 3, 2, 0.0f, working.data()});
    guided_filter_qrv filter;
    filter.assignBuffer(w, h, working.data());
    filter(guide.data(), input.data(), actual.data(), w, h, 3, 2, 0.0f);
    EXPECT_EQ(actual, wanted);
}

}  // namespace
}  // namespace quorvane::test
