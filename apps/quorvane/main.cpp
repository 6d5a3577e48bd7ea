#include <cstdio>
#include <cstring>
#include <new>

#include "apps/quorvane/commands/program.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/decoder/decoder.h"
#include "system/error.h"
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
    try {
        Program().run(argc, argv);
        quorvane::requireStandardOutput();
        return 0;
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
