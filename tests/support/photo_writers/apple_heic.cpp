#include "apple_heic.h"

#include <libheif/heif.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <vector>

#include "pictures.h"

namespace quorvane::test {
namespace {

using namespace std::string_literals;
using Fault = AppleHeicOptions::Fault;

void require(const heif_error& error) {
    if (error.code != heif_error_Ok) throw std::runtime_error(error.message);
}

struct Deleter {
    void operator()(heif_context* context) const { heif_context_free(context); }
    void operator()(heif_encoder* encoder) const { heif_encoder_release(encoder); }
    void operator()(heif_image* image) const { heif_image_release(image); }
    void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
};
using Picture = std::unique_ptr<heif_image, Deleter>;

Picture emptyPicture(int width, int height, heif_colorspace space, heif_chroma chroma) {
    heif_image* image = nullptr;
    require(heif_image_create(width, height, space, chroma, &image));
    return Picture(image);
}

Picture pictureOf(const media::RgbImage& photo) {
    Picture picture =
        emptyPicture(photo.width, photo.height, heif_colorspace_RGB, heif_chroma_interleaved_RGB);
    require(heif_image_add_plane(picture.get(), heif_channel_interleaved, photo.width, photo.height, 8));
    int stride = 0;
    uint8_t* rows = heif_image_get_plane(picture.get(), heif_channel_interleaved, &stride);
    const size_t row = static_cast<size_t>(photo.width) * 3;
    for (int y = 0; y < photo.height; ++y)
        std::copy_n(photo.samples.data() + static_cast<size_t>(y) * row, row, rows + y * stride);
    return picture;
}

Picture pictureOf(const media::Image<uint16_t, 1>& plane, int bits) {
    Picture picture =
        emptyPicture(plane.width, plane.height, heif_colorspace_monochrome, heif_chroma_monochrome);
    require(heif_image_add_plane(picture.get(), heif_channel_Y, plane.width, plane.height, bits));
    int stride = 0;
    uint8_t* rows = heif_image_get_plane(picture.get(), heif_channel_Y, &stride);
    const uint16_t* from = plane.samples.data();
    for (int y = 0; y < plane.height; ++y, from += plane.width) {
        uint8_t* row = rows + y * stride;
        for (int x = 0; x < plane.width; ++x)
            if (bits == 8)
                row[x] = static_cast<uint8_t>(from[x]);
            else
                reinterpret_cast<uint16_t*>(row)[x] = from[x];
    }
    return picture;
}

/// The boxes that follow one another in `bytes`, each with its header.
std::vector<std::string> boxesIn(const std::string& bytes) {
    std::vector<std::string> boxes;
    for (size_t at = 0; at + 8 <= bytes.size();) {
        size_t size = 0;
        for (size_t i = 0; i < 4; ++i) size = size << 8 | static_cast<uint8_t>(bytes[at + i]);
        boxes.push_back(bytes.substr(at, size));
        at += size;
    }
    return boxes;
}

std::string find(const std::string& type, const std::vector<std::string>& boxes) {
    for (const std::string& box : boxes)
        if (box.compare(4, 4, type) == 0) return box;
    throw std::runtime_error("libheif wrote no " + type);
}

struct Coded {
    std::vector<std::string> properties;  ///< boxes
    std::string bytes;
};

/// Codes one picture and takes libheif's file apart.
Coded coded(const Picture& picture, bool lossless, bool avif) {
    const std::unique_ptr<heif_context, Deleter> context(heif_context_alloc());
    heif_encoder* made = nullptr;
    require(heif_context_get_encoder_for_format(context.get(),
                                                avif ? heif_compression_AV1 : heif_compression_HEVC, &made));
    const std::unique_ptr<heif_encoder, Deleter> encoder(made);
    if (lossless) require(heif_encoder_set_lossless(made, 1));
    heif_image_handle* handle = nullptr;
    require(heif_context_encode_image(context.get(), picture.get(), made, nullptr, &handle));
    heif_image_handle_release(handle);
    std::string file;
    heif_writer writer = {};
    writer.writer_api_version = 1;
    writer.write = [](heif_context*, const void* data, size_t size, void* user) {
        static_cast<std::string*>(user)->assign(static_cast<const char*>(data), size);
        return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
    };
    require(heif_context_write(context.get(), &writer, &file));

    const std::vector<std::string> boxes = boxesIn(file);
    const std::string iprp = find("iprp", boxesIn(find("meta", boxes).substr(12)));
    return {boxesIn(find("ipco", boxesIn(iprp.substr(8))).substr(8)), find("mdat", boxes).substr(8)};
}

std::string box(const std::string& type, const std::string& body) {
    return big(body.size() + 8, 4) + type + body;
}

std::string fullBox(const std::string& type, const std::string& body, int version = 0) {
    return box(type, big(static_cast<uint64_t>(version), 1) + "\0\0\0"s + body);
}

struct Bits {
    std::string bytes;
    int used = 8;  ///< bits of the last byte

