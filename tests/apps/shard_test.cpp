// A machine's share of a list, as engines name it.

#include "apps/quorvane/batch/shard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

using testing::HasSubstr;

using Variables = std::map<std::string, std::string>;

/// Variables that are set as long as it lives.
class Environment {
  public:
    explicit Environment(Variables variables) : m_variables(std::move(variables)) {
        for (const auto& [name, value] : m_variables) setenv(name.c_str(), value.c_str(), 1);
    }
    ~Environment() {
        for (const auto& variable : m_variables) unsetenv(variable.first.c_str());
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

  private:
    Variables m_variables;
};

void expectShard(const std::string& text, int number, int count) {
    const Shard shard = parseShard(text);
    EXPECT_EQ(shard.number, number) << text;
    EXPECT_EQ(shard.count, count) << text;
}

void expectRefused(const std::string& text, const std::string& said) {
    try {
        parseShard(text);
        ADD_FAILURE() << text;
    } catch (const UsageError& error) {
        EXPECT_THAT(error.what(), HasSubstr(said));
    }
}

TEST(Shard, EveryPhotoIsInExactlyOne) {
    for (const int count : {1, 2, 7}) {
        for (size_t place = 0; place < 20; ++place) {
            int owners = 0;
            for (int number = 1; number <= count; ++number) owners += Shard{number, count}.has(place) ? 1 : 0;
            EXPECT_EQ(owners, 1) << place << " of " << count;
        }
    }
}

TEST(Shard, IsReadFromTheCommandLine) {
    expectShard("1/1", 1, 1);
    expectShard("8/8", 8, 8);
    for (const char* wrong : {"", "3", "0/8", "9/8", "1/0", "1/", "/8", "a/8", "1.5/8", "auto/"}) {
        SCOPED_TRACE(wrong);
        expectRefused(wrong, "--shard");
    }
}

// Kubernetes and AWS count from 0; a Slurm array counts as its --array says.
TEST(Shard, IsReadFromWhatEnginesSet) {
    expectRefused("auto", "none of JOB_COMPLETION_INDEX");
    {
        const Environment kubernetes(Variables{{"JOB_COMPLETION_INDEX", "0"}});
        expectShard("auto/8", 1, 8);
        expectRefused("auto", "does not say how many there are");
    }
    {
        const Environment aws({{"AWS_BATCH_JOB_ARRAY_INDEX", "7"}, {"AWS_BATCH_JOB_ARRAY_SIZE", "8"}});
        expectShard("auto", 8, 8);
        expectRefused("auto/4", "is none of 4 shards");
    }
    {
        // --array=10-22:4
        const Environment slurm({{"SLURM_ARRAY_TASK_ID", "18"},
                                 {"SLURM_ARRAY_TASK_MIN", "10"},
                                 {"SLURM_ARRAY_TASK_STEP", "4"},
                                 {"SLURM_ARRAY_TASK_COUNT", "4"}});
        expectShard("auto", 3, 4);
    }
    const Environment nonsense(Variables{{"JOB_COMPLETION_INDEX", "first"}});
    expectRefused("auto/2", "JOB_COMPLETION_INDEX first");
}

TEST(Shard, NamesItsFiles) {
    EXPECT_EQ(parseShard("1/1").suffix(), "");
    EXPECT_EQ(parseShard("2/8").suffix(), "-2-of-8");
}

}  // namespace
}  // namespace quorvane::app
