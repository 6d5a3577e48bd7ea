// ParallaxView on a driver that fails where we want it to.

#include "host_test.h"

namespace quorvane::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class ParallaxViewFault : public ComponentTest {
  protected:
    ParallaxViewFault() {
        gl.strings[GL_VERSION] = "OpenGL ES 2.0 pretended";
        gl.strings[GL_EXTENSIONS] = "GL_OES_element_index_uint GL_OES_depth24";
        gl.integers[GL_MAX_TEXTURE_SIZE] = 4096;
        gl.integers[GL_MAX_RENDERBUFFER_SIZE] = 2048;
        gl.integers[GL_MAX_VIEWPORT_DIMS] = 4096;
        gl.integers[GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS] = 4;
    }

    Status create() {
        const OutputToTimeline output;
        return ParallaxView::create(64, 48, 4, &view);
    }

    template <typename Action>
    std::string said(Action action) {
        const OutputToTimeline output;
        return sentence(action());
    }

    void expectNothingLeft() {
        view.reset();
        EXPECT_THAT(gl.live_textures, IsEmpty());
        EXPECT_THAT(gl.live_renderbuffers, IsEmpty());
        EXPECT_THAT(gl.live_framebuffers, IsEmpty());
        EXPECT_THAT(gl.live_buffers, IsEmpty());
        EXPECT_THAT(gl.live_programs, IsEmpty());
    }

    std::unique_ptr<ParallaxView> view;
    const Bytes photo = Bytes(32 * 32 * 3, 9);
    const Bytes depth = Bytes(32 * 32, 9);
};

TEST_F(ParallaxViewFault, NeedsATextureUnitForVertexShaders) {
    gl.integers[GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS] = 0;
    EXPECT_THAT(sentence(create()), HasSubstr("no texture unit for vertex shaders"));
    EXPECT_EQ(view, nullptr);
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, Needs32BitIndices) {
    gl.strings[GL_EXTENSIONS] = "GL_OES_element_index_uint_not GL_OES_depth24";
    EXPECT_THAT(sentence(create()), HasSubstr("lacks 32-bit element indices"));
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, EsThreeHas32BitIndicesWithoutAnExtension) {
    gl.strings[GL_VERSION] = "OpenGL ES 3.0 pretended";
    gl.strings[GL_EXTENSIONS] = "";
    EXPECT_TRUE(create().ok());
}

TEST_F(ParallaxViewFault, UsesA16BitDepthBufferWhere24AreMissing) {
    gl.strings[GL_EXTENSIONS] = "GL_OES_element_index_uint";
    ASSERT_TRUE(create().ok());
    EXPECT_THAT(timeline.callsOf("glRenderbufferStorage"),
                testing::ElementsAre(HasSubstr("GL_DEPTH_COMPONENT16")));
}

TEST_F(ParallaxViewFault, SmallestLimitBoundsThePicture) {
    ASSERT_TRUE(create().ok());
    EXPECT_EQ(said([&] { return view->resize(2049, 10); }),
              "output: 2049 x 10 pixels; each side must be 1 to 2048");
    EXPECT_EQ(said([&] { return view->setPhoto(4097, 10, photo.data()); }),
              "photo: 4097 x 10 pixels; each side must be 1 to 4096");
}

TEST_F(ParallaxViewFault, ShaderThatDoesNotBuildIsAFailure) {
    gl.compile_result[GL_VERTEX_SHADER] = {GL_FALSE, "no such thing", {}};
    EXPECT_THAT(sentence(create()), HasSubstr("could not build the shader program"));
    EXPECT_EQ(view, nullptr);
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, NamesThatAreNotGeneratedAreAFailure) {
    gl.names_not_generated = true;
    EXPECT_THAT(sentence(create()), HasSubstr("made no texture or depth buffer"));
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, IncompleteFramebufferIsAFailure) {
    gl.framebuffer_status = GL_FRAMEBUFFER_UNSUPPORTED;
    EXPECT_THAT(sentence(create()), HasSubstr("cannot draw into a 64 x 48 texture"));
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, FailedResizeKeepsTheOldPicture) {
    ASSERT_TRUE(create().ok());
    const GLuint texture = view->texture();
    gl.errorAfter("glRenderbufferStorage", GL_OUT_OF_MEMORY);
    EXPECT_EQ(said([&] { return view->resize(100, 100); }), "output: the graphics driver is out of memory");
    EXPECT_EQ(view->texture(), texture);
    EXPECT_EQ(view->width(), 64);
    EXPECT_EQ(view->renderer().m_width, 64.0f);
    EXPECT_THAT(gl.live_textures, testing::ElementsAre(texture));
    EXPECT_EQ(gl.live_renderbuffers.size(), 1u);
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, PhotoThatTheDriverCannotHoldIsUnset) {
    ASSERT_TRUE(create().ok());
    gl.errorAfter("glTexImage2D", GL_OUT_OF_MEMORY);
    EXPECT_EQ(said([&] { return view->setPhoto(32, 32, photo.data()); }),
              "photo: the graphics driver is out of memory");
    EXPECT_EQ(said([&] { return view->render(); }), "nothing to draw: no photo is set");
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, ErrorsOfTheAppAreNotReportedAsOurs) {
    ASSERT_TRUE(create().ok());
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->setPhoto(32, 32, photo.data()); }), "succeeded");
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->setDepth(32, 32, depth.data()); }), "succeeded");
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->render(); }), "succeeded");
}

TEST_F(ParallaxViewFault, FrameThatFailsIsNoPicture) {
    ASSERT_TRUE(create().ok());
    ASSERT_EQ(said([&] { return view->setPhoto(32, 32, photo.data()); }), "succeeded");
    ASSERT_EQ(said([&] { return view->setDepth(32, 32, depth.data()); }), "succeeded");
    gl.errorAfter("glDrawElements", GL_OUT_OF_MEMORY);
    EXPECT_EQ(said([&] { return view->render(); }), "drawing: the graphics driver is out of memory");
    Bytes pixels(64 * 48 * 4);
    EXPECT_THAT(said([&] { return view->readPixels(pixels.data(), pixels.size()); }),
                HasSubstr("no picture"));
}

TEST_F(ParallaxViewFault, PlanesBehindThePhotoAreClearedBeforeItsReduction) {
    ASSERT_TRUE(create().ok());
    ASSERT_EQ(said([&] { return view->setPhoto(32, 32, Bytes(32 * 32 * 3, 255).data()); }), "succeeded");
    ASSERT_EQ(said([&] { return view->setDepth(32, 32, Bytes(32 * 32, 255).data()); }), "succeeded");
    // Grid 8 x 8, four photo pixels a cell: the last output's window takes two pixels past the end, black now
    // and 255 had the depth plane of the first call stayed.
    const auto guide = [&] {
        const ESRenderer& renderer = view->renderer();
        return Bytes(renderer.m_pSmallTextureData, renderer.m_pSmallTextureData + 64);
    };
    const Bytes first = guide();
    ASSERT_EQ(said([&] { return view->setDepth(32, 32, Bytes(32 * 32, 255).data()); }), "succeeded");
    EXPECT_EQ(guide(), first);
}

}  // namespace
}  // namespace quorvane::test
