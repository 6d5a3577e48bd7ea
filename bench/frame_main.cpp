// bench_frame: renderFrame and the same GL calls without it, alternately, in one process and context.
// Prints "driver NAME" and for each size "frame WIDTH HEIGHT SECONDS BARE_SECONDS RATIO PAIRS SAME_PICTURE".

#define EGL_EGLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <optional>
#include <vector>

#include "content.h"
#include "drawing.h"
#include "quorvane/esRenderer.h"
#include "quorvane/host/OffscreenContext.h"
#include "render_target.h"

namespace quorvane::bench {
namespace {

constexpr int kPhotoWidth = 2048, kPhotoHeight = 1536;
constexpr int kDepthWidth = 1024, kDepthHeight = 768;
constexpr int kPositions = 16;

double wallSeconds() { return seconds(CLOCK_MONOTONIC); }

/// A renderer with a scene, an output texture and a depth buffer.
class Scene {
  public:
    Scene(int width, int height) : m_width(width), m_height(height) {
        m_renderer.getProperties(4);
        const int bytes = m_renderer.getRequiredMemSize(kPhotoWidth, kPhotoHeight, kDepthWidth, kDepthHeight);
        m_block.resize(static_cast<size_t>(bytes));
        m_renderer.assignMem(m_block.data());
        m_renderer.setupGraphics(width, height);
        m_renderer.setupVertices();
        m_renderer.setTexture(kPhotoWidth, kPhotoHeight, scenePhoto(kPhotoWidth, kPhotoHeight).data());
        m_renderer.setDepth(kDepthWidth, kDepthHeight, sceneDepth(kDepthWidth, kDepthHeight).data());
        m_target.emplace(&m_renderer, width, height);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    void lookAt(int position) {
        const float part = static_cast<float>(position % kPositions) / kPositions;
        m_renderer.setRotation(part * static_cast<float>(m_width), (1 - part) * static_cast<float>(m_height),
                               0);
    }
    void draw() { m_renderer.renderFrame(); }
    const RENDERMatrix& matrix() const { return m_renderer.m_mvpL; }

    /// The calls of ESRenderer::renderFrame, in its order.
    void drawBare(const RENDERMatrix& matrix) const {
        const ESRenderer& r = m_renderer;
        glUseProgram(r.m_program);
        glGetError();
        glViewport(0, 0, m_width, m_height);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        glDepthMask(GL_TRUE);
        glClearColor(0, 0, 0, 1);
        glGetError();
        glClearDepthf(1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glGetError();
        glUniformMatrix4fv(static_cast<GLint>(r.m_mvpLocHandle), 1, GL_FALSE, &matrix.mat[0][0]);
        glGetError();
        glActiveTexture(GL_TEXTURE1);
        glUniform1i(static_cast<GLint>(r.m_texLocHandle), 1);
        glBindTexture(GL_TEXTURE_2D, r.m_texName);
        glBindBuffer(GL_ARRAY_BUFFER, r.m_gridVertexBuf[0]);
        glEnableVertexAttribArray(r.m_vPositionHandle);
        glGetError();
        glVertexAttribPointer(r.m_vPositionHandle, 3, GL_FLOAT, GL_FALSE, sizeof(VTX_FMT), nullptr);
        glGetError();
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, r.m_gridVertexBuf[1]);
        glEnableVertexAttribArray(r.m_texCoordHandle);
        glVertexAttribPointer(r.m_texCoordHandle, 2, GL_FLOAT, GL_FALSE, sizeof(VTX_FMT),
                              reinterpret_cast<const void*>(offsetof(VTX_FMT, u)));
        glGetError();
        glActiveTexture(GL_TEXTURE2);
        glUniform1i(static_cast<GLint>(r.m_depthLocHandle), 2);
        glBindTexture(GL_TEXTURE_2D, r.m_depthName);
        glBindFramebuffer(GL_FRAMEBUFFER, r.m_fbo);
        glDrawElements(GL_TRIANGLES, r.m_eleCount, GL_UNSIGNED_INT, nullptr);
        EGLDisplay display = eglGetCurrentDisplay();
        EGLSyncKHR fence = eglCreateSyncKHR(display, EGL_SYNC_FENCE_KHR, nullptr);
        eglClientWaitSyncKHR(display, fence, 0, EGL_FOREVER_KHR);
        eglDestroySyncKHR(display, fence);
        GLubyte pixel[4];
        glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    }

    Bytes picture() const {
        Bytes rgba(size_t{4} * static_cast<size_t>(m_width) * static_cast<size_t>(m_height));
        glReadPixels(0, 0, m_width, m_height, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        return rgba;
    }

  private:
    int m_width;
    int m_height;
    Bytes m_block;
    ESRenderer m_renderer;
    std::optional<RenderTarget> m_target;
};

template <typename Draw>
double wallTimeOf(const Draw& draw) {
    const double start = wallSeconds();
    draw();
    return wallSeconds() - start;
}

void measure(int width, int height, double seconds, FILE* out) {
    Scene scene(width, height);
    std::vector<RENDERMatrix> matrices;
    bool same = true;
    for (int position = 0; position < kPositions; ++position) {
        scene.lookAt(position);
        scene.draw();
        matrices.push_back(scene.matrix());
        const Bytes drawn = scene.picture();
        scene.drawBare(matrices.back());
        same = same && drawn == scene.picture();
    }

    constexpr int kFewestPairs = 15;
    std::vector<double> ours, bare, ratios;
    const double end = wallSeconds() + seconds;
    for (int pair = 0; pair < kFewestPairs || wallSeconds() < end; ++pair) {
        const RENDERMatrix& matrix = matrices[static_cast<size_t>(pair % kPositions)];
        scene.lookAt(pair);
        const auto draw = [&] { ours.push_back(wallTimeOf([&] { scene.draw(); })); };
        const auto drawBare = [&] { bare.push_back(wallTimeOf([&] { scene.drawBare(matrix); })); };
        // Whoever comes second finds the photo in the caches.
        if (pair % 2 == 0) {
            draw();
            drawBare();
        } else {
            drawBare();
            draw();
        }
        ratios.push_back(ours.back() / bare.back());
    }
    std::fprintf(out, "frame %d %d %.9f %.9f %.5f %d %d\n", width, height, median(ours), median(bare),
                 median(ratios), static_cast<int>(ratios.size()), same ? 1 : 0);
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    FILE* const out = quorvane::bench::figuresOutput();
    if (out == nullptr) return 1;

    std::unique_ptr<quorvane::OffscreenContext> context;
    const quorvane::Status status = quorvane::OffscreenContext::create(&context);
    if (!status) {
        std::fprintf(stderr, "bench_frame: %s\n", status.message().c_str());
        return 0;
    }
    std::fprintf(out, "driver %s\n", reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    constexpr int kSizes[][2] = {{480, 270}, {1080, 1920}, {1920, 1080}};
    for (const auto& size : kSizes) quorvane::bench::measure(size[0], size[1], quick ? 2 : 10, out);
    std::fclose(out);
    return 0;
}
