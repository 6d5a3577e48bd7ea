// The native half of ParallaxRenderer.java: unpacks what Java gives, calls the view, and throws its sentence
// as a ParallaxException. The Java half has checked the thread, that the renderer is open, and nulls.

#include <jni.h>
#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>

#include <memory>

#include "copy_picture.h"
#include "current_context.h"
#include "fit_sizes.h"
#include "java.h"
#include "picture_plan.h"
#include "portrait_photo.h"

namespace {

using quorvane::copyPicture;
using quorvane::CurrentContext;
using quorvane::DirectBytes;
using quorvane::directBytes;
using quorvane::Geometry;
using quorvane::nativeMethod;
using quorvane::OffscreenContext;
using quorvane::ParallaxView;
using quorvane::ParameterInfo;
using quorvane::Pixels;
using quorvane::report;
using quorvane::Status;

/// What a Java object's handle points to.
struct Renderer {
    std::unique_ptr<OffscreenContext> own_context;  ///< null where the app's is used; outlives the view
    std::unique_ptr<ParallaxView> view;
};

Renderer* rendererOf(jlong handle) { return reinterpret_cast<Renderer*>(static_cast<intptr_t>(handle)); }

/// A renderer's view, with the renderer's own context current, where it has one, until the scope ends.
class OpenView {
  public:
    explicit OpenView(jlong handle) : m_renderer(rendererOf(handle)) {
        // Where it fails, the view's calls say that the context is not current.
        if (m_renderer->own_context != nullptr) static_cast<void>(m_renderer->own_context->makeCurrent());
    }

    ParallaxView* operator->() const { return m_renderer->view.get(); }
    ParallaxView& operator*() const { return *m_renderer->view; }

  private:
    const CurrentContext m_before;
    Renderer* const m_renderer;
};

/// A Java string as UTF-8 in the way of the Java machine, which is how report() gives it back.
class Text {
  public:
    Text(JNIEnv* env, jstring text)
        : m_env(env), m_text(text), m_characters(env->GetStringUTFChars(text, nullptr)) {}
    ~Text() {
        if (m_characters != nullptr) m_env->ReleaseStringUTFChars(m_text, m_characters);
    }

    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    /// Null where memory did not suffice, and then an exception waits.
    const char* characters() const { return m_characters; }

