#include "media/depth/stereo_views.h"

#include <cmath>
#include <stdexcept>
#include <utility>

#include "media/embedded/heif_file.h"
#include "media/picture/crop.h"
#include "media/picture/resample.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

std::string sides(const RgbImage& image) {
    return std::to_string(image.width) + " x " + std::to_string(image.height);
}

RgbImage decodeView(std::string_view file, const StereoView& view, const std::string& name,
                    long long most_pixels) {
    const std::string_view bytes = view.bytes.empty() ? file : std::string_view(view.bytes);
    const std::string called = view.bytes.empty() ? name : name + ": " + view.where;
    if (view.heif_item == 0) return decodePhoto(bytes, called, most_pixels, view.orientation);
    int page = 0;
    try {
        page = pageOf(openHeif(bytes).context.get(), view.heif_item);
    } catch (const std::runtime_error& error) {
        throw Error(name + ": " + error.what());
    }
    return decodePhotoPage(bytes, page, name + ": " + view.where, most_pixels);
}

StereoViews parted(const RgbImage& whole, const PairLayout& layout, const std::string& name) {
    const int width = layout.one_above_other ? whole.width : whole.width / 2;
    const int height = layout.one_above_other ? whole.height / 2 : whole.height;
    if (width < 1 || height < 1)
        throw Error(name + ": " + sides(whole) + " pixels cannot be parted into two views");
    const auto stretched = [&](int left, int top) {
        Size size = {width, height};
        const RgbImage half = cut(whole, left, top, size);
        if (layout.squeezed) (layout.one_above_other ? size.height : size.width) *= 2;
        return resample(half, size);
    };
    RgbImage first = stretched(0, 0);
    RgbImage second = stretched(whole.width - width, whole.height - height);
    if (layout.right_first) std::swap(first, second);
    return {std::move(first), std::move(second)};
}

}  // namespace

StereoViews decodeViews(std::string_view file, const StereoPair& pair, const std::string& name,
                        long long most_pixels) {
    if (pair.layout) return parted(decodePhoto(file, name, most_pixels), *pair.layout, name);
    StereoViews views = {decodeView(file, pair.left, name, most_pixels),
                         decodeView(file, pair.right, name, most_pixels)};
    constexpr double kMostStretch = 1.02;
    const double stretch = static_cast<double>(views.left.width) * views.right.height /
                           (static_cast<double>(views.left.height) * views.right.width);
    if (std::abs(std::log(stretch)) > std::log(kMostStretch))
        throw Error(name + ": its views are " + sides(views.left) + " and " + sides(views.right) +
                    " pixels; a stereo pair's are of one shape");
    views.right = resample(views.right, {views.left.width, views.left.height});
    return views;
}

}  // namespace quorvane::media
