// The native half of PortraitPhoto.java: looks into the photo and hands over what was found. The Java half
// has checked the buffer.

#include "portrait_photo.h"

#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "java.h"
#include "media/embedded/embedded.h"
#include "media/embedded/jpeg.h"
#include "media/embedded/png.h"

namespace quorvane {
namespace {

using media::Contents;
using media::DepthKind;
using media::DepthSamples;
using media::EmbeddedDepth;

/// ASCII, whatever a file has put into it: Java's own UTF-8 is not that of files, and a wrong one ends the
/// process on some devices.
std::string plain(std::string text) {
    for (char& c : text)
        if (c < ' ' || c > '~') c = '?';
    return text;
}

// These return null where memory did not suffice, and then an exception waits.

jstring newString(JNIEnv* env, const std::string& text) { return env->NewStringUTF(plain(text).c_str()); }

jbyteArray newBytes(JNIEnv* env, std::string_view bytes) {
    // Nothing in a file is larger than the file, whose size is a jint.
    const jsize size = static_cast<jsize>(bytes.size());
    const jbyteArray array = env->NewByteArray(size);
    if (array != nullptr)
        env->SetByteArrayRegion(array, 0, size, reinterpret_cast<const jbyte*>(bytes.data()));
    return array;
}

jobjectArray newStrings(JNIEnv* env, const std::vector<std::string>& texts) {
    const jclass type = env->FindClass("java/lang/String");
    if (type == nullptr) return nullptr;
    const jobjectArray array = env->NewObjectArray(static_cast<jsize>(texts.size()), type, nullptr);
    if (array == nullptr) return nullptr;
    for (size_t i = 0; i < texts.size(); ++i) {
        const jstring text = newString(env, texts[i]);
        if (text == nullptr) return nullptr;
        env->SetObjectArrayElement(array, static_cast<jsize>(i), text);
        if (env->ExceptionCheck()) return nullptr;
        // A native method may hold 16 references.
        env->DeleteLocalRef(text);
    }
    return array;
}

/// Exif's code that turns a picture upright: its own, else `otherwise`.
int orientationOf(std::string_view picture, int otherwise) {
    const auto jpeg = media::walkJpeg(picture);
    return jpeg ? media::exifOrientation(*jpeg).value_or(otherwise) : otherwise;
}

/// Bits of a sample as it is stored. Of pictures only PNG's matter: the others that Android decodes have 8.
int bitsOf(const EmbeddedDepth& depth) {
    if (const auto* samples = std::get_if<DepthSamples>(&depth.plane)) return samples->bits;
    return media::pngBits(media::planeBytes(depth)) == 16 ? 16 : 8;
}

/// The place in PortraitPhoto.DepthKind.
jint ordinalOf(DepthKind kind) {
    switch (kind) {
        case DepthKind::kDisparity: return 0;
        case DepthKind::kInverseRange: return 1;
        case DepthKind::kLinearRange: return 2;
        case DepthKind::kUnknown: break;
    }
    return 3;
}

jobject newPhoto(JNIEnv* env, jclass type, const Contents& contents) {
    const jmethodID constructor = env->GetMethodID(
        type, "<init>", "([BI[Ljava/lang/String;Ljava/lang/String;[BZIIIIZDDLjava/lang/String;IZ)V");
    if (constructor == nullptr) return nullptr;
    const jobjectArray remarks = newStrings(env, contents.remarks);
    if (remarks == nullptr) return nullptr;
    jbyteArray original = nullptr;
    int orientation = contents.orientation;
    if (contents.original) {
        original = newBytes(env, contents.original->bytes);
        if (original == nullptr) return nullptr;
        orientation = orientationOf(contents.original->bytes, contents.original->orientation);
    }

    const EmbeddedDepth none;
    const EmbeddedDepth& depth = contents.depth ? *contents.depth : none;
    jstring container = nullptr;
    jbyteArray samples = nullptr;
    if (contents.depth) {
        container = newString(env, depth.container);
        if (container == nullptr) return nullptr;
        samples = newBytes(env, media::planeBytes(depth));
        if (samples == nullptr) return nullptr;
    }
    const jstring units = newString(env, depth.units);
    if (units == nullptr) return nullptr;
    const auto* bare = std::get_if<DepthSamples>(&depth.plane);
    const int depth_orientation =
        bare == nullptr ? orientationOf(media::planeBytes(depth), depth.orientation) : depth.orientation;
    return env->NewObject(type, constructor, original, orientation, remarks, container, samples,
                          static_cast<jboolean>(bare == nullptr), bare == nullptr ? 0 : bare->width,
                          bare == nullptr ? 0 : bare->height, bitsOf(depth), ordinalOf(depth.kind),
                          static_cast<jboolean>(depth.larger_is_nearer), depth.near.value_or(NAN),
                          depth.far.value_or(NAN), units, depth_orientation,
                          static_cast<jboolean>(depth.orientation_known));
}

jobjectArray containers(JNIEnv* env, jclass) { return newStrings(env, media::knownContainers()); }

jobject read(JNIEnv* env, jclass type, jobject buffer, jint position, jint bytes) {
    DirectBytes file;
    const Status status = directBytes(env, "photo file", buffer, position, bytes, &file);
    report(env, status);
    if (!status) return nullptr;
    return newPhoto(env, type, media::lookInside({reinterpret_cast<const char*>(file.data), file.bytes}));
}

}  // namespace

bool registerPortraitPhoto(JNIEnv* env) {
    const jclass type = env->FindClass("quorvane/parallax/PortraitPhoto");
    if (type == nullptr) return false;
    const JNINativeMethod methods[] = {
        nativeMethod<containers>("nativeContainers", "()[Ljava/lang/String;"),
        nativeMethod<read>("nativeRead", "(Ljava/nio/ByteBuffer;II)Lquorvane/parallax/PortraitPhoto;"),
    };
    return env->RegisterNatives(type, methods, sizeof methods / sizeof methods[0]) == JNI_OK;
}

}  // namespace quorvane
