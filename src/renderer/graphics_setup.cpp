#include "diagnostics/QRVNProf.h"
#include "diagnostics/log.h"
#include "gl/error_check.h"
#include "gl/program.h"
#include "quorvane/esRenderer.h"

namespace {

// Close to 2 tan(30 degrees); the geometry of the mesh is defined with this value.
constexpr double kTwiceTan30 = 1.1547005145615656;

}  // namespace

bool ESRenderer::setupGraphics(int w, int h) {
    printGLString("Version", GL_VERSION);
    printGLString("Vendor", GL_VENDOR);
    printGLString("Renderer", GL_RENDERER);
    printGLString("Extensions", GL_EXTENSIONS);
    LOGD("setupGraphics(%d, %d)", w, h);

    time_start();
    if (m_program == 0) {
        m_program = createProgram(gVertexShader, gFragmentShader);
        if (m_program == 0) {
            LOGE("Could not create program.");
            return false;
        }
        time_step("    create shader          ");

        // A location of -1 is kept as it comes and is no error: the frame goes on without that input.
        const auto attribute = [this](const char* name, const char* format) {
            const GLint location = glGetAttribLocation(m_program, name);
            checkGlError("glGetAttribLocation");
            LOGD(format, location);
            return static_cast<GLuint>(location);
        };
        const auto uniform = [this](const char* name, const char* format) {
            const GLint location = glGetUniformLocation(m_program, name);
            checkGlError("glGetUniformLocation");
            LOGD(format, location);
            return static_cast<GLuint>(location);
        };
        m_vPositionHandle = attribute("vPosition", "glGetAttribLocation(\"vPosition\") = %d\n");
        m_texCoordHandle = attribute("a_texCoord", "glGetAttribLocation(\"a_texCoord\") = %d\n");
        m_mvpLocHandle = uniform("mvp", "glGetUniformLocation(\"mvp\") = %d\n");
        m_texLocHandle = uniform("s_texture", "glGetUniformLocation(\"s_texture\") = %d\n");
        m_depthLocHandle = uniform("depthMap", "glGetUniformLocation(\"depthMap\") = %d\n");
        time_step("    get uniform            ");

        if (m_fbo != 0) glDeleteFramebuffers(1, &m_fbo);
        glGenFramebuffers(1, &m_fbo);
        glBindFramebuffer(GL_FRAMEBUFFER, m_fbo);
        time_step("    gen fbo                ");
    }

    m_width = static_cast<float>(w);
    m_height = static_cast<float>(h);
    glViewport(0, 0, w, h);
    checkGlError("glViewport");

    // Float and double, and every truncation, as the extents were tuned with: hosts compare them bit by bit.
    const double baseline = m_baseline;
    const int unit2pix = static_cast<int>(m_width / (static_cast<double>(m_width / m_height) * kTwiceTan30));
    LOGD("unit2pix = %d\n", unit2pix);
    const int dc = static_cast<int>(baseline * 0.03125 * unit2pix);
    LOGD("dc = %d\n", dc);
    const int dispz = static_cast<int>(dc - unit2pix * (baseline * 0.015625));
    LOGD("dispz= %d\n", dispz);
    const int cropping = dispz + static_cast<int>(0.5 + unit2pix * (baseline * 0.5) * 0.03125);
    LOGD("CROPPING= %d\n", cropping);
    m_L_startX = -cropping;
    m_L_startY = 0;

    const double shift = 32.0 * static_cast<double>(static_cast<float>(dispz) / static_cast<float>(unit2pix));
    const float base = m_OBJ_CORD_Y * m_width / m_height;
    m_OBJ_CORD_X = static_cast<float>(static_cast<double>(base) + shift);
    m_OBJ_CORD_X2 = static_cast<float>(static_cast<double>(base) - shift);
    m_renderW = static_cast<int>(m_width + static_cast<float>(cropping));
    m_renderH = static_cast<int>(m_height);
    LOGD("m_OBJ_CORD_X: %f, m_OBJ_CORD_X2: %f, m_OBJ_CORD_Y: %f", static_cast<double>(m_OBJ_CORD_X),
         static_cast<double>(m_OBJ_CORD_X2), static_cast<double>(m_OBJ_CORD_Y));

    if (m_gridVertexBuf[0] == 0 || m_gridVertexBuf[1] == 0) glGenBuffers(2, m_gridVertexBuf);
    time_step("    init variable              ");
    return true;
}
