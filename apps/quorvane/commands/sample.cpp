#include <unistd.h>

#include "apps/quorvane/commands/commands.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/terminal/arguments.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "system/cancel.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

constexpr Size kDefaultSize = {1600, 1200};
constexpr int kSmallest = 64;
constexpr int kLargest = 8192;

}  // namespace

void sample(const std::string& photo, const std::string& depth, const std::string& size_text) {
    for (const std::string& path : {photo, depth})
        if (parseOutput(path).kind != media::OutputKind::kStill)
            throw UsageError(path + ": the sample's two files are .png");
    refuseSameOutput(photo, depth, "photo and depth map");
    const Size size = size_text.empty() ? kDefaultSize : parseSize(size_text);
    if (size.width < kSmallest || size.height < kSmallest || size.width > kLargest || size.height > kLargest)
        throw UsageError("--size " + size_text + ": the sample's sides are 64 to 8192 pixels");

    // Asked before any work is done.
    for (const std::string& path : {photo, depth}) const PendingOutput place(path);

    const media::SampleScene scene = [size] {
        const EndingAtOnce painting(STDERR_FILENO, "quorvane: interrupted\n");
        return media::makeSampleScene(size.width, size.height);
    }();
    media::writePng(scene.photo, photo);
    throwIfCancelled();
    media::writePng(scene.depth, depth);
}

}  // namespace quorvane::app
