#include "media/embedded/png.h"

#include "media/embedded/bytes.h"

namespace quorvane::media {
namespace {

struct Chunk {
    std::string_view type, data;
};

/// A PNG file's chunks, one after the other.
class Chunks {
  public:
    explicit Chunks(std::string_view file) : m_file(file) {
        constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";
        m_end = startsWith(file, kSignature) ? kSignature.size() : file.size();
    }

    /// Nothing where no whole one follows.
    std::optional<Chunk> next() {
        constexpr uint64_t kAround = 12;  // a chunk's length, type and checksum
        const auto length = bigEndian(m_file, m_end, 4);
        const auto chunk = length ? part(m_file, m_end, *length + kAround) : std::nullopt;
        if (!chunk) return std::nullopt;
        m_begin = m_end;
        m_end += chunk->size();
        return Chunk{chunk->substr(4, 4), cut(*chunk, 8, *length)};
    }

    /// Of the chunk that came last.
    uint64_t begin() const { return m_begin; }
    uint64_t end() const { return m_end; }

  private:
    std::string_view m_file;
    uint64_t m_begin = 0, m_end = 0;
};

}  // namespace

std::optional<uint64_t> pngSize(std::string_view bytes) {
    Chunks chunks(bytes);
    while (const auto chunk = chunks.next())
        if (chunk->type == "IEND") return chunks.end();
    return std::nullopt;
}

std::optional<int> pngBits(std::string_view bytes) {
    constexpr size_t kBitDepth = 8;  // behind the width and the height
    const auto header = Chunks(bytes).next();
    if (!header || header->type != "IHDR" || header->data.size() <= kBitDepth) return std::nullopt;
    return static_cast<uint8_t>(header->data[kBitDepth]);
}

std::optional<std::string> withoutPngTexts(std::string_view bytes) {
    std::optional<std::string> lean;
    uint64_t kept = 0;  // what lies before has been copied or left out
    Chunks chunks(bytes);
    while (const auto chunk = chunks.next()) {
        if (chunk->type != "zTXt" && chunk->type != "iTXt") continue;
        if (!lean) lean.emplace();
        lean->append(cut(bytes, kept, chunks.begin() - kept));
        kept = chunks.end();
    }
    if (lean) lean->append(cut(bytes, kept));
    return lean;
}

}  // namespace quorvane::media
