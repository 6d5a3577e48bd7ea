#include <expat.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "media/embedded/xmp.h"

// Xmp::add by expat. A web page has a reader of XML already: there web/portrait/reader.cpp has it.

namespace quorvane::media {
namespace {

constexpr size_t kMostLevels = 64, kMostNodes = 100'000, kMostNamespace = 256;
// No URI holds one.
constexpr char kSeparator[] = "\n";

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

}  // namespace quorvane::media
