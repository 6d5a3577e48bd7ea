// XMP packets: whatever the bytes, every node lies within the one around it, no name is empty, what is held
// stays within five times the packet and a little, and what refuses is one line.

#include <cstddef>
#include <cstdint>
#include <string>

#include "media/embedded/xmp.h"
#include "one_line.h"

using quorvane::fuzz::isOneLine;
using quorvane::fuzz::promised;
using quorvane::media::Xmp;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    Xmp xmp;
    const std::string fault = xmp.add(bytes);
    promised(fault.empty() || isOneLine(fault), "a fault is one line");
    promised(!fault.empty() || !xmp.nodes().empty(), "a packet without a fault has an element");
    size_t held = 0;
    for (size_t i = 0; i < xmp.nodes().size(); ++i) {
        const auto& node = xmp.nodes()[i];
        promised(node.end > i && node.end <= xmp.nodes().size(), "a node ends behind itself");
        promised(!node.name.empty(), "a node has a name");
        held += node.ns.size() + node.name.size() + node.text.size();
        for (size_t child = i + 1; child < node.end; ++child) {
            promised(xmp.nodes()[child].end <= node.end, "a node ends within the one around it");
            if (child > i + 100) break;  // quadratic otherwise
        }
    }
    promised(held <= 5 * size + (size_t{1} << 20), "at most five times the packet is kept, and 1 MB");
    return 0;
}
