#ifndef QUORVANE_MEDIA_EMBEDDED_XMP_H
#define QUORVANE_MEDIA_EMBEDDED_XMP_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/embedded/jpeg.h"

namespace quorvane::media {

/// An element or attribute; in XMP a property may be either.
struct XmpNode {
    std::string ns;  ///< the namespace's URI, never its prefix
    std::string name;
    std::string text;  ///< its own, of an element without that of its children
    size_t end = 0;    ///< the index behind its last descendant
};

/// An XMP packet, or several: its nodes in document order, each before its attributes and children.
class Xmp {
  public:
    /// Adds a packet. Returns why it could not be read, "" where it could; what came before the fault is
    /// kept. Refused: a document type, more than 64 levels, more than 100,000 nodes.
    std::string add(std::string_view packet);

    const std::vector<XmpNode>& nodes() const { return m_nodes; }

    /// The first node of that name among the descendants of `ancestor`, or of all; null where there is none.
    const XmpNode* find(std::string_view ns, std::string_view name, const XmpNode* ancestor = nullptr) const;

    /// The text of the first one without white space around it, "" where there is none.
    std::string_view text(std::string_view ns, std::string_view name,
                          const XmpNode* ancestor = nullptr) const;

  private:
    std::vector<XmpNode> m_nodes;
};

/// The XMP of a JPEG: its packet and, where that asks for one by GUID, the extended packet in pieces.
/// Faults are added to `remarks`.
Xmp xmpOf(const Jpeg& jpeg, std::vector<std::string>* remarks);

constexpr char kRdf[] = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";

}  // namespace quorvane::media

#endif
