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

    replaceTexture(&m_texName);
    LOGD("GL SetTexture(): texImage2D");
    time_step("    gen input texture      ");

    // The unpack alignment in force is the host's business, unlike in the depth upload.
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, m_texWidth, m_texHeight, 0, GL_RGB, GL_UNSIGNED_BYTE,
                 m_pTextureData);
    glFlush();
    if (m_debugEnable != 0) {
        LOGD("Dump input image\n");
        char filename[kDumpNameSize];
        std::snprintf(filename, sizeof filename, "%sinput.ppm", kDumpDirectory);
        _dump_ppm(texWidth, texHeight, filename, reinterpret_cast<unsigned char*>(m_pTextureData), kDumpRgb);
    }
    time_step("    glTexImage2D           ");
}
