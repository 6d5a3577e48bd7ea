#include "apps/quorvane/commands/program.h"

#include "apps/quorvane/commands/failure.h"
#include "quorvane/version.h"
#include "system/cancel.h"

namespace quorvane::app {
namespace {

constexpr char kNote[] =
    "Depth maps are gray pictures, larger = nearer (--invert-depth for the others). Without one, the depth "
    "inside the photo's file is used, else a file next to it called NAME_depth.*, NAME-depth.* (or depth16) "
    "or depth/NAME.*, else two views inside the photo's file.\n"
    "Exit code: 0 done, 1 failed or interrupted, 2 wrong usage (--exit-codes sysexits tells more).";

}  // namespace

Program::Program()
    : m_commands({renderCommand(), batchCommand(), stagesCommand(), inspectCommand(), extractCommand(),
                  embedCommand(), shapeCommand(), motionsCommand(), infoCommand(), sampleCommand()}),
      m_lines("quorvane", "Turns a photo and its depth map into a picture that swings with the view.",
              "quorvane " QUORVANE_VERSION) {
    m_lines.note(kNote);
    m_lines.table("Environment:",
                  {{"QUORVANE_PROPERTIES", "a file of key=value lines that set the renderer's parameters"},
                   {"QUORVANE_LANES", "the image kernels: reference, plain, sse2, sse4.1, avx2 or neon"},
                   {"QUORVANE_ONNXRUNTIME", "a folder whose node_modules has what runs --depth-model"}});
    for (const Command& command : m_commands) {
        CommandLine* const line = m_lines.add(command.name, command.summary, command.examples);
        m_work.push_back(command.prepare(line));
        addExitCodesOption(line);
    }
}

std::string Program::helpFor(const std::string& word) const {
    for (const Command& command : m_commands)
        if (word == command.name) return "quorvane " + word + " --help";
    return "quorvane --help";
}

void Program::run(int argc, const char* const* argv) {
    size_t chosen = 0;
    if (!parse(argc, argv, &chosen)) return;
    if (m_commands[chosen].tidies_up) catchSignals(wantsSysexits(argc, argv) ? kSysexitTryAgain : kFailed);
    m_lines.lines()[chosen]->run(m_work[chosen]);
}

}  // namespace quorvane::app
