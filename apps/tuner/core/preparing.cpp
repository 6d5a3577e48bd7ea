#include "apps/tuner/core/preparing.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

#include "apps/quorvane/terminal/text.h"
#include "media/decoder/decoder.h"
#include "media/picture/resample.h"

namespace quorvane::tuner {

Size sizeFor(const Tuning& tuning, Size photo, Size room) {
    if (tuning.longest > 0) return scaledPictureSize(photo, tuning.longest, false);
    const Size wide = {std::max(1, room.width), std::max(1, room.height)};
    const double scale = std::min(static_cast<double>(wide.width) / photo.width,
                                  static_cast<double>(wide.height) / photo.height);
    const auto side = [scale](int pixels) { return std::max(1, static_cast<int>(pixels * scale + 0.5)); };
    return {std::min(wide.width, side(photo.width)), std::min(wide.height, side(photo.height))};
}

app::InputOptions withDropped(app::InputOptions input, const std::vector<std::string>& files) {
    std::string photo, depth;
    for (const std::string& file : files) {
        const std::string bytes = media::readPictureFile(file);
        const bool gray = media::decoder::readPictureHeader(bytes, file).bands <= 2;
        const std::string stem = std::filesystem::path(file).stem().string();
        const auto ends = [&stem](std::string_view end) {
            return stem.size() > end.size() && stem.compare(stem.size() - end.size(), end.size(), end) == 0;
        };
        const bool is_depth =
            gray || ends("_depth") || ends("-depth") || (files.size() == 2 && !photo.empty());
        (is_depth && (files.size() > 1 || !input.photo.empty()) ? depth : photo) = file;
    }
    if (!photo.empty()) {
        input.photo = photo;
        input.depth.clear();
    }
    if (!depth.empty()) input.depth = depth;
    return input;
}

const Preparing::Decoded& Preparing::decoded(const PrepareRequest& request, const Step& step) {
    const app::ViewOptions view = viewOptions(request.tuning);
    const double zoom = app::closestZoom(request.path);
    // A larger photo than any picture of this room shows need not be decoded in full.
    const auto enough = [&](Size photo) {
        return app::enoughPhoto(view, sizeFor(request.tuning, photo, request.room), photo, zoom);
    };
    const Size wanted = request.tuning.longest > 0 ? Size{request.tuning.longest, 0} : request.room;
    const auto found = std::find_if(m_decoded.begin(), m_decoded.end(), [&](const Decoded& known) {
        return known.photo == request.input.photo && known.depth == request.input.depth &&
               decodesAlike(known.tuning, request.tuning) && known.wanted == wanted && known.zoom == zoom;
    });
    if (found != m_decoded.end()) {
        m_decoded.splice(m_decoded.begin(), m_decoded, found);
        return m_decoded.front();
    }
    Decoded made;
    made.photo = request.input.photo;
    made.depth = request.input.depth;
    made.tuning = request.tuning;
    made.wanted = wanted;
    made.zoom = zoom;
    made.options = request.input;
    made.options.invert_depth = request.tuning.invert_depth;
    made.options.holes = request.tuning.holes;
    step("reading the photo");
    made.source = app::findDepth(made.options);
    step("decoding photo and depth");
    made.input = app::readInput(made.options, made.source, app::PhotoDetail::kFull, enough);
    if (m_decoded.size() == kMostDecoded) m_decoded.pop_back();
    m_decoded.push_front(std::move(made));
    return m_decoded.front();
}

Prepared Preparing::prepare(const PrepareRequest& asked, const Step& step) {
    PrepareRequest request = asked;
    if (!request.dropped.empty()) {
        step("looking at what was dropped");
        request.input = withDropped(request.input, request.dropped);
    }
    const Decoded& from = decoded(request, step);
    const app::Input& input = from.input;
    step("planning the picture");
    Prepared prepared;
    prepared.tuning = request.tuning;
    prepared.path = request.path;
    prepared.input = request.input;
    prepared.photo_size = input.photo_size;
    prepared.depth_file = from.source.depth;
    prepared.size = sizeFor(request.tuning, input.photo_size, request.room);
    prepared.inverted = input.polarity.inverted;
    const app::ViewOptions view = viewOptions(request.tuning);
    const auto whole = [&from] { return app::readPhoto(from.options, from.source); };
    app::Talk quiet;
    quiet.quiet = true;
    prepared.planned = app::planInput(
        view, quiet, {prepared.size, request.supersample, request.path, request.largest_texture},
        {input.photo, input.photo_size, whole}, input.depth.plane);
    if (request.wants_stretch) {
        step("measuring the stretch");
        prepared.stretch =
            app::stretchOf(view, prepared.planned.target, prepared.planned.fit, prepared.planned.plan);
    }
    step("finishing");
    prepared.given = media::toBytes(input.depth.plane, {input.depth.plane.width, input.depth.plane.height});
    if (from.source.origin == app::DepthOrigin::kNeighbour)
        prepared.notes.push_back("depth: " + app::printable(from.source.depth) + ", found next to the photo");
    for (const std::string& remark : input.remarks) prepared.notes.push_back(app::printable(remark));
    for (const media::Finding& finding : input.findings)
        prepared.notes.push_back("depth: " + app::printable(app::textOf(finding)));
    return prepared;
}

}  // namespace quorvane::tuner
