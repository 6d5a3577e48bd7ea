#include "apps/quorvane/drawing/frame_reader.h"

#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

#include "system/error.h"

namespace quorvane::app {

FrameReader::FrameReader(const OffscreenContext& share, Size size,
                         std::function<void(int, const Copy&)> deliver)
    : m_size(size), m_deliver(std::move(deliver)) {
    try {
        m_thread = std::thread(&FrameReader::work, this, std::cref(share));
    } catch (const std::system_error& failed) {
        m_fault = "no thread can be started (" + failed.code().message() + ")";
        return;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_opened; });
}

FrameReader::~FrameReader() { end(); }

void FrameReader::read(int number, GLuint texture) {
    std::unique_lock<std::mutex> lock(m_mutex);
    // A signal needs no wake-up of its own: it ends the delivery that this waits for.
    m_changed.wait(lock, [this] { return !m_reading; });
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
    m_number = number;
    m_texture = texture;
    m_reading = true;
    m_changed.notify_all();
}

void FrameReader::finish() {
    end();
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
}

void FrameReader::end() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable()) m_thread.join();
}

void FrameReader::work(const OffscreenContext& share) {
    std::unique_ptr<OffscreenContext> context;
    const Status opened = OffscreenContext::create(&context, &share);
    GLuint framebuffer = 0;
    if (opened) {
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    m_fault = opened.message();
    m_opened = true;
    m_changed.notify_all();
    if (!opened) return;
    for (;;) {
        m_changed.wait(lock, [this] { return m_ending || m_reading; });
        if (!m_reading) break;
        lock.unlock();
        std::exception_ptr failure;
        try {
            m_deliver(m_number, [this](media::RgbaImage* picture) { copy(m_texture, picture); });
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        m_failure = failure;
        m_reading = false;
        m_changed.notify_all();
        if (m_failure != nullptr) break;
    }
    glDeleteFramebuffers(1, &framebuffer);
}

void FrameReader::copy(GLuint texture, media::RgbaImage* picture) const {
    if (picture->samples.empty()) *picture = media::RgbaImage(m_size.width, m_size.height);
    // Attached anew each time, or what the other context has drawn since need not show in this one.
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    glReadPixels(0, 0, m_size.width, m_size.height, GL_RGBA, GL_UNSIGNED_BYTE, picture->samples.data());
    const GLenum error = glGetError();
    if (error == GL_NO_ERROR) return;
    char text[80];
    std::snprintf(text, sizeof text, "reading the picture: the graphics driver reports error 0x%04x", error);
    throw Error(text);
}

}  // namespace quorvane::app
