#include "diagnostics/QRVNProf.h"
#include "diagnostics/log.h"
#include "gl/error_check.h"
#include "gl/frame.h"
#include "gl/mesh.h"
#include "gl/program.h"
#include "quorvane/esRenderer.h"
#include "view/mesh_extents.h"

namespace gl = quorvane::gl;

GLuint ESRenderer::loadShader(GLenum shaderType, const char* pSource) {
    return gl::loadShader(shaderType, pSource);
}

GLuint ESRenderer::createProgram(const char* pVertexSource, const char* pFragmentSource) {
    return gl::createProgram(pVertexSource, pFragmentSource);
}

bool ESRenderer::setupGraphics(int w, int h) {
    gl::printGLString("Version", GL_VERSION);
    gl::printGLString("Vendor", GL_VENDOR);
    gl::printGLString("Renderer", GL_RENDERER);
    gl::printGLString("Extensions", GL_EXTENSIONS);
    LOGD("setupGraphics(%d, %d)", w, h);

    time_start();
    if (m_program == 0) {
        m_program = createProgram(gVertexShader, gFragmentShader);
        if (m_program == 0) {
            LOGE("Could not create program.");
            return false;
        }
        time_step("    create shader          ");

        m_vPositionHandle = gl::attributeLocation(m_program, "vPosition");
        m_texCoordHandle = gl::attributeLocation(m_program, "a_texCoord");
        m_mvpLocHandle = gl::uniformLocation(m_program, "mvp");
        m_texLocHandle = gl::uniformLocation(m_program, "s_texture");
        m_depthLocHandle = gl::uniformLocation(m_program, "depthMap");
        time_step("    get uniform            ");

        gl::replaceFramebuffer(&m_fbo);
        time_step("    gen fbo                ");
    }

    m_width = static_cast<float>(w);
    m_height = static_cast<float>(h);
    gl::setViewport(w, h);

    const quorvane::MeshExtents extents = quorvane::meshExtents(m_width, m_height, m_OBJ_CORD_Y, m_baseline);
    LOGD("unit2pix = %d\n", extents.unit_pixels);
    LOGD("dc = %d\n", extents.disparity);
    LOGD("dispz= %d\n", extents.shift);
    LOGD("CROPPING= %d\n", extents.cropping);
    m_L_startX = -extents.cropping;
    m_L_startY = 0;
    m_OBJ_CORD_X = extents.half_width;
    m_OBJ_CORD_X2 = extents.second_half_width;
    m_renderW = static_cast<int>(m_width + static_cast<float>(extents.cropping));
    m_renderH = static_cast<int>(m_height);
    LOGD("m_OBJ_CORD_X: %f, m_OBJ_CORD_X2: %f, m_OBJ_CORD_Y: %f", static_cast<double>(m_OBJ_CORD_X),
         static_cast<double>(m_OBJ_CORD_X2), static_cast<double>(m_OBJ_CORD_Y));

    gl::provideBuffers(m_gridVertexBuf);
    time_step("    init variable              ");
    return true;
}
