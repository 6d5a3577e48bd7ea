#ifndef QUORVANE_MEDIA_CLIP_SHARE_PAGE_H
#define QUORVANE_MEDIA_CLIP_SHARE_PAGE_H

#include <string>
#include <utility>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

/// How the web element draws a picture.
struct ElementSettings {
    double amount = 1.0;             ///< how far the view may go, 0 to 1
    std::string antialias = "auto";  ///< how outlines are smoothed: a word of the element's attribute
    /// Of the renderer, where they are others than its defaults.
    std::vector<std::pair<std::string, double>> parameters;
};

/// A photo that moves in depth, as one HTML file.
struct SharePage {
    RgbImage photo;           ///< sRGB
    bool keeps_size = false;  ///< else a photo that would make too large a page is scaled down
    GrayImage depth;          ///< shaped as the renderer shapes it, a sample a cell of its grid
    std::string title;
    std::string alt;     ///< what the photo shows, for people who do not see it
    std::string motion;  ///< what moves the view: words of the element's attribute
    ElementSettings settings;
};

/// The attributes of the element that say `settings`, escaped for HTML; empty where all are the defaults.
std::string elementAttributes(const ElementSettings& settings);

/// The page's bytes, UTF-8. Everything is inside: it opens from a disk, and its own policy forbids it every
/// request. Photo and depth are coded anew, so nothing of their files is in it but what is seen. Without
/// JavaScript or WebGL the photo stands still. Texts may hold any characters. Throws Error.
std::string sharePage(const SharePage& page);

}  // namespace quorvane::media

#endif
