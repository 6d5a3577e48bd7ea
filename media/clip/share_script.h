#ifndef QUORVANE_MEDIA_CLIP_SHARE_SCRIPT_H
#define QUORVANE_MEDIA_CLIP_SHARE_SCRIPT_H

#include <string_view>

namespace quorvane::media {

/// The web element as one script, which the build makes of web/element.
extern const std::string_view kShareScript;

/// web/share/page.html: parts of it are called {{name}}.
extern const std::string_view kShareTemplate;

}  // namespace quorvane::media

#endif
