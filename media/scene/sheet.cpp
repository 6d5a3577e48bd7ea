#include "media/scene/sheet.h"

#include <algorithm>
#include <cmath>

#include "media/picture/resample.h"
#include "media/picture/vips.h"

namespace quorvane::media {
namespace {

constexpr int kMargin = 16;
constexpr int kLabelHeight = 30;
constexpr int kBackground = 24;
constexpr int kInk = 235;

/// The text's coverage, 0..255. A picture of text is cut to its ink; a bar that is as good as transparent,
/// from above all letters to below them, makes all of one height, so that they stand on one line.
GrayImage rendered(const std::string& text) {
    startVips();
    const std::string with_bar = text + "<span alpha=\"1\">|</span>";
    try {
        return fromVips<uint8_t, 1>(vips::VImage::text(
            with_bar.c_str(), vips::VImage::option()->set("font", "DejaVu Sans 13")->set("dpi", 96)));
    } catch (const vips::VError&) {
        throw Error("labels cannot be drawn (" + vipsReason("'" + text + "'") +
                    "); is the package fonts-dejavu-core installed?");
    }
}

Size fitInto(Size image, Size box) {
    const double scale = std::min(static_cast<double>(box.width) / image.width,
                                  static_cast<double>(box.height) / image.height);
    const auto scaled = [scale](int length) {
        return std::max(1, static_cast<int>(std::floor(length * scale + 1e-6)));
    };
    return {scaled(image.width), scaled(image.height)};
}

template <int kChannels>
RgbImage threeChannels(const Image<uint8_t, kChannels>& image) {
    RgbImage rgb(image.width, image.height);
    for (size_t i = 0; i < rgb.samples.size() / 3; ++i)
        for (size_t c = 0; c < 3; ++c)
            rgb.samples[3 * i + c] = image.samples[i * kChannels + std::min<size_t>(c, kChannels - 1)];
    return rgb;
}

}  // namespace

RgbImage contactSheet(const std::vector<Panel>& panels, int columns, int panel_width) {
    const Size first = {panels.front().image.width, panels.front().image.height};
    const Size box = {panel_width, std::max(1, panel_width * first.height / first.width)};
    const int rows = (static_cast<int>(panels.size()) + columns - 1) / columns;
    RgbImage sheet(kMargin + columns * (box.width + kMargin),
                   kMargin + rows * (box.height + kLabelHeight + kMargin));
    std::fill(sheet.samples.begin(), sheet.samples.end(), uint8_t{kBackground});

    for (size_t i = 0; i < panels.size(); ++i) {
        const int column = static_cast<int>(i) % columns;
        const int row = static_cast<int>(i) / columns;
        const int left = kMargin + column * (box.width + kMargin);
        const int top = kMargin + row * (box.height + kLabelHeight + kMargin);
        const Size size = fitInto({panels[i].image.width, panels[i].image.height}, box);

        const RgbImage image = resample(panels[i].image, size);
        const int image_left = left + (box.width - size.width) / 2;
        const int image_top = top + (box.height - size.height) / 2;
        for (int y = 0; y < size.height; ++y)
            std::copy_n(image.row(y), 3 * size.width, &sheet.at(image_left, image_top + y));

        const GrayImage label = rendered(panels[i].label);
        const int label_top = top + box.height + std::max(0, kLabelHeight - label.height) / 2;
        for (int y = 0; y < std::min(label.height, kLabelHeight); ++y)
            for (int x = 0; x < std::min(label.width, box.width); ++x) {
                const int ink = (kInk - kBackground) * label.at(x, y) / 255;
                std::fill_n(&sheet.at(left + x, label_top + y), 3, static_cast<uint8_t>(kBackground + ink));
            }
    }
    return sheet;
}

RgbImage toRgb(const GrayImage& gray) { return threeChannels(gray); }
RgbImage toRgb(const RgbaImage& rgba) { return threeChannels(rgba); }

}  // namespace quorvane::media
