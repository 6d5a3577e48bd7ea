#include <cstdio>
#include <cstring>
#include <string>

#include "apps/quorvane/batch/batch_worker.h"
#include "apps/quorvane/commands/failure.h"
#include "apps/quorvane/commands/program.h"
#include "apps/quorvane/terminal/text.h"
#include "media/decoder/decoder.h"
#include "system/standard_streams.h"

namespace {

using namespace quorvane::app;

void complain(const std::string& message) {
    std::fprintf(stderr, "quorvane: %s\n", printable(message).c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], quorvane::media::kDecodingWorker) == 0)
        return quorvane::media::serveDecoding();
    quorvane::fillStandardStreams();
    quorvane::media::decodeInWorker("/proc/self/exe");
    if (argc == 3 && std::strcmp(argv[1], kBatchWorker) == 0) return serveBatch(argv[2]);
    std::string help;
    try {
        Program program;
        help = program.helpFor(argc > 1 ? argv[1] : "");
        program.run(argc, argv);
        quorvane::requireStandardOutput();
        return 0;
    } catch (const std::exception&) {
        const Failure failure = failureOf(std::current_exception());
        complain(failure.text + (failure.code == kWrongUsage ? " (see " + help + ")" : ""));
        return wantsSysexits(argc, argv) ? failure.sysexit : failure.code;
    }
}
