#include "gl/error_check.h"

#include "support/component_test.h"

namespace quorvane::test {
namespace {

using quorvane::gl::checkGlError;
using quorvane::gl::printGLString;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class GlCheck : public ComponentTest {};

TEST_F(GlCheck, WithoutAnErrorNothingIsLogged) {
    checkGlError("glClear");
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(timeline.calls(), ElementsAre("glGetError()"));
}

TEST_F(GlCheck, EveryPendingErrorIsLoggedInOrderAndCleared) {
    gl.queueError(GL_INVALID_OPERATION);
    gl.queueError(GL_INVALID_ENUM);
    checkGlError("glUseProgram");
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("after glUseProgram() glError (0x502)\n"),
                                         debugLine("after glUseProgram() glError (0x500)\n")));
    EXPECT_EQ(gl.pendingErrors(), 0u);
}

TEST_F(GlCheck, ErrorsAreReadUntilNoneIsLeft) {
    gl.queueError(GL_OUT_OF_MEMORY);
    checkGlError("x");
    EXPECT_THAT(timeline.lines(),
                ElementsAre("glGetError()", "D after x() glError (0x505)\n", "glGetError()"));
}

TEST_F(GlCheck, StringIsLoggedUnderItsName) {
    gl.strings[GL_VENDOR] = "someone";
    printGLString("Vendor", GL_VENDOR);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("GL Vendor = someone\n")));
    EXPECT_THAT(timeline.calls(), ElementsAre("glGetString(GL_VENDOR)"));
}

TEST_F(GlCheck, StringThatGlDoesNotGiveIsLoggedAsNull) {
    gl.strings.clear();
    printGLString("Version", GL_VERSION);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("GL Version = (null)\n")));
}

TEST_F(GlCheck, LongStringIsLoggedWhole) {
    const std::string extensions(5000, 'e');
    gl.strings[GL_EXTENSIONS] = extensions;
    printGLString("Extensions", GL_EXTENSIONS);
    EXPECT_THAT(log.texts(), ElementsAre("GL Extensions = " + extensions + "\n"));
}

}  // namespace
}  // namespace quorvane::test