  private:
    JNIEnv* const m_env;
    const jstring m_text;
    const char* const m_characters;
};

jlong create(JNIEnv* env, jclass, jint width, jint height, jint orientation, jboolean offscreen) {
    const CurrentContext before;
    auto renderer = std::make_unique<Renderer>();
    Status status = Status::success();
    if (offscreen) status = OffscreenContext::create(&renderer->own_context);
    if (status) {
        status = ParallaxView::create(width, height, static_cast<uint32_t>(orientation), &renderer->view);
    }
    report(env, status);
    return status ? reinterpret_cast<intptr_t>(renderer.release()) : 0;
}

void close(JNIEnv*, jclass, jlong handle) {
    const CurrentContext before;
    const std::unique_ptr<Renderer> renderer(rendererOf(handle));
    if (renderer->own_context != nullptr) static_cast<void>(renderer->own_context->makeCurrent());
    renderer->view.reset();
}

void setPhoto(JNIEnv* env, jclass, jlong handle, jint width, jint height, jobject buffer, jint position,
              jint bytes, jint bytes_per_pixel) {
    const OpenView view(handle);
    DirectBytes photo;
    Status status = directBytes(env, "photo", buffer, position, bytes, &photo);
    const Pixels pixels(photo.data, photo.bytes, width, height);
    if (status) status = bytes_per_pixel == 4 ? view->setPhotoRgba(pixels) : view->setPhoto(pixels);
    report(env, status);
}

void setDepth(JNIEnv* env, jclass, jlong handle, jint width, jint height, jobject buffer, jint position,
              jint bytes) {
    const OpenView view(handle);
    DirectBytes depth;
    Status status = directBytes(env, "depth map", buffer, position, bytes, &depth);
    if (status) status = view->setDepth({depth.data, depth.bytes, width, height});
    report(env, status);
}

jobjectArray parameters(JNIEnv* env, jclass) {
    const std::vector<ParameterInfo>& all = ParallaxView::parameters();
    const jclass type = env->FindClass("quorvane/parallax/ParallaxParameter");
    if (type == nullptr) return nullptr;
    const jmethodID constructor =
        env->GetMethodID(type, "<init>", "(Ljava/lang/String;ZDDILjava/lang/String;)V");
    if (constructor == nullptr) return nullptr;
    const jobjectArray list = env->NewObjectArray(static_cast<jsize>(all.size()), type, nullptr);
    if (list == nullptr) return nullptr;

    for (size_t i = 0; i < all.size(); ++i) {
        // A native method may hold 16 references.
        if (env->PushLocalFrame(3) != JNI_OK) return nullptr;
        const jstring name = env->NewStringUTF(all[i].name);
        if (name == nullptr) return nullptr;
        const jstring meaning = env->NewStringUTF(all[i].meaning);
        if (meaning == nullptr) return nullptr;
        const jobject parameter =
            env->NewObject(type, constructor, name, static_cast<jboolean>(all[i].integer), all[i].minimum,
                           all[i].maximum, static_cast<jint>(all[i].takes_effect), meaning);
        if (parameter == nullptr) return nullptr;
        env->SetObjectArrayElement(list, static_cast<jsize>(i), parameter);
        if (env->ExceptionCheck()) return nullptr;
        env->PopLocalFrame(nullptr);
    }
    return list;
}

void checkParameter(JNIEnv* env, jclass, jstring name, jdouble value) {
    Status status = Status::success();
    {
        const Text text(env, name);
        if (text.characters() == nullptr) return;
        status = ParallaxView::checkParameter(text.characters(), value);
    }
    report(env, status);
}

void setParameter(JNIEnv* env, jclass, jlong handle, jstring name, jdouble value) {
    const OpenView view(handle);
    Status status = Status::success();
    {
        const Text text(env, name);
        if (text.characters() == nullptr) return;
        status = view->setParameter(text.characters(), value);
    }
    report(env, status);
}

jdouble parameter(JNIEnv* env, jclass, jlong handle, jstring name) {
    const OpenView view(handle);
    Status status = Status::success();
    double value = 0.0;
    {
        const Text text(env, name);
        if (text.characters() == nullptr) return 0.0;
        status = view->parameter(text.characters(), &value);
    }
    report(env, status);
    return value;
}

void applyProperties(JNIEnv* env, jclass, jlong handle, jint orientation) {
    report(env, OpenView(handle)->applyProperties(static_cast<uint32_t>(orientation)));
}

void resize(JNIEnv* env, jclass, jlong handle, jint width, jint height) {
    report(env, OpenView(handle)->resize(width, height));
}

void lookAt(JNIEnv* env, jclass, jlong handle, jfloat x, jfloat y) {
    report(env, OpenView(handle)->lookAt(x, y));
}

void setAccelerometerData(JNIEnv* env, jclass, jlong handle, jfloat x, jfloat y, jfloat z) {
    report(env, OpenView(handle)->setAccelerometerData(x, y, z));
}

void setRotation(JNIEnv* env, jclass, jlong handle, jfloat x, jfloat y, jfloat z) {
    report(env, OpenView(handle)->setRotation(x, y, z));
}

void setTranslation(JNIEnv* env, jclass, jlong handle, jfloat x, jfloat y, jfloat z) {
    report(env, OpenView(handle)->setTranslation(x, y, z));
}

jint render(JNIEnv* env, jclass, jlong handle) {
    const OpenView view(handle);
    report(env, view->render());
    return static_cast<jint>(view->texture());
}

void renderInto(JNIEnv* env, jclass, jlong handle, jint texture) {
    const OpenView view(handle);
    Status status = view->render();
    if (status) status = copyPicture(*view, static_cast<GLuint>(texture));
    report(env, status);
}

void readPixels(JNIEnv* env, jclass, jlong handle, jobject buffer, jint position, jint bytes) {
    const OpenView view(handle);
    DirectBytes picture;
    Status status = directBytes(env, "reading the picture", buffer, position, bytes, &picture);
    if (status) status = view->readPixels({picture.data, picture.bytes, view->width(), view->height()});
    report(env, status);
}

jint width(JNIEnv*, jclass, jlong handle) { return OpenView(handle)->width(); }

jint height(JNIEnv*, jclass, jlong handle) { return OpenView(handle)->height(); }

jobject geometry(JNIEnv* env, jclass, jlong handle) {
    const Geometry geometry = OpenView(handle)->geometry();
    const jclass type = env->FindClass("quorvane/parallax/ParallaxGeometry");
    if (type == nullptr) return nullptr;
    const jmethodID constructor = env->GetMethodID(type, "<init>", "(IIIIIFFFF)V");
    if (constructor == nullptr) return nullptr;
    return env->NewObject(type, constructor, geometry.grid_width, geometry.grid_height,
                          geometry.colour_ratio_x, geometry.colour_ratio_y, geometry.block_bytes,
                          static_cast<double>(geometry.half_width), static_cast<double>(geometry.half_height),
                          static_cast<double>(geometry.pivot_distance),
                          static_cast<double>(geometry.still_depth));
}

}  // namespace

