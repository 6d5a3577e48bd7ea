package quorvane.parallax;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.function.Consumer;

/** Every public method is a test and runs on a thread of its own. */
final class ParallaxRendererTest {
    /** Where expected_pictures has written. */
    static String folder;

    private static final String WRONG_THREAD =
            "called from another thread than the one that created the renderer";
    private static final String NOT_CURRENT =
            "the OpenGL ES context that created the view is not current";
    private static final String NO_CONTEXT = "no OpenGL ES context is current on this thread";
    private static final byte MARKER = 99;

    // Pictures.

    public void picturesAreThoseOfTheHostByteForByte() {
        try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(160, 120, 4)) {
            checkPictures(renderer);
        }
    }

    public void picturesInTheAppsContextAreTheSame() {
        final long context = TestGl.context();
        try (ParallaxRenderer renderer = ParallaxRenderer.create(160, 120, 4)) {
            checkPictures(renderer);
        }
        same(context, TestGl.current(), "the app's context is still current");
        TestGl.release();
        TestGl.destroy(context);
    }

    /** The calls of expected_pictures. */
    private static void checkPictures(ParallaxRenderer renderer) {
        renderer.setPhoto(320, 240, file("photo.rgb"));
        renderer.setDepth(160, 120, file("depth.gray"));
        renderer.lookAt(0.5f, -0.25f);
        renderer.render();
        samePicture("looked.rgba", renderer);

        renderer.setParameter("fov_scale", 0.6);
        renderer.setParameter("rotate_x_boundary", -20.0);
        renderer.setParameter("depth_contrast", 10.0);
        renderer.setDepth(160, 120, file("depth.gray"));
        renderer.resize(161, 119);
        renderer.setRotation(20.0f, 100.0f, 0.0f);
        renderer.setAccelerometerData(7.0f, -3.0f, 1.0f);
        renderer.setTranslation(1.0f, 2.0f, 3.0f);
        renderer.render();
        samePicture("tuned.rgba", renderer);

        renderer.applyProperties(0);
        renderer.setDepth(160, 120, file("depth.gray"));
        renderer.render();
        samePicture("turned.rgba", renderer);
    }

    public void theFourthByteOfAPixelIsDropped() {
        final ByteBuffer rgb = file("photo.rgb");
        final ByteBuffer rgba = ByteBuffer.allocateDirect(320 * 240 * 4);
        for (int i = 0; rgb.hasRemaining(); ++i) {
            rgba.put(rgb.get()).put(rgb.get()).put(rgb.get()).put((byte) i);
        }
        rgba.flip();
        try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(160, 120, 4)) {
            renderer.setPhotoRgba(320, 240, rgba);
            renderer.setDepth(160, 120, file("depth.gray"));
            renderer.lookAt(0.5f, -0.25f);
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    public void whatLiesBetweenPositionAndLimitCounts() {
        try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(160, 120, 4)) {
            final ByteBuffer photo = inside(file("photo.rgb"), 5, 3);
            final ByteBuffer depth = inside(file("depth.gray"), 1, 0);
            renderer.setPhoto(320, 240, photo);
            renderer.setDepth(160, 120, depth.slice().asReadOnlyBuffer());
            same(5, photo.position(), "the position");
            same(5 + 320 * 240 * 3, photo.limit(), "the limit");
            renderer.lookAt(0.5f, -0.25f);
            renderer.render();

            final int bytes = 160 * 120 * 4;
            final ByteBuffer picture = marked(bytes + 20);
            picture.position(7).limit(7 + bytes);
            renderer.readPixels(picture);
            same(7, picture.position(), "the position");
            same(7 + bytes, picture.limit(), "the limit");
            same(file("looked.rgba"), picture.slice(), "the picture");
            picture.clear();
            for (int i = 0; i < picture.limit(); ++i) {
                check(
                        (i >= 7 && i < 7 + bytes) || picture.get(i) == MARKER,
                        "byte " + i + " is not the picture's and was written");
            }
        }
    }

    public void theTextureNamedHoldsThePicture() {
        TestGl.context();
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.create(160, 120, 4))) {
            final int texture = renderer.render();
            same(file("looked.rgba"), TestGl.read(texture, 160, 120), "the texture");
        }
    }

    public void thePictureIsDrawnIntoTheAppsTexture() {
        TestGl.context();
        final int texture = TestGl.texture(160, 120);
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.create(160, 120, 4))) {
            renderer.renderInto(texture);
            same(file("looked.rgba"), TestGl.read(texture, 160, 120), "the app's texture");
            samePicture("looked.rgba", renderer);
            renderer.lookAt(0.0f, 0.0f);
            renderer.renderInto(texture);
            check(
                    !Arrays.equals(bytes(file("looked.rgba")), TestGl.read(texture, 160, 120)),
                    "the second picture has not come");
        }
        same(true, TestGl.isTexture(texture), "the app keeps its texture");
    }

    public void ofALargerTextureTheFirstRowsAndColumnsAreWritten() {
        TestGl.context();
        final int texture = TestGl.texture(200, 130);
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.create(160, 120, 4))) {
            renderer.renderInto(texture);
        }
        final byte[] pixels = TestGl.read(texture, 200, 130);
        final byte[] picture = bytes(file("looked.rgba"));
        for (int i = 0; i < pixels.length; ++i) {
            final int column = i / 4 % 200;
            final int row = i / 4 / 200;
            final boolean inside = column < 160 && row < 120;
            same(
                    inside ? picture[(row * 160 + column) * 4 + i % 4] : MARKER,
                    pixels[i],
                    "byte " + i);
        }
    }

    public void texturesThatCannotHoldThePictureAreRefused() {
        TestGl.context();
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.create(160, 120, 4))) {
            refused(
                    "texture 0 is none of this context, or was never bound",
                    () -> renderer.renderInto(0));
            final int unbound = TestGl.nameOnly();
            refused(
                    "texture " + unbound + " is none of this context, or was never bound",
                    () -> renderer.renderInto(unbound));
            refused(
                    "texture 4294967295 is none of this context, or was never bound",
                    () -> renderer.renderInto(-1));
            final int cube = TestGl.cube();
            refused(
                    "texture " + cube + " is not a 2D texture", () -> renderer.renderInto(cube));
            for (int texture : new int[] {TestGl.texture(0, 0), TestGl.texture(160, 119)}) {
                refused(
                        "texture "
                                + texture
                                + " has no RGBA or RGB image of 160 x 120 pixels or more",
                        () -> renderer.renderInto(texture));
            }
            final int own = renderer.render();
            refused(
                    "texture " + own + " belongs to the renderer; give one of the app's",
                    () -> renderer.renderInto(own));
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    // Images and sizes that do not do.

    public void nullsAndArraysAreNoImages() {
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.createOffscreen(160, 120, 4))) {
            renderer.render();
            final ByteBuffer array = ByteBuffer.allocate(320 * 240 * 4);
            final Map<String, Consumer<ByteBuffer>> calls = new LinkedHashMap<>();
            calls.put("photo", buffer -> renderer.setPhoto(320, 240, buffer));
            calls.put("depth map", buffer -> renderer.setDepth(160, 120, buffer));
            calls.put("reading the picture", renderer::readPixels);
            calls.forEach(
                    (what, call) -> {
                        refused(what + ": no buffer given", () -> call.accept(null));
                        refused(
                                what
                                        + ": the buffer is not direct; ByteBuffer.allocateDirect"
                                        + " makes one",
                                () -> call.accept(array));
                    });
            refused("photo: no buffer given", () -> renderer.setPhotoRgba(320, 240, null));
            refused("parameter: no name given", () -> renderer.setParameter(null, 1.0));
            refused("parameter: no name given", () -> renderer.parameter(null));
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    public void aBufferOneByteTooSmallIsRefused() {
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.createOffscreen(160, 120, 4))) {
            renderer.render();
            refused(
                    "photo: 320 x 240 pixels take 230400 bytes; 230399 are given",
                    () -> renderer.setPhoto(320, 240, inside(direct(230400), 1, -1)));
            refused(
                    "photo: 320 x 240 pixels take 307200 bytes; 307199 are given",
                    () -> renderer.setPhotoRgba(320, 240, direct(307199)));
            refused(
                    "depth map: 160 x 120 pixels take 19200 bytes; 19199 are given",
                    () -> renderer.setDepth(160, 120, direct(19199)));
            refused(
                    "reading the picture: 160 x 120 pixels take 76800 bytes; 76799 are given",
                    () -> renderer.readPixels(direct(76799)));
            refused(
                    "reading the picture: the buffer is read-only",
                    () -> renderer.readPixels(direct(76800).asReadOnlyBuffer()));
            refused(
                    "photo: 1 x 1 pixels take 3 bytes; 0 are given",
                    () -> renderer.setPhoto(1, 1, direct(0)));
            // Products beyond 32 and 63 bit.
            refused(
                    "photo: 65536 x 65536 pixels; each side must be 1 to 16384",
                    () -> renderer.setPhoto(65536, 65536, direct(64)));
            refused(
                    "photo: 2147483647 x 2147483647 pixels; each side must be 1 to 16384",
                    () ->
                            renderer.setPhotoRgba(
                                    Integer.MAX_VALUE, Integer.MAX_VALUE, direct(64)));
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    public void aBufferWithoutMemoryIsRefused() {
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.createOffscreen(160, 120, 4))) {
            final ByteBuffer nowhere = TestGl.nowhere(400000);
            nowhere.position(5);
            renderer.render();
            final String otherwise = ": native code cannot reach the buffer's memory";
            refused("photo" + otherwise, () -> renderer.setPhoto(320, 240, nowhere));
            refused("photo" + otherwise, () -> renderer.setPhotoRgba(320, 240, nowhere));
            refused("depth map" + otherwise, () -> renderer.setDepth(160, 120, nowhere));
            refused("reading the picture" + otherwise, () -> renderer.readPixels(nowhere));
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    /** Each allocation of a renderer's whole life fails once; nothing but a sentence comes of it. */
    public void memoryThatRunsOutIsASentence() {
        // The library has to be loaded.
        ParallaxRenderer.parameters();
        int calls = 0;
        boolean failed = true;
        for (; failed; ++calls) {
            ScarceMemory.failAfter(calls);
            try (ParallaxRenderer renderer = ready(ParallaxRenderer.createOffscreen(160, 120, 4))) {
                renderer.render();
                renderer.resize(161, 119);
                try {
                    renderer.setParameter("no such parameter", 1.0);
                    throw new AssertionError("an unknown parameter was taken");
                } catch (ParallaxException expected) {
                    check(!expected.getMessage().isEmpty(), "a sentence");
                }
                renderer.parameter("fov_scale");
                ParallaxRenderer.parameters();
                renderer.geometry();
            } catch (ParallaxException scarce) {
                check(!scarce.getMessage().isEmpty(), "a sentence");
            }
            failed = ScarceMemory.hasFailed();
        }
        check(calls > 20, "only " + calls + " allocations were tried");
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.createOffscreen(160, 120, 4))) {
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    public void sizesThatMakeNoImageAreRefused() {
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.createOffscreen(160, 120, 4))) {
            final ByteBuffer buffer = direct(400000);
            for (int[] sides : new int[][] {{0, 5}, {5, 0}, {-3, 5}, {-3, -3}, {400000, 0}}) {
                final String size = sides[0] + " x " + sides[1];
                final String photo = "photo: " + size + " pixels; each side must be 1 to ";
                refusedFrom(photo, () -> renderer.setPhoto(sides[0], sides[1], buffer));
                refusedFrom(photo, () -> renderer.setPhotoRgba(sides[0], sides[1], buffer));
                refusedFrom(
                        "depth map: " + size + " pixels; each side must be 4 to ",
                        () -> renderer.setDepth(sides[0], sides[1], buffer));
                final String output = "output: " + size + " pixels; each side must be 1 to ";
                refusedFrom(output, () -> renderer.resize(sides[0], sides[1]));
                refusedFrom(
                        output, () -> ParallaxRenderer.createOffscreen(sides[0], sides[1], 4));
            }
            refusedFrom(
                    "photo: 100000 x 1 pixels; each side must be 1 to ",
                    () -> renderer.setPhoto(100000, 1, buffer));
            refusedFrom(
                    "output: 2147483647 x 2147483647 pixels; each side must be 1 to ",
                    () -> renderer.resize(Integer.MAX_VALUE, Integer.MAX_VALUE));
            refused(
                    "depth map: 100 x 120 makes a grid of 25 x 30 cells, and the 320 x 240 photo"
                            + " is not 1, 2, 4, 8, 16 or 32 times that",
                    () -> renderer.setDepth(100, 120, buffer));
            same(160, renderer.width(), "the width");
            same(120, renderer.height(), "the height");
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    public void stepsLeftOutAreNamed() {
        try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(160, 120, 4)) {
            refused("nothing to draw: no photo is set", renderer::render);
            refused("nothing to draw: no photo is set", () -> renderer.renderInto(1));
            refused(
                    "depth map: set the photo first",
                    () -> renderer.setDepth(160, 120, file("depth.gray")));
            renderer.setPhoto(320, 240, file("photo.rgb"));
            refused("nothing to draw: no depth map is set for this photo", renderer::render);
            refused(
                    "no picture of this size has been drawn yet",
                    () -> renderer.readPixels(direct(160 * 120 * 4)));
        }
    }

    public void samplesMustBeFinite() {
        try (ParallaxRenderer renderer = ready(ParallaxRenderer.createOffscreen(160, 120, 4))) {
            final String view = "view position: not a finite number";
            final String sample = "motion sample: not a finite number";
            for (float odd : new float[] {Float.NaN, Float.POSITIVE_INFINITY}) {
                refused(view, () -> renderer.lookAt(odd, 0));
                refused(view, () -> renderer.lookAt(0, odd));
                refused(sample, () -> renderer.setAccelerometerData(0, odd, 0));
                refused(sample, () -> renderer.setRotation(odd, 0, 0));
                refused(sample, () -> renderer.setTranslation(0, 0, odd));
            }
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    // Parameters and geometry.

    public void theParametersAreListedInTheirOrder() {
        final List<ParallaxParameter> all = ParallaxRenderer.parameters();
        final StringBuilder names = new StringBuilder();
        all.forEach(parameter -> names.append(parameter.name).append(' '));
        same(
                "rotate_z_trans rotate_x_boundary rotate_y_boundary trans_to_rotate_scale"
                        + " far_offset_ext z_post_offset guided_filter_rx guided_filter_ry"
                        + " guided_filter_eps depth_contrast border_deadzone fov_scale offset_gain"
                        + " offset_len ",
                names.toString(),
                "the names");
        final ParallaxParameter radius = all.get(6);
        same(true, radius.integer, "whole numbers");
        same(0.0, radius.minimum, "the minimum");
        same(1024.0, radius.maximum, "the maximum");
        same(ParallaxParameter.TakesEffect.NEXT_DEPTH, radius.takesEffect, "when it shows");
        same("depth smoothing radius in grid cells, horizontal", radius.meaning, "its meaning");
        same(false, all.get(11).integer, "whole numbers");
        same(0.05, all.get(11).minimum, "the minimum");
        same(ParallaxParameter.TakesEffect.EACH_FRAME, all.get(11).takesEffect, "when it shows");
        same(ParallaxParameter.TakesEffect.NEXT_MOTION, all.get(10).takesEffect, "when it shows");
        same(ParallaxParameter.TakesEffect.NEVER, all.get(5).takesEffect, "when it shows");
    }

    public void aParameterTakesItsRangeAndNothingElse() {
        try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(16, 16, 4)) {
            for (ParallaxParameter parameter : ParallaxRenderer.parameters()) {
                for (double value : new double[] {parameter.minimum, parameter.maximum}) {
                    renderer.setParameter(parameter.name, value);
                    same((double) (float) value, renderer.parameter(parameter.name), "the value");
                }
                final double below = parameter.minimum - 1.0;
                final double above = parameter.maximum + 1.0;
                for (double value : new double[] {below, above, Double.NaN}) {
                    refusedFrom(
                            parameter.name + ": ",
                            () -> renderer.setParameter(parameter.name, value));
                }
                same(
                        (double) (float) parameter.maximum,
                        renderer.parameter(parameter.name),
                        "the value");
            }
            refused(
                    "guided_filter_rx: 1.5 is not a whole number from 0 to 1024",
                    () -> renderer.setParameter("guided_filter_rx", 1.5));
        }
    }

    public void anUnknownParameterIsRefused() {
        try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(16, 16, 4)) {
            // Characters of two, three and four bytes in UTF-8, and one that ends a C string.
            final String[] names = {"", "fov", "\u00e4\u20ac\ud83d\ude00", "fov_scale\0"};
            for (String name : names) {
                final String sentence =
                        "unknown parameter '" + name + "'; known are rotate_z_trans, ";
                refusedFrom(sentence, () -> renderer.setParameter(name, 1.0));
                refusedFrom(sentence, () -> renderer.parameter(name));
            }
        }
    }

    public void theOrientationChoosesTheTunedSet() {
        try (ParallaxRenderer first = ParallaxRenderer.createOffscreen(16, 16, 7);
                ParallaxRenderer second = ParallaxRenderer.createOffscreen(16, 16, -1)) {
            same(40.0, first.parameter("rotate_z_trans"), "the pivot's distance");
            same(50.0, second.parameter("rotate_z_trans"), "the pivot's distance");
            first.applyProperties(1);
            same(50.0, first.parameter("rotate_z_trans"), "the pivot's distance");
        }
    }

    public void theGeometryIsWhatWasPlanned() {
        try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(160, 120, 4)) {
            same(0, renderer.geometry().gridWidth, "the grid without images");
            ready(renderer);
            final ParallaxGeometry geometry = renderer.geometry();
            same(40, geometry.gridWidth, "the grid's width");
            same(30, geometry.gridHeight, "the grid's height");
            same(8, geometry.colourRatioX, "photo pixels a cell");
            same(8, geometry.colourRatioY, "photo pixels a cell");
            // The photo, 57 bytes a cell, 40 a row's cell and one, 12 a vertex.
            same(230400 + 57 * 1200 + 40 * 30 * 41 + 12 * 41 * 31, geometry.blockBytes, "memory");
            // 18.5 and 4 : 3, and the width's shift by 3 of 103 pixels at distance 32.
            near(18.5f, geometry.halfHeight, "half the mesh's height");
            near(18.5f * 4 / 3 + 32.0f * 3 / 103, geometry.halfWidth, "half the mesh's width");
            near(40.0f, geometry.pivotDistance, "the pivot's distance");
            near(255.0f * 12.0f / 35.0f, geometry.stillDepth, "the still depth");
        }
    }

    // Contexts, threads, the end.

    public void withoutAContextNoneIsMade() {
        refused(NO_CONTEXT, () -> ParallaxRenderer.create(160, 120, 4));
        same(0L, TestGl.current(), "the current context");
    }

    public void anOwnContextIsCurrentInItsCallsOnly() {
        final ParallaxRenderer first = ready(ParallaxRenderer.createOffscreen(160, 120, 4));
        final ParallaxRenderer second = ready(ParallaxRenderer.createOffscreen(160, 120, 4));
        same(0L, TestGl.current(), "no context before");
        final long context = TestGl.context();
        final int texture = TestGl.texture(4, 4);
        first.render();
        second.lookAt(-1.0f, 0.0f);
        second.render();
        samePicture("looked.rgba", first);
        same(context, TestGl.current(), "the app's context");
        refusedFrom(
                "output: 0 x 0 pixels; each side must be 1 to ",
                () -> ParallaxRenderer.createOffscreen(0, 0, 4));
        same(context, TestGl.current(), "the app's context");
        second.close();
        same(context, TestGl.current(), "the app's context");
        first.render();
        samePicture("looked.rgba", first);
        same(true, TestGl.isTexture(texture), "the app keeps its texture");
        TestGl.release();
        first.close();
        same(0L, TestGl.current(), "no context after");
    }

    public void withoutItsContextNoCallIsDone() {
        final long context = TestGl.context();
        final ParallaxRenderer renderer = ready(ParallaxRenderer.create(160, 120, 4));
        renderer.render();
        final Map<String, Consumer<ParallaxRenderer>> calls = calls();
        calls.keySet().removeAll(Arrays.asList("width", "height", "geometry"));
        TestGl.release();
        calls.forEach((name, call) -> refused(NOT_CURRENT, () -> call.accept(renderer)));
        final long other = TestGl.context();
        calls.forEach((name, call) -> refused(NOT_CURRENT, () -> call.accept(renderer)));
        TestGl.makeCurrent(context);
        samePicture("looked.rgba", renderer);
        renderer.close();
        TestGl.release();
        TestGl.destroy(context);
        TestGl.destroy(other);
    }

    public void anotherThreadIsRefused() throws InterruptedException {
        final long context = TestGl.context();
        final ParallaxRenderer own = ready(ParallaxRenderer.createOffscreen(160, 120, 4));
        final ParallaxRenderer shared = ready(ParallaxRenderer.create(160, 120, 4));
        for (ParallaxRenderer renderer : new ParallaxRenderer[] {own, shared}) {
            renderer.render();
            onAnotherThread(
                    () -> {
                        calls().forEach(
                                        (name, call) ->
                                                refused(WRONG_THREAD, () -> call.accept(renderer)));
                        refused(WRONG_THREAD, renderer::close);
                    });
            samePicture("looked.rgba", renderer);
            renderer.close();
            onAnotherThread(() -> refused(WRONG_THREAD, renderer::width));
        }
        same(context, TestGl.current(), "the app's context");
    }

    public void afterClosingNothingIsDone() {
        TestGl.context();
        final ParallaxRenderer own = ready(ParallaxRenderer.createOffscreen(160, 120, 4));
        final ParallaxRenderer shared = ready(ParallaxRenderer.create(160, 120, 4));
        for (ParallaxRenderer renderer : new ParallaxRenderer[] {own, shared}) {
            renderer.close();
            renderer.close();
            calls().forEach(
                            (name, call) ->
                                    refused("the renderer is closed", () -> call.accept(renderer)));
        }
    }

    public void closingDeletesTheObjectsInTheContext() {
        TestGl.context();
        final ParallaxRenderer renderer = ready(ParallaxRenderer.create(160, 120, 4));
        final int texture = renderer.render();
        same(true, TestGl.isTexture(texture), "the picture's texture is there");
        renderer.close();
        same(false, TestGl.isTexture(texture), "the picture's texture is gone");
    }

    public void closingElsewhereSparesTheObjectsOfTheSameNames() {
        final long context = TestGl.context();
        final ParallaxRenderer renderer = ready(ParallaxRenderer.create(160, 120, 4));
        final int picture = renderer.render();
        final long other = TestGl.context();
        final List<Integer> textures = new ArrayList<>();
        while (!textures.contains(picture)) {
            textures.add(TestGl.texture(4, 4));
        }
        renderer.close();
        same(other, TestGl.current(), "the context");
        for (int texture : textures) {
            same(true, TestGl.isTexture(texture), "texture " + texture + " of the other context");
        }
        TestGl.makeCurrent(context);
        same(true, TestGl.isTexture(picture), "the picture's texture goes with its context");
    }

    public void afterALossOfTheContextItCanBeClosed() {
        final long context = TestGl.context();
        final ParallaxRenderer renderer = ready(ParallaxRenderer.create(160, 120, 4));
        TestGl.release();
        TestGl.destroy(context);
        refused(NOT_CURRENT, renderer::render);
        renderer.close();
        renderer.close();
        refused("the renderer is closed", renderer::render);
    }

    public void afterTheEndOfItsThreadAnyOtherMayClose() throws InterruptedException {
        final ParallaxRenderer[] left = new ParallaxRenderer[2];
        onAnotherThread(
                () -> {
                    TestGl.context();
                    left[0] = ready(ParallaxRenderer.create(160, 120, 4));
                    left[1] = ready(ParallaxRenderer.createOffscreen(160, 120, 4));
                    left[0].render();
                    left[1].render();
                });
        for (ParallaxRenderer renderer : left) {
            refused(WRONG_THREAD, renderer::render);
            renderer.close();
            renderer.close();
        }
        picturesAreThoseOfTheHostByteForByte();
    }

    public void whatIsDroppedWithoutClosingDoesNoHarm() throws InterruptedException {
        TestGl.context();
        onAnotherThread(() -> ready(ParallaxRenderer.createOffscreen(160, 120, 4)).render());
        for (int i = 0; i < 10; ++i) {
            ready(ParallaxRenderer.create(160, 120, 4)).render();
            System.gc();
            System.runFinalization();
        }
        picturesInTheAppsContextAreTheSame();
    }

    public void twoThreadsDrawAtOnce() throws InterruptedException {
        final Throwable[] failures = {null, null};
        final Thread[] threads = new Thread[2];
        for (int i = 0; i < 2; ++i) {
            final int index = i;
            threads[i] =
                    new Thread(
                            () -> {
                                try {
                                    for (int turn = 0; turn < 10; ++turn) {
                                        picturesAreThoseOfTheHostByteForByte();
                                    }
                                } catch (Throwable failure) {
                                    failures[index] = failure;
                                }
                            });
            threads[i].start();
        }
        for (Thread thread : threads) {
            thread.join();
        }
        for (Throwable failure : failures) {
            if (failure != null) {
                throw new AssertionError(failure);
            }
        }
    }

    /** A texture left behind in each cycle, 75 KB, would add 70 MB, and shaders alone 3 MB. */
    public void aThousandCyclesTakeNoMoreMemoryThanAHundred() {
        TestGl.context();
        final ByteBuffer photo = file("photo.rgb");
        final ByteBuffer depth = file("depth.gray");
        long warm = 0;
        for (int cycle = 1; cycle <= 1000; ++cycle) {
            try (ParallaxRenderer renderer = ParallaxRenderer.create(160, 120, 4)) {
                renderer.setPhoto(320, 240, photo);
                renderer.setDepth(160, 120, depth);
                renderer.render();
            }
            if (cycle == 100) {
                warm = residentKilobytes();
            }
        }
        final long grown = residentKilobytes() - warm;
        System.err.println("1,000 cycles: " + warm + " KB resident after 100, " + grown + " more");
        check(grown < 2048, "900 cycles took " + grown + " KB");
    }

    public void aHundredContextsTakeNoMoreMemoryThanTwenty() {
        long warm = 0;
        for (int cycle = 1; cycle <= 100; ++cycle) {
            try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(160, 120, 4)) {
                ready(renderer).render();
            }
            if (cycle == 20) {
                warm = residentKilobytes();
            }
        }
        final long grown = residentKilobytes() - warm;
        System.err.println("100 contexts: " + warm + " KB resident after 20, " + grown + " more");
        check(grown < 8192, "80 contexts took " + grown + " KB");
    }

    public void callsInAnyOrderEndInAPictureOrASentence() {
        final Random random = new Random(1);
        TestGl.context();
        try (ParallaxRenderer own = ParallaxRenderer.createOffscreen(160, 120, 4);
                ParallaxRenderer shared = ParallaxRenderer.create(160, 120, 4)) {
            final List<Consumer<ParallaxRenderer>> calls = new ArrayList<>(calls().values());
            for (int i = 0; i < 500; ++i) {
                try {
                    calls.get(random.nextInt(calls.size())).accept(i % 2 == 0 ? own : shared);
                } catch (ParallaxException sentence) {
                    check(!sentence.getMessage().isEmpty(), "a sentence");
                }
            }
            own.setParameter("fov_scale", 0.81);
            own.resize(160, 120);
            ready(own).render();
            samePicture("looked.rgba", own);
        }
    }

    // What the tests share.

    /** Each call that belongs to the owner's thread, but close, with arguments that it takes. */
    private static Map<String, Consumer<ParallaxRenderer>> calls() {
        final Map<String, Consumer<ParallaxRenderer>> calls = new LinkedHashMap<>();
        calls.put("setPhoto", it -> it.setPhoto(320, 240, file("photo.rgb")));
        calls.put("setPhotoRgba", it -> it.setPhotoRgba(320, 180, direct(320 * 240 * 3)));
        calls.put("setDepth", it -> it.setDepth(160, 120, file("depth.gray")));
        calls.put("setParameter", it -> it.setParameter("fov_scale", 0.5));
        calls.put("parameter", it -> it.parameter("fov_scale"));
        calls.put("applyProperties", it -> it.applyProperties(4));
        calls.put("resize", it -> it.resize(80, 60));
        calls.put("lookAt", it -> it.lookAt(0.5f, -0.25f));
        calls.put("setAccelerometerData", it -> it.setAccelerometerData(1, 2, 3));
        calls.put("setRotation", it -> it.setRotation(1, 2, 3));
        calls.put("setTranslation", it -> it.setTranslation(1, 2, 3));
        calls.put("render", ParallaxRenderer::render);
        calls.put("renderInto", it -> it.renderInto(1));
        calls.put("readPixels", it -> it.readPixels(direct(160 * 120 * 4)));
        calls.put("width", ParallaxRenderer::width);
        calls.put("height", ParallaxRenderer::height);
        calls.put("geometry", ParallaxRenderer::geometry);
        return calls;
    }

    /** Gives the renderer all that the picture looked.rgba needs. */
    private static ParallaxRenderer ready(ParallaxRenderer renderer) {
        renderer.setPhoto(320, 240, file("photo.rgb"));
        renderer.setDepth(160, 120, file("depth.gray"));
        renderer.lookAt(0.5f, -0.25f);
        return renderer;
    }

    private static ByteBuffer direct(int bytes) {
        return ByteBuffer.allocateDirect(bytes);
    }

    private static ByteBuffer marked(int bytes) {
        final ByteBuffer buffer = direct(bytes);
        while (buffer.hasRemaining()) {
            buffer.put(MARKER);
        }
        buffer.clear();
        return buffer;
    }

    /** The same bytes with others around them, which are not between position and limit. */
    private static ByteBuffer inside(ByteBuffer bytes, int before, int after) {
        final int size = bytes.remaining();
        final ByteBuffer buffer = marked(before + size + Math.max(after, 0));
        buffer.position(before);
        buffer.put(bytes);
        buffer.position(before).limit(before + size + Math.min(after, 0));
        return buffer;
    }

    static ByteBuffer file(String name) {
        try {
            final byte[] bytes = Files.readAllBytes(Paths.get(folder, name));
            final ByteBuffer buffer = direct(bytes.length);
            buffer.put(bytes);
            buffer.flip();
            return buffer;
        } catch (IOException unreadable) {
            throw new AssertionError(unreadable);
        }
    }

    static byte[] bytes(ByteBuffer buffer) {
        final byte[] bytes = new byte[buffer.remaining()];
        buffer.get(bytes);
        return bytes;
    }

    private static long residentKilobytes() {
        System.gc();
        try {
            for (String line : Files.readAllLines(Paths.get("/proc/self/status"))) {
                if (line.startsWith("VmRSS:")) {
                    return Long.parseLong(line.replaceAll("\\D", ""));
                }
            }
        } catch (IOException unreadable) {
            throw new AssertionError(unreadable);
        }
        throw new AssertionError("/proc/self/status does not say VmRSS");
    }

    private static void onAnotherThread(Runnable what) throws InterruptedException {
        final Throwable[] failure = {null};
        final Thread thread =
                new Thread(
                        () -> {
                            try {
                                what.run();
                            } catch (Throwable thrown) {
                                failure[0] = thrown;
                            }
                        });
        thread.start();
        thread.join();
        if (failure[0] != null) {
            throw new AssertionError(failure[0]);
        }
    }

    static void samePicture(String name, ParallaxRenderer renderer) {
        final ByteBuffer picture = marked(renderer.width() * renderer.height() * 4);
        renderer.readPixels(picture);
        same(file(name), picture, name);
    }

    private static void same(ByteBuffer expected, byte[] actual, String what) {
        same(expected, ByteBuffer.wrap(actual), what);
    }

    static void same(ByteBuffer expected, ByteBuffer actual, String what) {
        same(expected.remaining(), actual.remaining(), "bytes of " + what);
        for (int i = 0; i < expected.remaining(); ++i) {
            if (expected.get(i) != actual.get(i)) {
                throw new AssertionError(what + ": byte " + i + " differs");
            }
        }
    }

    static void same(Object expected, Object actual, String what) {
        check(expected.equals(actual), what + ": " + actual + " instead of " + expected);
    }

    private static void near(float expected, float actual, String what) {
        check(
                Math.abs(expected - actual) < 1e-4f * Math.abs(expected),
                what + ": " + actual + " instead of " + expected);
    }

    static void refused(String sentence, Runnable call) {
        refused(sentence, false, call);
    }

    private static void refusedFrom(String start, Runnable call) {
        refused(start, true, call);
    }

    private static void refused(String sentence, boolean startOnly, Runnable call) {
        try {
            call.run();
        } catch (ParallaxException refusal) {
            final String said = refusal.getMessage();
            check(
                    startOnly ? said.startsWith(sentence) : said.equals(sentence),
                    "\"" + said + "\" instead of \"" + sentence + "\"");
            return;
        }
        throw new AssertionError("not refused: " + sentence);
    }

    static void check(boolean holds, String otherwise) {
        if (!holds) {
            throw new AssertionError(otherwise);
        }
    }
}
