#ifndef QUORVANE_MEDIA_CLIP_SHARE_PAGE_H
#define QUORVANE_MEDIA_CLIP_SHARE_PAGE_H

#include <string>
#include <utility>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

/// A photo that moves in depth, as one HTML file.
struct SharePage {
    RgbImage photo;   ///< sRGB
    GrayImage depth;  ///< shaped as the renderer shapes it, a sample a cell of its grid
    std::string title;
    std::string alt;     ///< what the photo shows, for people who do not see it
    std::string motion;  ///< what moves the view: words of the element's attribute
    double amount = 1.0;
    std::vector<std::pair<std::string, double>> parameters;  ///< of the renderer
};

/// The attributes `amount` and `params` of the element, escaped for HTML; empty where both are the defaults.
std::string elementAttributes(double amount, const std::vector<std::pair<std::string, double>>& parameters);

/// The page's bytes, UTF-8. Everything is inside: it opens from a disk, and its own policy forbids it every
/// request. Photo and depth are coded anew, so nothing of their files is in it but what is seen. Without
/// JavaScript or WebGL the photo stands still. Texts may hold any characters. Throws Error.
std::string sharePage(const SharePage& page);

}  // namespace quorvane::media

#endif
