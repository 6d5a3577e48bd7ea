#include "media/embedding/written_bytes.h"

#include <algorithm>
#include <cmath>

namespace quorvane::media {
namespace {

// TIFF's types.
constexpr uint16_t kText = 2, kShort = 3, kLong = 4, kRational = 5, kUndefined = 7, kSignedRational = 10;
constexpr size_t kFieldSize = 12, kInField = 4;

std::string rationalBytes(double value) {
    constexpr double kMostInMillionths = 2000.0;
    const uint32_t parts = value < kMostInMillionths ? 1'000'000 : 1'000;
    return littleEndianBytes(static_cast<uint64_t>(std::llround(value * parts)), 4) +
           littleEndianBytes(parts, 4);
}

}  // namespace

std::string bigEndianBytes(int64_t value, int count) {
    std::string bytes;
    for (int i = count; i-- > 0;)
        bytes.push_back(static_cast<char>(static_cast<uint64_t>(value) >> (8 * i) & 255));
    return bytes;
}

std::string littleEndianBytes(uint64_t value, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 255));
    return bytes;
}

std::string toBase64(std::string_view bytes) {
    constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t three = 0;
        const size_t given = std::min<size_t>(3, bytes.size() - i);
        for (size_t k = 0; k < 3; ++k)
            three = three << 8 | (k < given ? static_cast<uint8_t>(bytes[i + k]) : 0U);
        for (size_t k = 0; k < 4; ++k)
            text.push_back(k <= given ? kLetters[three >> (18 - 6 * k) & 63] : '=');
    }
    return text;
}

std::string xmpPacket(const std::string& attributes, const std::string& elements) {
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description rdf:about=\"\"" +
           attributes + ">" + elements + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

std::string jpegSegment(uint8_t marker, const std::string& body) {
    return std::string("\xff") + static_cast<char>(marker) +
           bigEndianBytes(static_cast<int64_t>(body.size()) + 2, 2) + body;
}

void TiffFields::add(uint16_t tag, uint16_t type, uint32_t count, std::string value) {
    m_fields.push_back({tag, type, count, std::move(value)});
}

void TiffFields::addShort(uint16_t tag, uint16_t value) { add(tag, kShort, 1, littleEndianBytes(value, 2)); }
void TiffFields::addLong(uint16_t tag, uint32_t value) { add(tag, kLong, 1, littleEndianBytes(value, 4)); }

void TiffFields::addRational(uint16_t tag, double value) { add(tag, kRational, 1, rationalBytes(value)); }

void TiffFields::addSignedRational(uint16_t tag, double value) {
    add(tag, kSignedRational, 1, rationalBytes(value));
}

void TiffFields::addBytes(uint16_t tag, const std::string& bytes) {
    add(tag, kUndefined, static_cast<uint32_t>(bytes.size()), bytes);
}

void TiffFields::addText(uint16_t tag, const std::string& text) {
    add(tag, kText, static_cast<uint32_t>(text.size() + 1), text + '\0');
}

size_t TiffFields::size() const {
    size_t bytes = 2 + kFieldSize * m_fields.size() + 4;
    for (const Field& field : m_fields)
        if (field.value.size() > kInField) bytes += (field.value.size() + 1) / 2 * 2;
    return bytes;
}

std::string TiffFields::written(uint32_t at, uint32_t next) const {
    std::string directory = littleEndianBytes(m_fields.size(), 2), behind;
    const size_t behind_at = at + 2 + kFieldSize * m_fields.size() + 4;
    for (const Field& field : m_fields) {
        directory += littleEndianBytes(field.tag, 2) + littleEndianBytes(field.type, 2) +
                     littleEndianBytes(field.count, 4);
        std::string value = field.value;
        if (value.size() > kInField) {
            directory += littleEndianBytes(behind_at + behind.size(), 4);
            value.resize((value.size() + 1) / 2 * 2);
            behind += value;
        } else {
            value.resize(kInField);
            directory += value;
        }
    }
    return directory + littleEndianBytes(next, 4) + behind;
}

std::string tiffHeader() { return std::string("II*\0\x08\0\0\0", 8); }

}  // namespace quorvane::media
