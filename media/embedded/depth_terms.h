#ifndef QUORVANE_MEDIA_EMBEDDED_DEPTH_TERMS_H
#define QUORVANE_MEDIA_EMBEDDED_DEPTH_TERMS_H

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/embedded/embedded.h"
#include "media/embedded/xmp.h"

namespace quorvane::media {

// What GDepth, XDM, Dynamic Depth and GContainer share: the words for what a plane's samples mean.

/// Namespaces by how they start: writers differ in what stands behind.
using Namespaces = std::array<std::string_view, 2>;

constexpr Namespaces kGDepth = {"http://ns.google.com/photos/1.0/depthmap",
                                "http://ns.google.com/photos/1.0/depthmap"};
constexpr Namespaces kGImage = {"http://ns.google.com/photos/1.0/image",
                                "http://ns.google.com/photos/1.0/image"};
constexpr Namespaces kXdm = {"http://ns.xdm.org/photos/1.0/", "http://ns.xdm.org/photos/1.0/"};
constexpr Namespaces kDynamicDepth = {"http://ns.google.com/photos/dd/1.0/",
                                      "http://ns.google.com/photos/dd/1.0/"};
constexpr Namespaces kGContainer = {"http://ns.google.com/photos/1.0/container",
                                    "http://ns.google.com/photos/1.0/item"};

/// The nodes of that name among the descendants of `ancestor`, or of all; at most `most`, the first.
std::vector<const XmpNode*> nodesOf(const Xmp& xmp, const Namespaces& namespaces, std::string_view name,
                                    const XmpNode* ancestor = nullptr, size_t most = 32);

/// The text of the first of them without white space around it, "" where there is none.
std::string_view textOf(const Xmp& xmp, const Namespaces& namespaces, std::string_view name,
                        const XmpNode* ancestor = nullptr);

/// A depth as Format, Near, Far and Units among the descendants of `ancestor` say, or of all; without its
/// bytes. By the definition of both formats 0 is near.
/// https://developers.google.com/depthmap-metadata/encoding
EmbeddedDepth depthInTerms(const Xmp& xmp, const Namespaces& namespaces, const XmpNode* ancestor,
                           const char* container, Contents* contents);

/// A picture that a property holds in base 64, or nothing with a remark about `what`, such as "its depth".
std::optional<std::string> pictureFromBase64(std::string_view text, const std::string& what,
                                             Contents* contents);

}  // namespace quorvane::media

#endif
