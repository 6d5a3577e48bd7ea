#include <type_traits>

#include "support/component_test.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Lifecycle : public ComponentTest {};

static_assert(!std::is_copy_constructible_v<ESRenderer> && !std::is_copy_assignable_v<ESRenderer>);
static_assert(!std::is_move_constructible_v<ESRenderer> && !std::is_move_assignable_v<ESRenderer>);
static_assert(!std::is_polymorphic_v<ESRenderer>);
static_assert(sizeof(VTX_FMT) == 20);

TEST_F(Lifecycle, ConstructionMakesNoGlCallAndSaysNothing) {
    alignas(ESRenderer) unsigned char storage[sizeof(ESRenderer)];
    ESRenderer* renderer = observed([&] { return new (storage) ESRenderer; });
    EXPECT_THAT(timeline.lines(), IsEmpty());
    renderer->~ESRenderer();
}

TEST_F(Lifecycle, DefaultsDoNotDependOnWhatTheMemoryHeld) {
    for (const int fill : {0x00, 0xff, 0xcd}) {
        alignas(ESRenderer) unsigned char storage[sizeof(ESRenderer)];
        for (unsigned char& byte : storage) byte = static_cast<unsigned char>(fill);
        const ESRenderer& r = *new (storage) ESRenderer;
        for (const GLuint name : {r.m_program, r.m_vPositionHandle, r.m_mvpLocHandle, r.m_texLocHandle,
                                  r.m_depthLocHandle, r.m_texCoordHandle, r.m_gridVertexBuf[0],
                                  r.m_gridVertexBuf[1], r.m_fbo, r.m_texName, r.m_depthName})
            EXPECT_EQ(name, 0u);
        for (const GLint number :
             {r.m_padCordXHandle, r.m_zLimitHandle, r.m_vtxW, r.m_vtxH, r.m_texWidth, r.m_texHeight,
              r.m_L_startX, r.m_L_startY, r.m_renderW, r.m_renderH, r.m_eleCount, r.m_maxDepth})
            EXPECT_EQ(number, 0);
        for (const float value :
             {r.m_OBJ_CORD_X, r.m_OBJ_CORD_X2, r.m_accX, r.m_accY, r.m_accZ, r.m_transX, r.m_transY,
              r.m_transZ, r.m_camTransX, r.m_camTransY, r.m_camTransZ, r.m_targetTransX, r.m_targetTransY,
              r.m_targetTransZ, r.m_width, r.m_height, r.m_z_factor})
            EXPECT_EQ(value, 0.0f);
        for (const void* pointer :
             {static_cast<const void*>(r.m_pVtxData), static_cast<const void*>(r.m_pEleData),
              static_cast<const void*>(r.m_triangleVertices), static_cast<const void*>(r.m_pDepthData),
              static_cast<const void*>(r.m_pTextureData), static_cast<const void*>(r.m_pSmallTextureData),
              static_cast<const void*>(r.m_pDenoisedTextureBuf), static_cast<const void*>(r.m_pGFBuf)})
            EXPECT_EQ(pointer, nullptr);
        EXPECT_EQ(r.m_renderCount, 0u);
        EXPECT_EQ(r.m_debugEnable, 0u);
        EXPECT_EQ(r.m_minDepth, 255);
        EXPECT_EQ(r.m_depthContrastWeight, 8);
        EXPECT_EQ(r.m_OBJ_CORD_Y, 18.5f);
        EXPECT_EQ(r.m_baseline, 2.4f);
        EXPECT_EQ(r.m_transStep, 0.1f);
        EXPECT_EQ(r.m_initAccX, -1000.0f);
        EXPECT_EQ(r.m_initAccY, -1000.0f);
        EXPECT_EQ(r.m_initAccZ, -1000.0f);
        EXPECT_EQ(r.mGF.buffer(), nullptr);
        r.~ESRenderer();
    }
}

