#ifndef QUORVANE_MEDIA_EMBEDDING_WRITTEN_BYTES_H
#define QUORVANE_MEDIA_EMBEDDING_WRITTEN_BYTES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane::media {

/// `count` bytes of a whole number, the highest first; of a negative one its two's complement.
std::string bigEndianBytes(int64_t value, int count);

/// `count` bytes of a whole number, the lowest first.
std::string littleEndianBytes(uint64_t value, int count);

/// RFC 4648's base 64, with padding.
std::string toBase64(std::string_view bytes);

/// An XMP packet that describes its file: the name spaces' declarations and the properties as attributes,
/// each after a blank, and properties as elements.
std::string xmpPacket(const std::string& attributes, const std::string& elements);

/// A segment of a JPEG: at most 65,533 bytes of `body`.
std::string jpegSegment(uint8_t marker, const std::string& body);

/// A directory of TIFF's form, the lowest byte first. Its fields are added by rising tags.
class TiffFields {
  public:
    void addShort(uint16_t tag, uint16_t value);
    void addLong(uint16_t tag, uint32_t value);
    void addRational(uint16_t tag, double value);           ///< 0 to 2 million, small ones to the millionth
    void addSignedRational(uint16_t tag, double value);     ///< the same
    void addBytes(uint16_t tag, const std::string& bytes);  ///< of no type
    void addText(uint16_t tag, const std::string& text);

    /// How many bytes `written` gives.
    size_t size() const;

    /// The directory as it stands at byte `at` of its block, with `next` as the place of the one that
    /// follows; 0: none.
    std::string written(uint32_t at, uint32_t next) const;

  private:
    struct Field {
        uint16_t tag, type;
        uint32_t count;
        std::string value;
    };
    void add(uint16_t tag, uint16_t type, uint32_t count, std::string value);

    std::vector<Field> m_fields;
};

/// What stands before the first directory, at byte 8.
std::string tiffHeader();

}  // namespace quorvane::media

#endif
