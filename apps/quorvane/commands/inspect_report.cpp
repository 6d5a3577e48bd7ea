#include "apps/quorvane/commands/inspect_report.h"

#include <cstdint>
#include <nlohmann/json.hpp>

#include "apps/quorvane/terminal/text.h"

namespace quorvane::app {
namespace {

using Json = nlohmann::ordered_json;

}  // namespace

const char* wordFor(DepthOrigin origin) {
    switch (origin) {
        case DepthOrigin::kInside: return "inside";
        case DepthOrigin::kGiven: return "given";
        case DepthOrigin::kNeighbour: return "neighbour";
        case DepthOrigin::kCommand: return "command";
        case DepthOrigin::kModel: return "model";
        case DepthOrigin::kSideBySide: return "side by side";
        case DepthOrigin::kPair: return "pair";
        case DepthOrigin::kNone: break;
    }
    return "none";
}

namespace {

const char* wordFor(media::ImageRole role) {
    switch (role) {
        case media::ImageRole::kPhoto: return "photo";
        case media::ImageRole::kView: return "view";
        case media::ImageRole::kOriginal: return "original";
        case media::ImageRole::kDepth: return "depth";
        case media::ImageRole::kConfidence: return "confidence";
        case media::ImageRole::kGainMap: return "gain map";
        case media::ImageRole::kMatte: return "matte";
        case media::ImageRole::kVideo: return "video";
        case media::ImageRole::kOther: break;
    }
    return "other";
}

const char* wordFor(media::DepthKind kind) {
    switch (kind) {
        case media::DepthKind::kDisparity: return "disparity";
        case media::DepthKind::kInverseRange: return "inverse range";
        case media::DepthKind::kLinearRange: return "linear range";
        case media::DepthKind::kUnknown: break;
    }
    return "unknown";
}

const char* codingOf(const media::EmbeddedDepth& depth) {
    if (std::holds_alternative<media::DepthPicture>(depth.plane)) return "picture";
    if (const auto* samples = std::get_if<media::DepthSamples>(&depth.plane))
        return samples->bits == 8 ? "8-bit samples" : "16-bit samples";
    return "HEIF item";
}

const char* wordFor(media::FindingKind kind) {
    switch (kind) {
        case media::FindingKind::kTurned: return "turned";
        case media::FindingKind::kOtherAspect: return "other aspect";
        case media::FindingKind::kPolarity: return "polarity";
        case media::FindingKind::kColourMapped: return "colour-mapped";
        case media::FindingKind::kAlpha: return "alpha";
        case media::FindingKind::kHoles: return "holes";
        case media::FindingKind::kLittleRange: break;
    }
    return "little range";
}

/// What brings a picture with one of Exif's codes upright.
const char* turnFor(int orientation) {
    constexpr const char* kTurns[] = {"as it is",
                                      "mirrored",
                                      "turned by 180 degrees",
                                      "flipped top to bottom",
                                      "transposed",
                                      "turned clockwise by 90 degrees",
                                      "transposed across the other diagonal",
                                      "turned clockwise by 270 degrees"};
    return orientation >= 1 && orientation <= 8 ? kTurns[orientation - 1] : kTurns[0];
}

/// A line that does nothing to a terminal.
void add(std::string* text, const std::string& line) { *text += printable(line) + '\n'; }

std::string number(double value) { return formatted("%.6g", value); }

void addDepth(const Report& report, std::string* text) {
    const DepthReport& depth = *report.depth;
    if (report.origin == DepthOrigin::kInside) {
        const media::EmbeddedDepth& inside = *report.contents.depth;
        add(text, formatted("depth    %s, %s: %d x %d, %d bit", inside.container.c_str(),
                            inside.where.c_str(), depth.size.width, depth.size.height, depth.bits));
        std::string kind = wordFor(inside.kind);
        if (inside.near) kind += ", near " + number(*inside.near);
        if (inside.far) kind += ", far " + number(*inside.far);
        if (inside.near || inside.far)
            kind += inside.units.empty() ? ", unit unknown" : " (" + inside.units + ")";
        add(text, "         kind " + kind);
        add(text, formatted("         stored with larger = %s: %s",
                            inside.larger_is_nearer ? "nearer" : "farther", inside.polarity_reason.c_str()));
        if (inside.orientation != 1)
            add(text, formatted("         stored in orientation %d, shown %s", inside.orientation,
                                turnFor(inside.orientation)));
    } else {
        add(text, formatted("depth    %s%s%s: %d x %d, %d bit", wordFor(report.origin),
                            report.depth_file.empty() ? "" : ", ", report.depth_file.c_str(),
                            depth.size.width, depth.size.height, depth.bits));
        if (!report.belief.empty()) add(text, "         " + report.belief);
    }
    for (const media::Finding& finding : depth.findings)
        add(text, formatted("doctor   %s%s (confidence %.2f)", finding.doubtful() ? "doubtful: " : "",
                            textOf(finding).c_str(), finding.confidence));
    const Fit& fit = depth.plan.fit;
    add(text,
        formatted("fitted   photo %d x %d -> %d x %d%s", depth.plan.photo.width, depth.plan.photo.height,
                  fit.photo.width, fit.photo.height, fit.photo == depth.plan.photo ? "" : ", resampled"));
    add(text,
        formatted("         depth %d x %d -> %d x %d%s", depth.plan.depth.width, depth.plan.depth.height,
                  fit.depth.width, fit.depth.height, fit.depth == depth.plan.depth ? "" : ", scaled"));
    add(text,
        formatted(
            "grid     %d x %d cells, %d photo pixels a cell, %.1f MB of working memory (for textures of "
            "up to %d)",
            fit.grid.width, fit.grid.height, fit.ratio, depth.block_bytes / 1e6, kReportedTexture));
    const PicturePlan& picture = depth.picture;
    std::string seen = formatted("%.3f of each side is seen", picture.fov_scale);
    if (picture.swing < 1.0) seen += formatted(", at %.2f of the swing", picture.swing);
    add(text, formatted("picture  %s edges; %s; distance %.2f stays in place",
                        depth.clean_edges ? "clean" : "soft", seen.c_str(), picture.rotate_z_trans));
    const PictureStretch& stretch = depth.stretch;
    add(text,
        formatted("stretch  %.1f %% of the picture is drawn over twice as large as at rest, most %.1f "
                  "times at %.3f, %.3f",
                  100.0 * stretch.streaked_part, stretch.worst_times, stretch.worst_x, stretch.worst_y));
}

Json sides(Size size) { return {{"width", size.width}, {"height", size.height}}; }

Json orNull(const std::optional<double>& value) { return value ? Json(*value) : Json(nullptr); }

Json depthJson(const Report& report) {
    const DepthReport& depth = *report.depth;
    Json json = {{"source", wordFor(report.origin)}};
    if (!report.depth_file.empty()) json["file"] = report.depth_file;
    if (!report.belief.empty()) json["belief"] = report.belief;
    if (report.origin == DepthOrigin::kInside) {
        const media::EmbeddedDepth& inside = *report.contents.depth;
        json["container"] = inside.container;
        json["where"] = inside.where;
        json["coding"] = codingOf(inside);
        json["kind"] = wordFor(inside.kind);
        json["near"] = orNull(inside.near);
        json["far"] = orNull(inside.far);
        json["units"] = inside.units;
        json["larger_is_nearer"] = inside.larger_is_nearer;
        json["polarity_reason"] = inside.polarity_reason;
        json["orientation"] = inside.orientation;
    }
    json["width"] = depth.size.width;
    json["height"] = depth.size.height;
    json["bits"] = depth.bits;
    json["polarity"] = {{"larger", depth.polarity.larger_is_nearer ? "near" : "far"},
                        {"confidence", depth.polarity.confidence},
                        {"inverted", depth.polarity.inverted},
                        {"doubtful", depth.polarity.doubtful}};
    json["findings"] = findingsJson(depth.findings);
    return json;
}

Json planJson(const DepthReport& depth) {
    const Fit& fit = depth.plan.fit;
    return {
        {"largest_texture", kReportedTexture},
        {"grid", sides(fit.grid)},
        {"photo_pixels_a_cell", fit.ratio},
        {"edges", depth.clean_edges ? "clean" : "soft"},
        {"frame", depth.picture.fov_scale},
        {"swing", depth.picture.swing},
        {"pivot", depth.picture.rotate_z_trans},
        {"stretch", depth.stretch.streaked_part},
        {"stretch_worst",
         {{"times", depth.stretch.worst_times}, {"x", depth.stretch.worst_x}, {"y", depth.stretch.worst_y}}},
        {"working_memory_bytes", static_cast<int64_t>(depth.block_bytes)},
        {"photo", {{"from", sides(depth.plan.photo)}, {"to", sides(fit.photo)}}},
        {"depth", {{"from", sides(depth.plan.depth)}, {"to", sides(fit.depth)}}}};
}

}  // namespace

Json findingsJson(const std::vector<media::Finding>& findings) {
    Json list = Json::array();
    for (const media::Finding& finding : findings)
        list.push_back({{"ailment", wordFor(finding.kind)},
                        {"confidence", finding.confidence},
                        {"corrected", finding.corrected},
                        {"text", textOf(finding)}});
    return list;
}

std::string reportText(const Report& report) {
    const media::Contents& contents = report.contents;
    std::string text;
    add(&text,
        formatted("photo    %s: %s, %llu bytes, %d x %d", report.name.c_str(), contents.file_kind.c_str(),
                  static_cast<unsigned long long>(report.bytes), report.photo.width, report.photo.height));
    if (contents.orientation != 1)
        add(&text, formatted("         stored in orientation %d, shown %s", contents.orientation,
                             turnFor(contents.orientation)));
    if (report.origin == DepthOrigin::kInside && contents.original)
        add(&text, formatted("         the unblurred one, %s", contents.original->where.c_str()));
    for (const media::InnerImage& image : contents.images)
        add(&text, formatted("inside   %-10s  %s, %s, %llu bytes", wordFor(image.role), image.where.c_str(),
                             image.mime.empty() ? "bare samples" : image.mime.c_str(),
                             static_cast<unsigned long long>(image.bytes)));
    if (report.pair) {
        const media::StereoPair& pair = *report.pair;
        add(&text,
            formatted("views    left: %s, right: %s%s", pair.left.where.c_str(), pair.right.where.c_str(),
                      pair.container.empty() ? "" : (" (" + pair.container + ")").c_str()));
        for (const std::string& remark : report.pair_remarks) add(&text, "         " + remark);
    }
    for (const std::string& remark : contents.remarks) add(&text, "damaged  " + remark);
    if (report.depth)
        addDepth(report, &text);
    else
        add(&text, "depth    none: " + report.no_depth);
    return text;
}

std::string reportJson(const Report& report) {
    const media::Contents& contents = report.contents;
    const bool unblurred = report.origin == DepthOrigin::kInside && contents.original;
    Json json = {
        {"file", report.name},
        {"kind", contents.file_kind},
        {"bytes", report.bytes},
        {"orientation", contents.orientation},
        {"photo", sides(report.photo)},
        {"unblurred_photo", unblurred ? Json(contents.original->where) : Json(nullptr)},
        {"images", Json::array()},
        {"pair", nullptr},
        {"remarks", contents.remarks},
        {"depth", nullptr},
        {"plan", nullptr},
    };
    for (const media::InnerImage& image : contents.images)
        json["images"].push_back({{"role", wordFor(image.role)},
                                  {"where", image.where},
                                  {"mime", image.mime},
                                  {"bytes", image.bytes}});
    if (report.pair)
        json["pair"] = {{"container", report.pair->container},
                        {"left", report.pair->left.where},
                        {"right", report.pair->right.where},
                        {"remarks", report.pair_remarks}};
    if (report.depth) {
        json["depth"] = depthJson(report);
        json["plan"] = planJson(*report.depth);
    } else {
        json["no_depth"] = report.no_depth;
    }
    // In ASCII: names and a file's own words need not be UTF-8, and may hold what a terminal obeys.
    return json.dump(2, ' ', true, Json::error_handler_t::replace) + '\n';
}

}  // namespace quorvane::app
