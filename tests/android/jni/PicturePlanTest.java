package quorvane.parallax;

import static quorvane.parallax.ParallaxRendererTest.check;
import static quorvane.parallax.ParallaxRendererTest.file;
import static quorvane.parallax.ParallaxRendererTest.refused;
import static quorvane.parallax.ParallaxRendererTest.samePicture;

import java.nio.ByteBuffer;

/** Every public method is a test and runs on a thread of its own. */
final class PicturePlanTest {
    private static final int LARGEST = 16384;

    private static FitSizes fine() {
        return FitSizes.forCleanEdges(320, 240, 160, 120, 160, 120, LARGEST);
    }

    private static PicturePlan.Request clean() {
        return new PicturePlan.Request(fine(), 160, 120);
    }

    private static PicturePlan.Request soft() {
        return new PicturePlan.Request(
                FitSizes.of(320, 240, 160, 120, 160, 120, LARGEST), 160, 120)
                .cleanEdges(false);
    }

    private static PicturePlan planned(PicturePlan.Request request) {
        return request.plan(160, 120, file("depth.gray"));
    }

    private static void sameAs(String name, int orientation, PicturePlan plan) {
        try (ParallaxRenderer renderer =
                ParallaxRenderer.createOffscreen(160, 120, orientation)) {
            renderer.setPhoto(320, 240, file("photo.rgb"));
            renderer.use(plan);
            final float swing = (float) plan.swing;
            renderer.lookAt(0.5f * swing, -0.25f * swing);
            renderer.render();
            samePicture(name, renderer);
        }
    }

    public void drawsWhatTheHostPlans() {
        final PicturePlan plan = planned(clean());
        sameAs("clean.rgba", 4, plan);
        check(plan.swing == 1.0, "swing " + plan.swing);
        check(plan.fovScale >= 0.5 && plan.fovScale < 1.0, "frame " + plan.fovScale);
        check(plan.rotateZTrans > 30.8 && plan.rotateZTrans < 44.8, "pivot " + plan.rotateZTrans);
        check(plan.parameters().get("fov_scale").floatValue() == plan.fovScale,
                "the frame is a parameter");
        check(plan.parameters().get("guided_filter_rx") == 0.0, "clean edges are not filtered");
        check(plan.depthWidth() == 640 && plan.depthHeight() == 480, "four samples a cell");
        check(plan.depth().remaining() == 640 * 480, "all of the depth map");
    }

    public void findsTheNearEndAsTheProgramDoes() {
        // Ground that rises towards the viewer, and a thing on it.
        final int width = 160;
        final int height = 120;
        final ByteBuffer nearer = ByteBuffer.allocateDirect(width * height);
        final ByteBuffer farther = ByteBuffer.allocateDirect(width * height);
        final ByteBuffer photo = ByteBuffer.allocateDirect(4 * width * height);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                final boolean thing = Math.abs(x - 70) < 20 && y > 30 && y < 90;
                final int level = thing ? 190 : 20 + 3 * y / 2;
                nearer.put((byte) level);
                farther.put((byte) (255 - level));
                for (int channel = 0; channel < 4; ++channel) {
                    photo.put((byte) (thing ? 40 + 60 * (x / 3 + y / 3 & 1) : 200));
                }
            }
        }
        nearer.rewind();
        farther.rewind();
        check(!PicturePlan.largerIsFarther(width, height, photo, width, height, nearer), "nearer");
        check(PicturePlan.largerIsFarther(width, height, photo, width, height, farther), "farther");
    }

    public void reducesASwingThatWouldShowABorder() {
        final PicturePlan plan = planned(clean().orientation(0)
                .parameter("rotate_x_boundary", 40.0)
                .parameter("trans_to_rotate_scale", 1.5));
        check(plan.swing < 1.0, "swing " + plan.swing);
        sameAs("reduced.rgba", 0, plan);
    }

    public void takesSoftEdgesAPointAndAFrame() {
        final ByteBuffer rgb = file("photo.rgb");
        sameAs("soft.rgba", 4, planned(soft().photo(rgb).pivotAt(0.9, 0.1).frame(0.7)));
        check(rgb.position() == 0, "the photo's position stays");
        final ByteBuffer rgba = ByteBuffer.allocateDirect(320 * 240 * 4);
        while (rgb.hasRemaining()) {
            rgba.put(rgb.get()).put(rgb.get()).put(rgb.get()).put((byte) 7);
        }
        rgba.flip();
        sameAs("soft.rgba", 4, planned(soft().photoRgba(rgba).pivotAt(0.9, 0.1).frame(0.7)));
    }

    public void keepsWhatTheAppHasSet() {
        final PicturePlan plan = planned(
                clean().parameter("fov_scale", 0.625).parameter("rotate_z_trans", 41.5));
        check(plan.fovScale == 0.625, "frame " + plan.fovScale);
        check(plan.rotateZTrans == 41.5, "pivot " + plan.rotateZTrans);
        check(planned(clean().pivotOff()).rotateZTrans == 40.0, "the tuned pivot");
    }

    public void theCallersBuffersAndThePlansOwnStayAsTheyAre() {
        final ByteBuffer depth = file("depth.gray");
        final PicturePlan plan = clean().plan(160, 120, depth);
        check(depth.position() == 0 && depth.remaining() == 160 * 120, "the depth map's position");
        plan.depth().get();
        check(plan.depth().position() == 0, "the plan's position");
    }

    public void needsNoContextAndAnyThread() throws InterruptedException {
        final PicturePlan[] plan = {null};
        final Thread thread = new Thread(() -> plan[0] = planned(clean()));
        thread.start();
        thread.join();
        sameAs("clean.rgba", 4, plan[0]);
    }

    public void refusesWhatCannotBeDrawn() {
        final ByteBuffer depth = file("depth.gray");
        refused("depth map: no buffer given", () -> clean().plan(160, 120, null));
        refused("depth map: the buffer is not direct; ByteBuffer.allocateDirect makes one",
                () -> clean().plan(16, 12, ByteBuffer.allocate(192)));
        refused("parameter: no name given", () -> clean().parameter(null, 1.0));
        refused("photo's point (1.5, 0): both go from 0 to 1",
                () -> clean().pivotAt(1.5, 0.0).plan(160, 120, depth));
        refused("photo: 320 x 240 pixels are needed for the guided filter",
                () -> soft().plan(160, 120, depth));
        check(says(() -> clean().parameter("nonsense", 1.0).plan(160, 120, depth))
                        .contains("nonsense"),
                "the parameter's name");
        check(says(() -> clean().frame(3.0).plan(160, 120, depth)).contains("0.05 to 1"),
                "the frame's range");
        check(says(() -> clean().plan(170, 120, depth)).startsWith("depth map: "), "the map");
        final ByteBuffer few = ByteBuffer.allocateDirect(100);
        check(says(() -> soft().photoRgba(few).plan(160, 120, depth)).startsWith("photo: "),
                "the photo");
    }

    private static String says(Runnable call) {
        try {
            call.run();
        } catch (ParallaxException refusal) {
            return refusal.getMessage();
        }
        throw new AssertionError("not refused");
    }
}
