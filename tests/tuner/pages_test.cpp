// quorvane-tuner's command line: what it refuses, its manual page, and completion in three shells.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "apps/quorvane/terminal/completion.h"
#include "apps/quorvane/terminal/man_page.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "apps/tuner/core/asked.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::tuner {
namespace {

using testing::HasSubstr;
using testing::IsSupersetOf;

#define NEEDS(program)                                                 \
    if (std::system("command -v " program " > /dev/null 2>&1") != 0) { \
        GTEST_SKIP() << "NO " program " HERE";                         \
    }

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

class TunerPages : public testing::Test {
  protected:
    std::string write(const std::string& name, const std::string& text) const {
        test::writeBytes(folder / name, text);
        return folder / name;
    }

    std::vector<std::string> names() const {
        std::vector<std::string> all = {"-h", "--help", "-V", "--version"};
        for (const app::Option& option : lines->lines().front()->options())
            if (!option.isArgument())
                for (const std::string& name : option.allNames()) all.push_back(name);
        return all;
    }

    Asked asked;
    const std::unique_ptr<app::CommandLines> lines = commandLines(&asked);
    const test::TemporaryFolder folder;
};

TEST_F(TunerPages, WhatIsNotWantedIsNamed) {
    const auto said = [](const std::vector<const char*>& words) {
        Asked unused;
        std::vector<const char*> line = {"quorvane-tuner"};
        line.insert(line.end(), words.begin(), words.end());
        size_t chosen = 0;
        try {
            commandLines(&unused)->parse(static_cast<int>(line.size()), line.data(), &chosen);
        } catch (const app::UsageError& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(said({"photo.jpg", "depth.png", "--window", "640x480", "--scale", "2"}), "");
    for (const char* const size : {"800", "0x600", "photo", "800x", "1.5x600", "99999x600"})
        EXPECT_EQ(said({"--window", size}),
                  std::string("--window ") + size +
                      ": WxH in pixels, each 1 to 16384, is wanted, such as 1280x800");
    EXPECT_EQ(said({"a.jpg", "b.png", "c.png"}), "c.png: one argument too many");
    EXPECT_EQ(said({"--windw", "1x1"}), "--windw: no such option; did you mean --window?");
    EXPECT_EQ(said({"--scale", "9"}), "--scale 9: a number from 0 to 4 is wanted");
}

TEST_F(TunerPages, TheManualHasAllThatItTakes) {
    NEEDS("mandoc");
    const std::string path = write("page.1", app::manPage(*lines, "2026-01-02"));
    EXPECT_EQ(test::printedBy("mandoc -Tlint -W warning " + path), "");
    const std::string text = test::printedBy("mandoc -Tascii -O width=1000 " + path + " | col -b");
    EXPECT_THAT(text, HasSubstr("quorvane-tuner - shows a photo in depth while it is tuned\n"));
    EXPECT_THAT(text, HasSubstr("quorvane-tuner [PHOTO] [DEPTH] [OPTIONS]\n"));
    for (const std::string& name : names()) EXPECT_THAT(text, HasSubstr(name));
    for (const app::Option& option : lines->lines().front()->options())
        EXPECT_THAT(text, HasSubstr(option.help()));
    EXPECT_THAT(text, HasSubstr("Ctrl+Shift+Z")) << "the window's keys";
}

TEST_F(TunerPages, BashCompletesOptionsWordsAndFiles) {
    NEEDS("bash");
    const std::string script = "source " + write("tuner", app::bashCompletion(*lines)) + R"(
        compopt() { echo -n "files "; }
        try() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _quorvane-tuner; echo "${COMPREPLY[*]}"; }
        try quorvane-tuner -
        try quorvane-tuner photo.jpg --holes ''
        try quorvane-tuner photo.jpg --profile ''
        try quorvane-tuner ph
        try quorvane-tuner photo.jpg --scale ''
    )";
    std::istringstream printed(test::printedBy("bash --norc " + write("script", script)));
    std::string line;
    std::getline(printed, line);
    EXPECT_THAT(wordsOf(line), IsSupersetOf(names()));
    for (const char* const wanted : {"auto fill keep", "files ", "files ", ""}) {
        std::getline(printed, line);
        EXPECT_EQ(line, wanted);
    }
}

TEST_F(TunerPages, FishCompletesOptionsWordsAndFiles) {
    NEEDS("fish");
    write("photo of mine.jpg", "");
    const auto completed = [&](const std::string& typed) {
        const std::string script = "cd " + folder.path() + "; source " +
                                   write("tuner.fish", app::fishCompletion(*lines)) + "\ncomplete -C '" +
                                   typed + "'\n";
        return test::printedBy("HOME=" + folder.path() + " XDG_CONFIG_HOME=" + folder.path() +
                               " fish --no-config " + write("script.fish", script));
    };
    const std::string options = completed("quorvane-tuner --");
    for (const std::string& name : names()) {
        if (name[1] == '-') {
            EXPECT_THAT(options, HasSubstr(name));
        }
    }
    EXPECT_THAT(completed("quorvane-tuner photo.jpg --holes "), HasSubstr("keep"));
    EXPECT_THAT(completed("quorvane-tuner ph"), HasSubstr("photo of mine.jpg"));
}

TEST_F(TunerPages, ZshHasEveryOption) {
    NEEDS("zsh");
    const std::string script = app::zshCompletion(*lines);
    EXPECT_EQ(test::printedBy("zsh -n " + write("_quorvane-tuner", script)), "");
    for (const std::string& name : names())
        EXPECT_THAT(script, testing::ContainsRegex("[',{*]" + name + "[]=+[,}]"));
    EXPECT_THAT(script, HasSubstr("'1::PHOTO:_files'"));
}

}  // namespace
}  // namespace quorvane::tuner