TEST_F(Lifecycle, FieldsLieInTheirDeclaredOrder) {
    const ESRenderer r;
    const std::vector<const void*> fields = {&r.m_program,
                                             &r.m_vPositionHandle,
                                             &r.m_mvpLocHandle,
                                             &r.m_texLocHandle,
                                             &r.m_depthLocHandle,
                                             &r.m_texCoordHandle,
                                             &r.m_padCordXHandle,
                                             &r.m_zLimitHandle,
                                             &r.m_gridVertexBuf,
                                             &r.m_pVtxData,
                                             &r.m_pEleData,
                                             &r.m_fbo,
                                             &r.m_renderCount,
                                             &r.m_debugEnable,
                                             &r.params,
                                             &r.m_mvpL,
                                             &r.m_mvpR,
                                             &r.m_OBJ_CORD_X,
                                             &r.m_OBJ_CORD_X2,
                                             &r.m_OBJ_CORD_Y,
                                             &r.m_accX,
                                             &r.m_accY,
                                             &r.m_accZ,
                                             &r.m_initAccX,
                                             &r.m_initAccY,
                                             &r.m_initAccZ,
                                             &r.m_transX,
                                             &r.m_transY,
                                             &r.m_transZ,
                                             &r.m_camTransX,
                                             &r.m_camTransY,
                                             &r.m_camTransZ,
                                             &r.m_targetTransX,
                                             &r.m_targetTransY,
                                             &r.m_targetTransZ,
                                             &r.m_transStep,
                                             &r.m_depthContrastWeight,
                                             &r.m_width,
                                             &r.m_height,
                                             &r.m_vtxW,
                                             &r.m_vtxH,
                                             &r.m_texWidth,
                                             &r.m_texHeight,
                                             &r.m_baseline,
                                             &r.m_L_startX,
                                             &r.m_L_startY,
                                             &r.m_renderW,
                                             &r.m_renderH,
                                             &r.m_eleCount,
                                             &r.m_texName,
                                             &r.m_depthName,
                                             &r.m_triangleVertices,
                                             &r.m_pDepthData,
                                             &r.m_pTextureData,
                                             &r.m_pSmallTextureData,
                                             &r.m_pDenoisedTextureBuf,
                                             &r.m_pGFBuf,
                                             &r.m_minDepth,
                                             &r.m_maxDepth,
                                             &r.mGF,
                                             &r.m_z_factor};
    for (size_t i = 1; i < fields.size(); ++i) EXPECT_LT(fields[i - 1], fields[i]) << "field " << i;
}

TEST_F(Lifecycle, UnusedRendererDeletesOnlyTheNames0) {
    observed([] { ESRenderer renderer; });
    EXPECT_THAT(timeline.lines(), ElementsAre("glDeleteTextures(1, {0})", "glDeleteTextures(1, {0})",
                                              "glDeleteFramebuffers(1, {0})", "glDeleteBuffers(2, {0, 0})",
                                              "glDeleteProgram(0)"));
}

TEST_F(Lifecycle, DestructionDeletesDepthPhotoFramebufferBuffersAndProgramInThisOrder) {
    auto renderer = std::make_unique<ESRenderer>();
    renderer->m_depthName = 101;
    renderer->m_texName = 102;
    renderer->m_fbo = 103;
    renderer->m_gridVertexBuf[0] = 104;
    renderer->m_gridVertexBuf[1] = 105;
    renderer->m_program = 106;
    observed([&] { renderer.reset(); });
    EXPECT_THAT(timeline.lines(), ElementsAre("glDeleteTextures(1, {101})", "glDeleteTextures(1, {102})",
                                              "glDeleteFramebuffers(1, {103})",
                                              "glDeleteBuffers(2, {104, 105})", "glDeleteProgram(106)"));
}

TEST_F(Lifecycle, AWholeLifeLeavesOnlyTheShadersAndWhatTheHostOwns) {
    GLuint output = 0;
    glGenTextures(1, &output);
    prepared([&] {
        std::vector<unsigned char> photo(64 * 64 * 3), depth(64 * 64);
        Rig rig(64, 64, 64, 64);
        EXPECT_TRUE(rig.renderer.setupGraphics(64, 64));
        rig.renderer.setupVertices();
        rig.renderer.setTexture(64, 64, photo.data());
        rig.renderer.setDepth(64, 64, depth.data());
        EXPECT_TRUE(rig.renderer.setOutTexture(output));
        rig.renderer.renderFrame();
        rig.renderer.setTexture(64, 64, photo.data());
        rig.renderer.setDepth(64, 64, depth.data());
        rig.renderer.renderFrame();
        EXPECT_EQ(gl.live_textures.size(), 3u);
    });
    EXPECT_THAT(gl.live_textures, ElementsAre(output));
    EXPECT_THAT(gl.live_buffers, IsEmpty());
    EXPECT_THAT(gl.live_framebuffers, IsEmpty());
    EXPECT_THAT(gl.live_programs, IsEmpty());
    EXPECT_EQ(gl.live_shaders.size(), 2u);
}

TEST_F(Lifecycle, TheBlockIsLeftToTheHost) {
    std::vector<unsigned char> block;
    {
        ESRenderer renderer;
        block.assign(static_cast<size_t>(renderer.getRequiredMemSize(8, 8, 32, 32)), 0x3c);
        renderer.assignMem(block.data());
    }
    EXPECT_THAT(block, ::testing::Each(0x3c));
}

}  // namespace
}  // namespace quorvane::test
