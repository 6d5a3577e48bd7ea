#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/decoder/decoder.h"
#include "quorvane/version.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/standard_streams.h"

namespace {

using namespace quorvane::app;

constexpr char kNote[] =
    "Depth maps are gray pictures, larger = nearer (--invert-depth for the others). Without one, the depth "
    "inside the photo's file is used, else a file next to it called NAME_depth.*, NAME-depth.* or "
    "depth/NAME.*, else two views inside the photo's file.\n"
    "Exit code: 0 done, 1 failed or interrupted, 2 wrong usage.";

int run(int argc, char** argv) {
    const std::vector<Command> commands = {renderCommand(),  stagesCommand(), inspectCommand(),
                                           extractCommand(), shapeCommand(),  motionsCommand(),
                                           infoCommand(),    sampleCommand()};
    CommandLines lines("quorvane",
                       "Turns a photo and its depth map into a picture that swings with the view.",
                       "quorvane " QUORVANE_VERSION);
    lines.note(kNote);
    std::vector<std::function<void()>> work;
    work.reserve(commands.size());
    for (const Command& command : commands)
        work.push_back(command.prepare(lines.add(command.name, command.summary, command.examples)));
    size_t chosen = 0;
    if (!lines.parse(argc, argv, &chosen)) return 0;
    if (commands[chosen].tidies_up) quorvane::catchSignals();
    lines.lines()[chosen]->run(work[chosen]);
    return 0;
}

void complain(const std::string& message) {
    std::fprintf(stderr, "quorvane: %s\n", printable(message).c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], quorvane::media::kDecodingWorker) == 0)
        return quorvane::media::serveDecoding();
    quorvane::fillStandardStreams();
    quorvane::media::decodeInWorker("/proc/self/exe");
    try {
        const int code = run(argc, argv);
        quorvane::requireStandardOutput();
        return code;
    } catch (const UsageError& error) {
        complain(std::string(error.what()) + " (quorvane --help shows examples)");
        return 2;
    } catch (const NoDepth& error) {
        complain(error.what());
        for (const std::string& way : error.ways()) std::fprintf(stderr, "  %s\n", way.c_str());
    } catch (const std::bad_alloc&) {
        complain("out of memory");
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return 1;
}
