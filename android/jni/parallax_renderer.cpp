// The native half of ParallaxRenderer.java: unpacks what Java gives, calls the view, and throws its sentence
// as a ParallaxException. The Java half has checked the thread, that the renderer is open, and nulls.

#include <jni.h>
#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>

#include <cstring>
#include <new>

#include "copy_picture.h"
#include "current_context.h"
#include "java.h"
#ifdef QUORVANE_PORTRAIT_PHOTO
#include "portrait_photo.h"
#endif

namespace {

using quorvane::copyPicture;
using quorvane::CurrentContext;
using quorvane::Geometry;
using quorvane::nativeMethod;
using quorvane::OffscreenContext;
using quorvane::ParallaxView;
using quorvane::ParameterInfo;
using quorvane::report;
using quorvane::Status;

/// What a Java object's handle points to.
struct Renderer {
    std::unique_ptr<OffscreenContext> own_context;  ///< null where the app's is used; outlives the view
    EGLContext context = EGL_NO_CONTEXT;            ///< the one or the other
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

/// A picture in a direct buffer: `bytes` of it count, from `position` on. The Java half has checked both.
struct Pixels {
    uint8_t* data;
    uint64_t bytes;

    Pixels(JNIEnv* env, jobject buffer, jint position, jint bytes_left)
        : data(static_cast<uint8_t*>(env->GetDirectBufferAddress(buffer)) + position),
          bytes(static_cast<uint64_t>(bytes_left)) {}

    /// Whether width x height pixels are there. Sides below 1 pass, for the view to refuse them.
    Status hold(const char* what, jint width, jint height, int bytes_per_pixel) const {
        if (width < 1 || height < 1) return Status::success();
        // Two sides below 2 to the 31 and 4 bytes a pixel fit into 64 bit.
        const uint64_t needed = static_cast<uint64_t>(width) * static_cast<uint64_t>(height) *
                                static_cast<uint64_t>(bytes_per_pixel);
        if (needed <= bytes) return Status::success();
        return Status::failure(std::string(what) + ": " + std::to_string(width) + " x " +
                               std::to_string(height) + " pixels take " + std::to_string(needed) +
                               " bytes; the buffer has " + std::to_string(bytes) +
                               " from its position to its limit");
    }
};

Status setPhotoRgba(ParallaxView* view, int width, int height, const uint8_t* rgba) {
    if (width < 1 || height < 1) return view->setPhoto(width, height, rgba);
    const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
    const std::unique_ptr<uint8_t[]> rgb(new (std::nothrow) uint8_t[3 * pixels]);
    if (rgb == nullptr)
        return Status::failure("photo: cannot allocate " + std::to_string(3 * pixels) + " bytes");
    for (size_t i = 0; i < pixels; ++i) std::memcpy(&rgb[3 * i], &rgba[4 * i], 3);
    return view->setPhoto(width, height, rgb.get());
}

/// The renderer leaves its two shaders to the context, which outlives many renderers in an app. Deleted while
/// they are attached, they go with the program.
void deleteShadersWithProgram(GLuint program) {
    GLuint shaders[2] = {0, 0};
    GLsizei count = 0;
    glGetAttachedShaders(program, 2, &count, shaders);
    for (GLsizei i = 0; i < count; ++i) glDeleteShader(shaders[i]);
}

jlong create(JNIEnv* env, jclass, jint width, jint height, jint orientation, jboolean offscreen) {
    const CurrentContext before;
    std::unique_ptr<Renderer> renderer(new (std::nothrow) Renderer);
    Status status = renderer != nullptr ? Status::success() : Status::failure("out of memory");
    if (status && offscreen) status = OffscreenContext::create(&renderer->own_context);
    if (status) {
        renderer->context = eglGetCurrentContext();
        status = ParallaxView::create(width, height, static_cast<uint32_t>(orientation), &renderer->view);
    }
    if (status) deleteShadersWithProgram(renderer->view->renderer().m_program);
    report(env, status);
    return status ? reinterpret_cast<intptr_t>(renderer.release()) : 0;
}

void close(JNIEnv*, jclass, jlong handle) {
    const CurrentContext before;
    const std::unique_ptr<Renderer> renderer(rendererOf(handle));
    if (renderer->own_context != nullptr) static_cast<void>(renderer->own_context->makeCurrent());
    // Another context may have objects of its own under the names of the view's.
    if (eglGetCurrentContext() != renderer->context) CurrentContext::release();
    renderer->view.reset();
}

void setPhoto(JNIEnv* env, jclass, jlong handle, jint width, jint height, jobject buffer, jint position,
              jint bytes, jint bytes_per_pixel) {
    const OpenView view(handle);
    const Pixels pixels(env, buffer, position, bytes);
    Status status = pixels.hold("photo", width, height, bytes_per_pixel);
    if (status)
        status = bytes_per_pixel == 4 ? setPhotoRgba(&*view, width, height, pixels.data)
                                      : view->setPhoto(width, height, pixels.data);
    report(env, status);
}

void setDepth(JNIEnv* env, jclass, jlong handle, jint width, jint height, jobject buffer, jint position,
              jint bytes) {
    const OpenView view(handle);
    const Pixels samples(env, buffer, position, bytes);
    Status status = samples.hold("depth map", width, height, 1);
    if (status) status = view->setDepth(width, height, samples.data);
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
    const Pixels pixels(env, buffer, position, bytes);
    report(env, view->readPixels(pixels.data, static_cast<size_t>(pixels.bytes)));
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
        nativeMethod("nativeCreate", "(IIIZ)J", create),
        nativeMethod("nativeSetPhoto", "(JIILjava/nio/ByteBuffer;III)V", setPhoto),
        nativeMethod("nativeSetDepth", "(JIILjava/nio/ByteBuffer;II)V", setDepth),
        nativeMethod("nativeParameters", "()[Lquorvane/parallax/ParallaxParameter;", parameters),
        nativeMethod("nativeSetParameter", "(JLjava/lang/String;D)V", setParameter),
        nativeMethod("nativeParameter", "(JLjava/lang/String;)D", parameter),
        nativeMethod("nativeApplyProperties", "(JI)V", applyProperties),
        nativeMethod("nativeResize", "(JII)V", resize),
        nativeMethod("nativeLookAt", "(JFF)V", lookAt),
        nativeMethod("nativeSetAccelerometerData", "(JFFF)V", setAccelerometerData),
        nativeMethod("nativeSetRotation", "(JFFF)V", setRotation),
        nativeMethod("nativeSetTranslation", "(JFFF)V", setTranslation),
        nativeMethod("nativeRender", "(J)I", render),
        nativeMethod("nativeRenderInto", "(JI)V", renderInto),
        nativeMethod("nativeReadPixels", "(JLjava/nio/ByteBuffer;II)V", readPixels),
        nativeMethod("nativeWidth", "(J)I", width),
        nativeMethod("nativeHeight", "(J)I", height),
        nativeMethod("nativeGeometry", "(J)Lquorvane/parallax/ParallaxGeometry;", geometry),
        nativeMethod("nativeClose", "(J)V", close),
    };
    const jint count = sizeof methods / sizeof methods[0];
    if (env->RegisterNatives(type, methods, count) != JNI_OK) return JNI_ERR;
#ifdef QUORVANE_PORTRAIT_PHOTO
    if (!quorvane::registerPortraitPhoto(env)) return JNI_ERR;
#endif
    return JNI_VERSION_1_6;
}
