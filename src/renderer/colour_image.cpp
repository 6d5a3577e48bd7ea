#include <cstdio>
#include <cstring>

#include "diagnostics/QRVNProf.h"
#include "diagnostics/log.h"
#include "diagnostics/ppm_dump.h"
#include "gl/textures.h"
#include "quorvane/esRenderer.h"

void ESRenderer::setTexture(int texWidth, int texHeight, unsigned char* imageData) {
    time_start();
    m_texWidth = texWidth;
    m_texHeight = texHeight;
    LOGD("GL SetTexture(): GenTexture");
    std::memcpy(m_pTextureData, imageData,
                static_cast<size_t>(texWidth) * (static_cast<size_t>(texHeight) * 3));
    time_step("    memcpy input image     ");

    quorvane::gl::replaceTexture(&m_texName);
    LOGD("GL SetTexture(): texImage2D");
    time_step("    gen input texture      ");

    quorvane::gl::uploadPhoto(m_texWidth, m_texHeight, m_pTextureData);
    if (m_debugEnable != 0) {
        LOGD("Dump input image\n");
        char filename[quorvane::kDumpNameSize];
        std::snprintf(filename, sizeof filename, "%sinput.ppm", quorvane::kDumpDirectory);
        _dump_ppm(texWidth, texHeight, filename, reinterpret_cast<unsigned char*>(m_pTextureData),
                  quorvane::kDumpRgb);
    }
    time_step("    glTexImage2D           ");
}

void ESRenderer::setTexture(int texWidth, int texHeight, GLuint textureID) {
    m_texWidth = texWidth;
    m_texHeight = texHeight;
    m_texName = textureID;
    quorvane::gl::flush();
}
