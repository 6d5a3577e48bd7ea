// The native half of PicturePlan.java, which has checked the buffers and nulls.

#include "picture_plan.h"

#include <quorvane/host/PicturePlan.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "java.h"
#include "media/depth/polarity.h"
#include "media/picture/image.h"

namespace quorvane {
namespace {

/// What Java gives in one array.
enum Number {
    kPhotoWidth,
    kPhotoHeight,
    kGridWidth,
    kGridHeight,
    kWidth,
    kHeight,
    kOrientation,
    kPivot,
    kDepthWidth,
    kDepthHeight,
    kNumbers
};

/// False where an exception waits.
bool readParameters(JNIEnv* env, jobjectArray names, jdoubleArray values, PictureRequest* request) {
    const jsize count = env->GetArrayLength(names);
    std::vector<jdouble> numbers(static_cast<size_t>(count));
    env->GetDoubleArrayRegion(values, 0, count, numbers.data());
    if (env->ExceptionCheck()) return false;
    for (jsize i = 0; i < count; ++i) {
        const auto name = static_cast<jstring>(env->GetObjectArrayElement(names, i));
        const char* characters = env->GetStringUTFChars(name, nullptr);
        if (characters == nullptr) return false;
        request->parameters.emplace_back(characters, numbers[static_cast<size_t>(i)]);
        env->ReleaseStringUTFChars(name, characters);
        env->DeleteLocalRef(name);
    }
    return true;
}

/// Null where an exception waits.
jobject toJava(JNIEnv* env, jclass type, const PicturePlan& plan) {
    const jclass text = env->FindClass("java/lang/String");
    if (text == nullptr) return nullptr;
    const auto count = static_cast<jsize>(plan.parameters.size());
    const jobjectArray names = env->NewObjectArray(count, text, nullptr);
    if (names == nullptr) return nullptr;
    const jdoubleArray values = env->NewDoubleArray(count);
    if (values == nullptr) return nullptr;
    for (jsize i = 0; i < count; ++i) {
        const auto& [parameter, value] = plan.parameters[static_cast<size_t>(i)];
        const jstring name = env->NewStringUTF(parameter.c_str());
        if (name == nullptr) return nullptr;
        env->SetObjectArrayElement(names, i, name);
        if (env->ExceptionCheck()) return nullptr;
        env->DeleteLocalRef(name);
        env->SetDoubleArrayRegion(values, i, 1, &value);
        if (env->ExceptionCheck()) return nullptr;
    }
    const jmethodID constructor = env->GetMethodID(type, "<init>", "([Ljava/lang/String;[DDDD)V");
    if (constructor == nullptr) return nullptr;
    return env->NewObject(type, constructor, names, values, plan.fov_scale, plan.rotate_z_trans, plan.swing);
}

jobject plan(JNIEnv* env, jclass type, jintArray numbers, jboolean clean_edges, jdouble pivot_x,
             jdouble pivot_y, jdouble frame, jobjectArray names, jdoubleArray values, jobject photo,
             jint photo_position, jint photo_bytes, jint photo_bytes_per_pixel, jobject depth,
             jint depth_position, jint depth_bytes, jobject made) {
    std::array<jint, kNumbers> number = {};
    env->GetIntArrayRegion(numbers, 0, kNumbers, number.data());
    if (env->ExceptionCheck()) return nullptr;

    PictureRequest request;
    request.sizes = {number[kPhotoWidth], number[kPhotoHeight], number[kGridWidth], number[kGridHeight]};
    request.width = number[kWidth];
    request.height = number[kHeight];
    request.orientation = static_cast<uint32_t>(number[kOrientation]);
    request.clean_edges = clean_edges != JNI_FALSE;
    request.pivot = static_cast<Pivot>(number[kPivot]);
    request.pivot_x = pivot_x;
    request.pivot_y = pivot_y;
    if (!std::isnan(frame)) request.frame = frame;
    if (!readParameters(env, names, values, &request)) return nullptr;

    DirectBytes samples;
    Status status = directBytes(env, "depth map", depth, depth_position, depth_bytes, &samples);
    request.depth = {samples.data, samples.bytes, number[kDepthWidth], number[kDepthHeight]};

    std::vector<uint8_t> rgb;
    if (status && photo != nullptr && planReadsPhoto(request)) {
        DirectBytes pixels;
        status = directBytes(env, "photo", photo, photo_position, photo_bytes, &pixels);
        const auto bytes_per_pixel = static_cast<size_t>(photo_bytes_per_pixel);
        if (bytes_per_pixel == 4) {
            rgb.reserve(pixels.bytes / 4 * 3);
            for (size_t i = 0; i + 4 <= pixels.bytes; i += 4)
                rgb.insert(rgb.end(), pixels.data + i, pixels.data + i + 3);
            pixels = {rgb.data(), rgb.size()};
        }
        request.photo = {pixels.data, pixels.bytes, request.sizes.photo_width, request.sizes.photo_height};
    }

    PicturePlan planned;
    if (status) status = planPicture(request, &planned);
    DirectBytes target;
    if (status)
        status = directBytes(env, "depth map", made, 0, static_cast<jint>(planned.depth.size()), &target);
    report(env, status);
    if (!status) return nullptr;
    std::copy(planned.depth.begin(), planned.depth.end(), target.data);
    return toJava(env, type, planned);
}

jboolean largerIsFarther(JNIEnv* env, jclass, jint photo_width, jint photo_height, jobject rgba,
                         jint depth_width, jint depth_height, jobject depth) {
    media::RgbImage photo(photo_width, photo_height);
    media::Plane plane(depth_width, depth_height);
    DirectBytes pixels, levels;
    Status status = directBytes(env, "photo", rgba, 0, 4 * photo_width * photo_height, &pixels);
    if (status) status = directBytes(env, "depth map", depth, 0, depth_width * depth_height, &levels);
    report(env, status);
    if (!status) return JNI_FALSE;
    for (size_t i = 0; i < photo.samples.size() / 3; ++i)
        std::copy_n(pixels.data + 4 * i, 3, photo.samples.begin() + static_cast<std::ptrdiff_t>(3 * i));
    std::copy_n(levels.data, levels.bytes, plane.samples.begin());
    return media::confidenceLargerIsFarther(photo, plane, {}) > media::kLooksFarther;
}

}  // namespace

bool registerPicturePlan(JNIEnv* env) {
    const jclass type = env->FindClass("quorvane/parallax/PicturePlan");
    if (type == nullptr) return false;
    const JNINativeMethod methods[] = {
        nativeMethod<plan>("nativePlan",
                           "([IZDDD[Ljava/lang/String;[DLjava/nio/ByteBuffer;IIILjava/nio/ByteBuffer;II"
                           "Ljava/nio/ByteBuffer;)Lquorvane/parallax/PicturePlan;"),
        nativeMethod<largerIsFarther>("nativeLargerIsFarther",
                                      "(IILjava/nio/ByteBuffer;IILjava/nio/ByteBuffer;)Z")};
    return env->RegisterNatives(type, methods, 2) == JNI_OK;
}

}  // namespace quorvane
