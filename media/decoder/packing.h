#ifndef QUORVANE_MEDIA_DECODER_PACKING_H
#define QUORVANE_MEDIA_DECODER_PACKING_H

#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "media/depth/photo_with_depth.h"
#include "media/depth/stereo_views.h"
#include "media/embedded/embedded.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"
#include "system/sealed_memory.h"

namespace quorvane::media {

// How values travel between a program and its decoding worker, which are the same build on the same machine:
// numbers as they lie in memory, everything of varying length behind its 64-bit count.

/// What arrived is not what it should be.
class Malformed : public std::runtime_error {
  public:
    Malformed() : std::runtime_error("a malformed message") {}
};

// The members of each structure, for both directions.

template <typename Self, typename Visit>
void eachMember(Self& image, Visit visit, const InnerImage*) {
    visit(image.role, image.where, image.mime, image.bytes);
}
template <typename Self, typename Visit>
void eachMember(Self& plane, Visit visit, const DepthPicture*) {
    visit(plane.bytes);
}
template <typename Self, typename Visit>
void eachMember(Self& plane, Visit visit, const DepthSamples*) {
    visit(plane.bytes, plane.width, plane.height, plane.bits);
}
/// Without the file that it refers to: both sides have it.
template <typename Self, typename Visit>
void eachMember(Self& plane, Visit visit, const DepthHeifItem*) {
    visit(plane.id);
}
template <typename Self, typename Visit>
void eachMember(Self& depth, Visit visit, const EmbeddedDepth*) {
    visit(depth.container, depth.where, depth.plane, depth.kind, depth.larger_is_nearer,
          depth.polarity_reason, depth.near, depth.far, depth.units, depth.orientation,
          depth.orientation_known);
}
template <typename Self, typename Visit>
void eachMember(Self& photo, Visit visit, const EmbeddedPhoto*) {
    visit(photo.where, photo.bytes, photo.orientation);
}
template <typename Self, typename Visit>
void eachMember(Self& layout, Visit visit, const PairLayout*) {
    visit(layout.one_above_other, layout.squeezed, layout.right_first);
}
template <typename Self, typename Visit>
void eachMember(Self& view, Visit visit, const StereoView*) {
    visit(view.where, view.bytes, view.heif_item, view.orientation);
}
template <typename Self, typename Visit>
void eachMember(Self& pair, Visit visit, const StereoPair*) {
    visit(pair.container, pair.left, pair.right, pair.layout);
}
template <typename Self, typename Visit>
void eachMember(Self& views, Visit visit, const StereoViews*) {
    visit(views.left, views.right);
}
template <typename Self, typename Visit>
void eachMember(Self& contents, Visit visit, const Contents*) {
    visit(contents.file_kind, contents.orientation, contents.images, contents.depth, contents.original,
          contents.pair, contents.remarks);
}
template <typename Self, typename Visit>
void eachMember(Self& header, Visit visit, const PictureHeader*) {
    visit(header.width, header.height, header.bands, header.bits);
}
template <typename Self, typename Visit>
void eachMember(Self& photo, Visit visit, const ShrunkPhoto*) {
    visit(photo.header, photo.shrunk);
}
template <typename Self, typename Visit>
void eachMember(Self& size, Visit visit, const Size*) {
    visit(size.width, size.height);
}
template <typename Self, typename Visit>
void eachMember(Self& depth, Visit visit, const DepthMap*) {
    visit(depth.bits, depth.plane, depth.known, depth.colour_map);
}
template <typename Self, typename Visit>
void eachMember(Self& picture, Visit visit, const SplitPicture*) {
    visit(picture.photo, picture.depth);
}

/// Writes values one after another.
class Packer {
  public:
    template <typename... Values>
    void pack(const Values&... values) {
        (one(values), ...);
    }

    SealedMemory finish() { return m_memory.finish(); }

  private:
    void raw(const void* bytes, size_t count) { m_memory.write(bytes, count); }
    void count(size_t size) { one(static_cast<uint64_t>(size)); }

