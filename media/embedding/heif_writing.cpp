#include "media/embedding/heif_writing.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>

#include "media/embedded/bytes.h"
#include "media/embedded/heif_file.h"
#include "media/embedding/written_bytes.h"
#include "sizes/sizes.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using namespace std::string_literals;

/// A box of four letters.
std::string heifBox(const std::string& type, const std::string& body) {
    return bigEndianBytes(static_cast<int64_t>(body.size()) + 8, 4) + type + body;
}

struct EncoderDeleter {
    void operator()(heif_encoder* encoder) const { heif_encoder_release(encoder); }
};

HeifImage emptyImage(int width, int height, heif_colorspace space, heif_chroma chroma) {
    heif_image* image = nullptr;
    throwIfFailed(heif_image_create(width, height, space, chroma, &image));
    return HeifImage(image);
}

/// Rows of `row_bytes` into the picture's channel.
void fill(heif_image* image, heif_channel channel, int width, int height, const uint8_t* samples,
          size_t row_bytes) {
    throwIfFailed(heif_image_add_plane(image, channel, width, height, 8));
    int stride = 0;
    uint8_t* rows = heif_image_get_plane(image, channel, &stride);
    for (int y = 0; y < height; ++y)
        std::copy_n(samples + static_cast<size_t>(y) * row_bytes, row_bytes,
                    rows + static_cast<ptrdiff_t>(y) * stride);
}

/// The boxes that follow one another, each with its header. libheif writes none of 64 bit.
std::vector<std::string_view> boxesIn(std::string_view bytes) {
    std::vector<std::string_view> boxes;
    constexpr uint64_t kHeader = 8;
    while (!bytes.empty()) {
        const uint64_t size = bigEndian(bytes, 0, 4).value_or(0);
        const auto box = part(bytes, 0, size);
        if (size < kHeader || !box) throw std::runtime_error("libheif wrote no file of whole boxes");
        boxes.push_back(*box);
        bytes.remove_prefix(size);
    }
    return boxes;
}

std::string_view typeOf(std::string_view box) { return box.substr(4, 4); }

constexpr size_t kFullHeader = 12;  // of a box with a version and flags

/// The body of the box of that type, behind `header` bytes.
std::string_view bodyOf(std::string_view type, const std::vector<std::string_view>& boxes,
                        size_t header = 8) {
    for (const std::string_view box : boxes)
        if (typeOf(box) == type && box.size() >= header) return box.substr(header);
    throw std::runtime_error("libheif wrote no " + std::string(type) + " box");
}

/// Shows the upper left of what is coded.
std::string cleanAperture(Size shown, Size coded) {
    const auto part = [](int over, int under) { return bigEndianBytes(over, 4) + bigEndianBytes(under, 4); };
    // The last two: from the middle of what is coded to that of what is shown.
    return heifBox("clap", part(shown.width, 1) + part(shown.height, 1) + part(shown.width - coded.width, 2) +
                               part(shown.height - coded.height, 2));
}

/// What libheif says of a coded picture of that size. A picture with an odd side is coded with one column or
/// row more, and libheif makes a second item of it, with a size and colours of its own, which is left out.
std::vector<std::string> propertiesIn(std::string_view ipco, Size shown) {
    std::vector<std::string> properties;
    Size coded = shown;
    for (const std::string_view property : boxesIn(ipco)) {
        if (std::any_of(properties.begin(), properties.end(),
                        [property](const std::string& other) { return typeOf(other) == typeOf(property); }))
            continue;
        properties.emplace_back(property);
        if (typeOf(property) != "ispe") continue;
        const auto side = [property](size_t at) {
            return static_cast<int>(bigEndian(property, kFullHeader + at, 4).value_or(0));
        };
        coded = {side(0), side(4)};
    }
    if (coded != shown) properties.push_back(cleanAperture(shown, coded));
    return properties;
}

/// Codes a picture and takes it out of the file that libheif writes.
CodedPicture coded(const heif_image* image, const std::function<void(heif_encoder*)>& settle) {
    const HeifContext context(heif_context_alloc());
    if (context == nullptr) throw std::bad_alloc();
    heif_encoder* made = nullptr;
    throwIfFailed(heif_context_get_encoder_for_format(context.get(), heif_compression_HEVC, &made));
    const std::unique_ptr<heif_encoder, EncoderDeleter> encoder(made);
    settle(encoder.get());
    heif_image_handle* handle = nullptr;
    throwIfFailed(heif_context_encode_image(context.get(), image, encoder.get(), nullptr, &handle));
    const HeifHandle held(handle);
    std::string file;
    heif_writer writer = {};
    writer.writer_api_version = 1;
    writer.write = [](heif_context*, const void* data, size_t size, void* to) {
        static_cast<std::string*>(to)->assign(static_cast<const char*>(data), size);
        return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
    };
    throwIfFailed(heif_context_write(context.get(), &writer, &file));

    const std::vector<std::string_view> boxes = boxesIn(file);
    const std::string_view iprp = bodyOf("iprp", boxesIn(bodyOf("meta", boxes, kFullHeader)));
    const Size shown = {heif_image_get_primary_width(image), heif_image_get_primary_height(image)};
    return {propertiesIn(bodyOf("ipco", boxesIn(iprp)), shown), std::string(bodyOf("mdat", boxes))};
}

