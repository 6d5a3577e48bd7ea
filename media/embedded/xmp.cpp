#include "media/embedded/xmp.h"

#include <expat.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "media/embedded/bytes.h"

namespace quorvane::media {
namespace {

using namespace std::string_view_literals;

constexpr size_t kMostLevels = 64, kMostNodes = 100'000, kMostNamespace = 256;
// No URI holds one.
constexpr char kSeparator[] = "\n";

std::string_view trimmed(std::string_view text) {
    constexpr auto kSpace = " \t\r\n"sv;
    const size_t first = text.find_first_not_of(kSpace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

// expat's memory. In one start tag a long namespace is written out for each attribute before anybody is
// asked, so a packet could take any multiple of its size; expat's allocators get no user data, hence the
// thread's variable.
thread_local size_t expat_may_take = 0;

struct alignas(std::max_align_t) Block {
    size_t size;
};

void* takeBlock(Block* old, size_t size) {
    const size_t held = old == nullptr ? 0 : old->size;
    if (size > expat_may_take + held) return nullptr;
    Block* block = static_cast<Block*>(std::realloc(old, sizeof(Block) + size));
    if (block == nullptr) return nullptr;
    block->size = size;
    expat_may_take = expat_may_take + held - size;
    return block + 1;
}

Block* blockOf(void* memory) { return memory == nullptr ? nullptr : static_cast<Block*>(memory) - 1; }

void releaseBlock(void* memory) {
    if (memory == nullptr) return;
    expat_may_take += blockOf(memory)->size;
    std::free(blockOf(memory));
}

constexpr XML_Memory_Handling_Suite kExpatMemory = {
    [](size_t size) { return takeBlock(nullptr, size); },
    [](void* memory, size_t size) { return takeBlock(blockOf(memory), size); },
    releaseBlock,
};

struct Reading {
    XML_Parser parser;
    std::vector<XmpNode>* nodes;
    std::vector<size_t> open;  ///< indices of the elements around
    const char* fault = "";
    bool stopped = false;
    bool out_of_memory = false;

    void stop(const char* why) {
        fault = why;
        stopped = true;
        XML_StopParser(parser, XML_FALSE);
    }
};

/// Runs `work`, unless reading has stopped: expat still ends the element that it is in. Its frames above are
/// C and take no exception.
template <typename Work>
void guarded(void* user, Work work) {
    Reading& reading = *static_cast<Reading*>(user);
    if (reading.stopped) return;
    try {
        work(reading);
    } catch (const std::bad_alloc&) {
        reading.out_of_memory = true;
        reading.stop("out of memory");
    }
}

XmpNode named(std::string_view name) {
    XmpNode node;
    const size_t separator = name.find(kSeparator[0]);
    if (separator == std::string_view::npos) {
        node.name = name;
    } else {
        node.ns = name.substr(0, separator);
        node.name = name.substr(separator + 1);
    }
    return node;
}

void XMLCALL onStart(void* user, const char* name, const char** attributes) {
    guarded(user, [&](Reading& reading) {
        if (reading.open.size() >= kMostLevels) return reading.stop("more than 64 levels");
        std::vector<XmpNode>& nodes = *reading.nodes;
        reading.open.push_back(nodes.size());
        nodes.push_back(named(name));
        for (; attributes[0] != nullptr && nodes.size() <= kMostNodes; attributes += 2) {
            nodes.push_back(named(attributes[0]));
            nodes.back().text = attributes[1];
            nodes.back().end = nodes.size();
        }
        if (nodes.size() > kMostNodes) reading.stop("more than 100,000 properties");
    });
}

void XMLCALL onEnd(void* user, const char*) {
    guarded(user, [](Reading& reading) {
        (*reading.nodes)[reading.open.back()].end = reading.nodes->size();
        reading.open.pop_back();
    });
}

void XMLCALL onText(void* user, const char* text, int length) {
    guarded(user, [&](Reading& reading) {
        if (!reading.open.empty())
            (*reading.nodes)[reading.open.back()].text.append(text, static_cast<size_t>(length));
    });
}

void XMLCALL onNamespace(void* user, const char*, const char* uri) {
    // Each node below holds a copy.
    if (uri != nullptr && std::strlen(uri) > kMostNamespace)
        static_cast<Reading*>(user)->stop("a namespace of more than 256 letters");
}

void XMLCALL onDocumentType(void* user, const char*, const char*, const char*, int) {
    static_cast<Reading*>(user)->stop("a document type, which XMP has not");
}

/// Puts the pieces of the extended packet `guid` together, in whatever order they come; a piece may come
/// twice. "" with a remark where they do not cover it.
std::string extendedPacket(const Jpeg& jpeg, std::string_view guid, std::vector<std::string>* remarks) {
    constexpr auto kSignature = "http://ns.adobe.com/xmp/extension/\0"sv;
    constexpr uint64_t kGuidSize = 32;
    using Piece = std::pair<uint64_t, std::string_view>;  // offset and bytes
    std::vector<Piece> pieces;
    std::optional<uint64_t> full;
    size_t held = 0;
    const auto refuse = [&](const char* why) {
        remarks->push_back(std::string("extended XMP: ") + why);
        return std::string();
    };
    for (const JpegSegment& segment : jpeg.segments) {
        if (segment.marker != 0xe1 || !startsWith(segment.body, kSignature)) continue;
        const std::string_view body = segment.body.substr(kSignature.size());
        if (body.substr(0, kGuidSize) != guid) continue;
        const auto length = bigEndian(body, kGuidSize, 4), offset = bigEndian(body, kGuidSize + 4, 4);
        if (!length || !offset) return refuse("a piece without its place");
        if (full && *full != *length) return refuse("its pieces disagree on its length");
        full = length;
        pieces.emplace_back(*offset, body.substr(kGuidSize + 8));
        held += pieces.back().second.size();
    }
    if (!full) return refuse("named, but no piece of that GUID is there");
    std::sort(pieces.begin(), pieces.end());
    pieces.erase(std::unique(pieces.begin(), pieces.end()), pieces.end());
    std::string packet;
    packet.reserve(held);
    for (const auto& [offset, bytes] : pieces) {
        if (offset != packet.size())
            return refuse(offset > packet.size() ? "pieces are missing" : "pieces overlap");
        packet += bytes;
    }
    if (packet.size() < *full) return refuse("pieces are missing");
    if (packet.size() > *full) return refuse("its pieces are longer than it");
    return packet;
}

}  // namespace

std::string Xmp::add(std::string_view packet) {
    // Its copy of the packet and the value of an attribute both grow by doubling.
    expat_may_take = 5 * packet.size() + (size_t{1} << 20);
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(
        XML_ParserCreate_MM(nullptr, &kExpatMemory, kSeparator), XML_ParserFree);
    if (parser == nullptr) throw std::bad_alloc();
    Reading reading = {parser.get(), &m_nodes, {}};
    XML_SetUserData(parser.get(), &reading);
    XML_SetElementHandler(parser.get(), onStart, onEnd);
    XML_SetCharacterDataHandler(parser.get(), onText);
    XML_SetStartNamespaceDeclHandler(parser.get(), onNamespace);
    XML_SetStartDoctypeDeclHandler(parser.get(), onDocumentType);

    // Writers pad packets with zeroes, and expat counts in int.
    while (!packet.empty() && packet.back() == '\0') packet.remove_suffix(1);
    constexpr size_t kMostAtOnce = size_t{1} << 30;
    XML_Status status = XML_STATUS_OK;
    do {
        const std::string_view piece = packet.substr(0, kMostAtOnce);
        packet.remove_prefix(piece.size());
        status = XML_Parse(parser.get(), piece.data(), static_cast<int>(piece.size()), packet.empty());
    } while (status == XML_STATUS_OK && !packet.empty());
    if (reading.out_of_memory) throw std::bad_alloc();
    for (const size_t index : reading.open) m_nodes[index].end = m_nodes.size();
    if (status == XML_STATUS_OK) return "";
    if (reading.stopped) return reading.fault;
    const XML_Error error = XML_GetErrorCode(parser.get());
    return error == XML_ERROR_NO_MEMORY ? "it takes too much memory" : XML_ErrorString(error);
}

const XmpNode* Xmp::find(std::string_view ns, std::string_view name, const XmpNode* ancestor) const {
    const size_t first = ancestor == nullptr ? 0 : static_cast<size_t>(ancestor - m_nodes.data()) + 1;
    const size_t last = ancestor == nullptr ? m_nodes.size() : ancestor->end;
    for (size_t i = first; i < last; ++i)
        if (m_nodes[i].name == name && m_nodes[i].ns == ns) return &m_nodes[i];
    return nullptr;
}

std::string_view Xmp::text(std::string_view ns, std::string_view name, const XmpNode* ancestor) const {
    const XmpNode* node = find(ns, name, ancestor);
    return node == nullptr ? std::string_view() : trimmed(node->text);
}

Xmp xmpOf(const Jpeg& jpeg, std::vector<std::string>* remarks) {
    // One is usual, and some editors leave another.
    constexpr int kMostPackets = 16;
    Xmp xmp;
    int packets = 0;
    for (const JpegSegment& segment : jpeg.segments) {
        constexpr auto kSignature = "http://ns.adobe.com/xap/1.0/\0"sv;
        if (segment.marker != 0xe1 || !startsWith(segment.body, kSignature)) continue;
        if (++packets > kMostPackets) break;
        const std::string fault = xmp.add(segment.body.substr(kSignature.size()));
        if (!fault.empty()) remarks->push_back("XMP: " + fault);
    }
    const std::string guid(xmp.text("http://ns.adobe.com/xmp/note/", "HasExtendedXMP"));
    if (guid.empty()) return xmp;
    const std::string packet = extendedPacket(jpeg, guid, remarks);
    if (packet.empty()) return xmp;
    const std::string fault = xmp.add(packet);
    if (!fault.empty()) remarks->push_back("extended XMP: " + fault);
    return xmp;
}

}  // namespace quorvane::media