    template <typename Value>
    void one(const Value& value) {
        if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>)
            raw(&value, sizeof value);
        else
            eachMember(
                value, [this](const auto&... members) { this->pack(members...); },
                static_cast<const Value*>(nullptr));
    }
    void one(std::string_view text) {
        count(text.size());
        raw(text.data(), text.size());
    }
    void one(const std::string& text) { one(std::string_view(text)); }
    template <typename Value>
    void one(const std::vector<Value>& values) {
        count(values.size());
        if constexpr (std::is_arithmetic_v<Value>)
            raw(values.data(), values.size() * sizeof(Value));
        else
            for (const Value& value : values) one(value);
    }
    template <typename Value>
    void one(const std::optional<Value>& value) {
        one(value.has_value());
        if (value) one(*value);
    }
    template <typename... Values>
    void one(const std::variant<Values...>& value) {
        count(value.index());
        std::visit([this](const auto& held) { this->one(held); }, value);
    }
    template <typename Sample, int kChannels>
    void one(const Image<Sample, kChannels>& image) {
        pack(image.width, image.height, image.samples);
    }

    SealedMemory::Writer m_memory;
};

/// Reads them back. Whatever the bytes are, it throws Malformed rather than read beyond them or make an image
/// whose samples do not fit its size.
class Unpacker {
  public:
    /// `bytes` outlive it, and every string_view that it has unpacked.
    explicit Unpacker(std::string_view bytes) : m_bytes(bytes) {}

    template <typename... Values>
    void unpack(Values&... values) {
        (one(values), ...);
    }

    template <typename Value>
    Value take() {
        Value value = {};
        one(value);
        return value;
    }

  private:
    std::string_view raw(size_t count) {
        if (count > m_bytes.size()) throw Malformed();
        const std::string_view taken = m_bytes.substr(0, count);
        m_bytes.remove_prefix(count);
        return taken;
    }
    size_t count() { return static_cast<size_t>(take<uint64_t>()); }

    template <typename Value>
    void one(Value& value) {
        if constexpr (std::is_same_v<Value, bool>)
            value = raw(1)[0] != 0;
        else if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>)
            std::memcpy(&value, raw(sizeof value).data(), sizeof value);
        else
            eachMember(
                value, [this](auto&... members) { this->unpack(members...); },
                static_cast<const Value*>(nullptr));
    }
    void one(std::string_view& text) { text = raw(count()); }
    void one(std::string& text) { text = raw(count()); }
    template <typename Value>
    void one(std::vector<Value>& values) {
        const size_t size = count();
        if constexpr (std::is_arithmetic_v<Value>) {
            if (size > m_bytes.size() / sizeof(Value)) throw Malformed();
            const std::string_view bytes = raw(size * sizeof(Value));
            if constexpr (sizeof(Value) == 1) {
                values.assign(bytes.begin(), bytes.end());
            } else {
                values.resize(size);
                if (size > 0) std::memcpy(values.data(), bytes.data(), bytes.size());
            }
        } else {
            // Each takes a byte at least, so that a false count ends soon.
            for (size_t i = 0; i < size; ++i) one(values.emplace_back());
        }
    }
    template <typename Value>
    void one(std::optional<Value>& value) {
        value.reset();
        if (take<bool>()) one(value.emplace());
    }
    template <typename... Values>
    void one(std::variant<Values...>& value) {
        const size_t index = count();
        size_t at = 0;
        const bool known = ((at++ == index && (one(value.template emplace<Values>()), true)) || ...);
        if (!known) throw Malformed();
    }
    template <typename Sample, int kChannels>
    void one(Image<Sample, kChannels>& image) {
        unpack(image.width, image.height, image.samples);
        if (image.width < 0 || image.height < 0 ||
            static_cast<uint64_t>(image.width) * static_cast<uint64_t>(image.height) * kChannels !=
                image.samples.size())
            throw Malformed();
    }

    std::string_view m_bytes;
};

}  // namespace quorvane::media

#endif