template <typename Work>
CodedPicture orError(const Work& work) {
    try {
        return work();
    } catch (const std::runtime_error& error) {
        throw Error(std::string("libheif cannot code a picture (") + error.what() + ")");
    }
}

bool isEssential(const std::string& property) {
    return typeOf(property) == "hvcC" || typeOf(property) == "clap";
}

std::string infoOf(const HeifItemToWrite& item, int id) {
    constexpr uint32_t kHidden = 1;  // what is no picture of its own
    const bool shown = item.type == "hvc1" && item.references.empty();
    const std::string name = item.type == "mime" ? "\0"s + item.content_type + '\0' : "\0"s;
    return heifFullBox("infe", 2, shown ? 0 : kHidden,
                       bigEndianBytes(id, 2) + bigEndianBytes(0, 2) + item.type + name);
}

}  // namespace

std::string heifFullBox(const std::string& type, int version, uint32_t flags, const std::string& body) {
    return heifBox(type, bigEndianBytes(version, 1) + bigEndianBytes(flags, 3) + body);
}

CodedPicture codedPicture(const RgbImage& picture, int quality) {
    return orError([&] {
        const HeifImage image =
            emptyImage(picture.width, picture.height, heif_colorspace_RGB, heif_chroma_interleaved_RGB);
        fill(image.get(), heif_channel_interleaved, picture.width, picture.height, picture.samples.data(),
             static_cast<size_t>(picture.width) * 3);
        return coded(image.get(), [quality](heif_encoder* encoder) {
            throwIfFailed(heif_encoder_set_lossy_quality(encoder, quality));
        });
    });
}

CodedPicture codedPlane(const GrayImage& plane) {
    return orError([&] {
        const HeifImage image =
            emptyImage(plane.width, plane.height, heif_colorspace_monochrome, heif_chroma_monochrome);
        fill(image.get(), heif_channel_Y, plane.width, plane.height, plane.samples.data(),
             static_cast<size_t>(plane.width));
        return coded(image.get(),
                     [](heif_encoder* encoder) { throwIfFailed(heif_encoder_set_lossless(encoder, 1)); });
    });
}

std::string heifFile(const std::vector<HeifItemToWrite>& items, const std::string& groups) {
    std::string infos, references, properties, associations, data;
    int property = 0, id = 0;
    for (const HeifItemToWrite& item : items) {
        infos += infoOf(item, ++id);
        for (const auto& [type, to] : item.references)
            references += heifBox(type, bigEndianBytes(id, 2) + bigEndianBytes(1, 2) + bigEndianBytes(to, 2));
        data += item.bytes;
        if (item.properties.empty()) continue;
        associations +=
            bigEndianBytes(id, 2) + bigEndianBytes(static_cast<int64_t>(item.properties.size()), 1);
        for (const std::string& each : item.properties) {
            constexpr int kEssential = 0x80;
            properties += each;
            associations += bigEndianBytes(++property | (isEssential(each) ? kEssential : 0), 1);
        }
    }
    const auto with_properties = std::count_if(
        items.begin(), items.end(), [](const HeifItemToWrite& item) { return !item.properties.empty(); });
    const auto count = static_cast<int64_t>(items.size());
    const auto metaWith = [&](size_t data_at) {
        std::string locations;
        for (size_t i = 0; i < items.size(); ++i) {
            constexpr int64_t kThisFile = 0, kExtents = 1;
            const auto at = static_cast<int64_t>(data_at), size = static_cast<int64_t>(items[i].bytes.size());
            locations += bigEndianBytes(static_cast<int64_t>(i) + 1, 2) + bigEndianBytes(kThisFile, 2) +
                         bigEndianBytes(kExtents, 2) + bigEndianBytes(at, 4) + bigEndianBytes(size, 4);
            data_at += items[i].bytes.size();
        }
        constexpr int64_t kFourByteOffsetsAndLengths = 0x4400;
        std::string boxes =
            heifFullBox("hdlr", 0, 0, bigEndianBytes(0, 4) + "pict" + std::string(13, '\0')) +
            heifBox("dinf", heifFullBox("dref", 0, 0, bigEndianBytes(1, 4) + heifFullBox("url ", 0, 1, ""))) +
            heifFullBox("pitm", 0, 0, bigEndianBytes(1, 2)) +
            heifFullBox("iinf", 0, 0, bigEndianBytes(count, 2) + infos);
        if (!references.empty()) boxes += heifFullBox("iref", 0, 0, references);
        boxes +=
            heifBox("iprp", heifBox("ipco", properties) +
                                heifFullBox("ipma", 0, 0, bigEndianBytes(with_properties, 4) + associations));
        if (!groups.empty()) boxes += heifBox("grpl", groups);
        boxes +=
            heifFullBox("iloc", 0, 0,
                        bigEndianBytes(kFourByteOffsetsAndLengths, 2) + bigEndianBytes(count, 2) + locations);
        return heifFullBox("meta", 0, 0, boxes);
    };
    const std::string types = heifBox("ftyp", "heic\0\0\0\0heicmif1"s);
    const size_t data_at = types.size() + metaWith(0).size() + 8;
    return types + metaWith(data_at) + heifBox("mdat", data);
}

}  // namespace quorvane::media