    void put(uint64_t value, int count) {
        for (int i = count; i-- > 0;) {
            if (used == 8) bytes.push_back('\0'), used = 0;
            const int bit = static_cast<int>(value >> i & 1);
            bytes.back() = static_cast<char>(bytes.back() | bit << (7 - used++));
        }
    }

    /// Exp-Golomb, as ue(v) in HEVC.
    void putExpGolomb(uint64_t value) {
        int length = 0;
        while ((value + 1) >> (length + 1) != 0) ++length;
        put(0, length);
        put(value + 1, length + 1);
    }

    /// A positive number of HEVC's depth_rep_info_element: 2^(e - 31) * (1 + n / 2^v).
    void putNumber(double value) {
        constexpr int kMantissa = 20, kBias = 31 - 1;  // frexp gives halves
        int exponent = 0;
        const double mantissa = std::frexp(value, &exponent) * 2 - 1;
        exponent += kBias;
        put(0, 1);
        put(static_cast<uint64_t>(exponent), 7);
        put(kMantissa - 1, 5);
        put(static_cast<uint64_t>(std::lround(std::ldexp(mantissa, kMantissa))), kMantissa);
    }
};

/// The depth representation information as SEI messages, as the auxC property holds them.
std::string seiMessages(const AppleHeicOptions::Range& range) {
    Bits bits;
    for (const auto& number : {range.z_near, range.z_far, range.d_min, range.d_max})
        bits.put(number ? 1 : 0, 1);
    bits.putExpGolomb(static_cast<uint64_t>(range.type));
    if (range.d_min || range.d_max) bits.putExpGolomb(0);
    for (const auto& number : {range.z_near, range.z_far, range.d_min, range.d_max})
        if (number) bits.putNumber(*number);
    constexpr uint64_t kPrefixSei = 39, kDepthRepresentation = 177;
    const std::string unit = big(kPrefixSei << 9 | 1, 2) + big(kDepthRepresentation, 1) +
                             big(bits.bytes.size(), 1) + bits.bytes + "\x80";
    return big(unit.size() + 4, 4) + big(unit.size(), 4) + unit;
}

struct Item {
    uint32_t id;
    Coded picture;
    std::string aux_type;  ///< empty for the photo and for XMP
    std::string sei;
    int turns = 0;
    std::optional<int> mirror;
};

/// What is wrong with the item.
Fault faultOf(const Item& item, const AppleHeicOptions& options) {
    return item.id == kHeicDepth ? options.fault : Fault::kNone;
}

std::string infoOf(const Item& item, bool avif) {
    const std::string head = big(item.id, 2) + big(0, 2);
    if (item.id == kHeicDepthXmp) return fullBox("infe", head + "mime\0application/rdf+xml\0"s, 2);
    return fullBox("infe", head + (avif ? "av01" : "hvc1") + "\0"s, 2);
}

std::string referenceOf(const Item& item) {
    const std::string id = big(item.id, 2), one = big(1, 2);
    if (item.id == kHeicDepthXmp) return box("cdsc", id + one + big(kHeicDepth, 2));
    return item.id == kHeicPhoto || item.id == kHeicSecondView ? ""
                                                               : box("auxl", id + one + big(kHeicPhoto, 2));
}

std::vector<std::string> propertiesOf(const Item& item, Fault fault) {
    std::vector<std::string> properties = item.picture.properties;
    for (std::string& each : properties)
        if (fault == Fault::kHugeDepth && each.compare(4, 4, "ispe") == 0)
            each = fullBox("ispe", big(20'000, 4) + big(20'000, 4));
    if (!item.aux_type.empty() && fault != Fault::kNoAuxType)
        properties.push_back(fullBox("auxC", item.aux_type + "\0"s + item.sei));
    if (item.turns != 0) properties.push_back(box("irot", big(static_cast<uint64_t>(item.turns), 1)));
    if (item.mirror) properties.push_back(box("imir", big(static_cast<uint64_t>(*item.mirror), 1)));
    return properties;
}

/// `groups` are the boxes of the entity groups.
std::string fileOf(const std::vector<Item>& items, const AppleHeicOptions& options,
                   const std::string& groups = "") {
    std::string infos, references, properties, associations, data;
    size_t property_count = 0;
    for (const Item& item : items) {
        const Fault fault = faultOf(item, options);
        infos += infoOf(item, options.avif);
        if (fault != Fault::kNoReference) references += referenceOf(item);
        const std::vector<std::string> own = propertiesOf(item, fault);
        associations += big(item.id, 2) + big(own.size(), 1);
        for (const std::string& each : own) {
            properties += each;
            constexpr uint64_t kEssential = 0x80;
            associations += big(++property_count | kEssential, 1);
        }
        const std::string& bytes = item.picture.bytes;
        data += fault == Fault::kDepthNotCoded ? std::string(bytes.size(), 'x') : bytes;
    }
    const auto metaWith = [&](size_t data_at) {
        std::string locations;
        for (const Item& item : items) {
            const size_t away = faultOf(item, options) == Fault::kDepthBeyondFile ? data.size() + 100'000 : 0;
            const size_t size = item.picture.bytes.size();
            locations += big(item.id, 2) + big(0, 2) + big(1, 2) + big(data_at + away, 4) + big(size, 4);
            data_at += size;
        }
        return fullBox(
            "meta",
            fullBox("hdlr", big(0, 4) + "pict" + std::string(13, '\0')) +
                fullBox("pitm", big(kHeicPhoto, 2)) + fullBox("iinf", big(items.size(), 2) + infos) +
                (references.empty() ? "" : fullBox("iref", references)) +
                (groups.empty() ? "" : box("grpl", groups)) +
                box("iprp", box("ipco", properties) + fullBox("ipma", big(items.size(), 4) + associations)) +
                fullBox("iloc", big(0x4400, 2) + big(items.size(), 2) + locations));
    };
    const std::string types = box("ftyp", options.avif ? "avif\0\0\0\0mif1avif"s : "heic\0\0\0\0mif1heic"s);
    const size_t data_at = types.size() + metaWith(0).size() + 8;
    return types + metaWith(data_at) + box("mdat", data);
}

}  // namespace

std::string appleHeicFile(const media::RgbImage& photo, const media::Image<uint16_t, 1>& depth, int bits,
                          const AppleHeicOptions& options) {
    std::vector<Item> items = {{kHeicPhoto, coded(pictureOf(photo), false, options.avif), "", "",
                                options.photo_turns, options.photo_mirror}};
    const auto addPlane = [&](uint32_t id, const std::string& type, const std::string& sei) {
        items.push_back({id, coded(pictureOf(depth, bits), true, options.avif), type, sei,
                         options.depth_turns, options.depth_mirror});
    };
    if (options.matte) addPlane(kHeicMatte, "urn:com:apple:photo:2018:aux:portraiteffectsmatte", "");
    if (options.gain_map) addPlane(kHeicGainMap, "urn:com:apple:photo:2020:aux:hdrgainmap", "");
    if (options.depth)
        addPlane(kHeicDepth,
                 options.avif ? "urn:mpeg:mpegB:cicp:systems:auxiliary:depth" : "urn:mpeg:hevc:2015:auxid:2",
                 options.range ? seiMessages(*options.range) : "");
    if (!options.depth_xmp.empty()) items.push_back({kHeicDepthXmp, {{}, options.depth_xmp}, "", "", 0, {}});
    return fileOf(items, options);
}

std::string appleHeicFile(const media::RgbImage& photo, const media::GrayImage& depth,
                          const AppleHeicOptions& options) {
    media::Image<uint16_t, 1> plane(depth.width, depth.height);
    plane.samples.assign(depth.samples.begin(), depth.samples.end());
    return appleHeicFile(photo, plane, 8, options);
}

std::string stereoHeicFile(const media::RgbImage& left, const media::RgbImage& right,
                           const StereoHeicOptions& options) {
    AppleHeicOptions file;
    file.avif = options.avif;
    const media::RgbImage& shown = options.photo_is_right ? right : left;
    const media::RgbImage& other = options.photo_is_right ? left : right;
    const std::vector<Item> items = {
        {kHeicPhoto, coded(pictureOf(shown), false, options.avif), "", "", 0, {}},
        {kHeicSecondView, coded(pictureOf(other), false, options.avif), "", "", 0, {}}};
    const uint32_t first_id = options.photo_is_right ? options.second_view : kHeicPhoto;
    const uint32_t second_id = options.photo_is_right ? kHeicPhoto : options.second_view;
    constexpr uint64_t kGroup = 99;
    return fileOf(items, file,
                  fullBox("ster", big(kGroup, 4) + big(2, 4) + big(first_id, 4) + big(second_id, 4)));
}

}  // namespace quorvane::test
