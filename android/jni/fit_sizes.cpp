// The native half of FitSizes.java, which has checked that no size is below 1.

#include "fit_sizes.h"

#include "java.h"
#include "sizes/sizes.h"

namespace quorvane {
namespace {

jintArray plan(JNIEnv* env, jclass, jint photo_width, jint photo_height, jint depth_width, jint depth_height,
               jint picture_width, jint picture_height, jint largest_side, jboolean fine) {
    const FitPlan plan =
        planFit({photo_width, photo_height}, {depth_width, depth_height}, {picture_width, picture_height},
                largest_side, fine != JNI_FALSE ? kAutoGridLive : kCoarseGrid);
    const jint values[] = {plan.photo.width,      plan.photo.height,    plan.depth.width,
                           plan.depth.height,     plan.fit.ratio,       plan.fit.photo.width,
                           plan.fit.photo.height, plan.fit.depth.width, plan.fit.depth.height};
    constexpr jsize kValues = sizeof values / sizeof values[0];
    const jintArray array = env->NewIntArray(kValues);
    if (array != nullptr) env->SetIntArrayRegion(array, 0, kValues, values);
    return array;
}

}  // namespace

bool registerFitSizes(JNIEnv* env) {
    const jclass type = env->FindClass("quorvane/parallax/FitSizes");
    if (type == nullptr) return false;
    const JNINativeMethod methods[] = {nativeMethod<plan>("nativePlan", "(IIIIIIIZ)[I")};
    return env->RegisterNatives(type, methods, 1) == JNI_OK;
}

}  // namespace quorvane