// Registered rather than found by name: a method that does not fit the Java half shows when the library
// loads.
extern "C" JNIEXPORT jint JNI_OnLoad(JavaVM* machine, void*) {
    void* env_pointer = nullptr;
    if (machine->GetEnv(&env_pointer, JNI_VERSION_1_6) != JNI_OK) return JNI_ERR;
    JNIEnv* env = static_cast<JNIEnv*>(env_pointer);
    const jclass type = env->FindClass("quorvane/parallax/ParallaxRenderer");
    if (type == nullptr) return JNI_ERR;
    const JNINativeMethod methods[] = {
        nativeMethod<create>("nativeCreate", "(IIIZ)J"),
        nativeMethod<setPhoto>("nativeSetPhoto", "(JIILjava/nio/ByteBuffer;III)V"),
        nativeMethod<setDepth>("nativeSetDepth", "(JIILjava/nio/ByteBuffer;II)V"),
        nativeMethod<parameters>("nativeParameters", "()[Lquorvane/parallax/ParallaxParameter;"),
        nativeMethod<checkParameter>("nativeCheckParameter", "(Ljava/lang/String;D)V"),
        nativeMethod<setParameter>("nativeSetParameter", "(JLjava/lang/String;D)V"),
        nativeMethod<parameter>("nativeParameter", "(JLjava/lang/String;)D"),
        nativeMethod<applyProperties>("nativeApplyProperties", "(JI)V"),
        nativeMethod<resize>("nativeResize", "(JII)V"),
        nativeMethod<lookAt>("nativeLookAt", "(JFF)V"),
        nativeMethod<setAccelerometerData>("nativeSetAccelerometerData", "(JFFF)V"),
        nativeMethod<setRotation>("nativeSetRotation", "(JFFF)V"),
        nativeMethod<setTranslation>("nativeSetTranslation", "(JFFF)V"),
        nativeMethod<render>("nativeRender", "(J)I"),
        nativeMethod<renderInto>("nativeRenderInto", "(JI)V"),
        nativeMethod<readPixels>("nativeReadPixels", "(JLjava/nio/ByteBuffer;II)V"),
        nativeMethod<width>("nativeWidth", "(J)I"),
        nativeMethod<height>("nativeHeight", "(J)I"),
        nativeMethod<geometry>("nativeGeometry", "(J)Lquorvane/parallax/ParallaxGeometry;"),
        nativeMethod<close>("nativeClose", "(J)V"),
    };
    const jint count = sizeof methods / sizeof methods[0];
    if (env->RegisterNatives(type, methods, count) != JNI_OK) return JNI_ERR;
    if (!quorvane::registerFitSizes(env) || !quorvane::registerPicturePlan(env) ||
        !quorvane::registerPortraitPhoto(env))
        return JNI_ERR;
    return JNI_VERSION_1_6;
}
