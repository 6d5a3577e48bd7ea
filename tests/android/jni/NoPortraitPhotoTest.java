package quorvane.parallax;

import static quorvane.parallax.ParallaxRendererTest.refused;
import static quorvane.parallax.ParallaxRendererTest.same;

import java.util.Collections;

/** A library that was built without expat. Every public method is a test. */
final class NoPortraitPhotoTest {
    public void readingPhotosIsRefused() {
        same(false, PortraitPhoto.isAvailable(), "photos can be read");
        same(Collections.emptyList(), PortraitPhoto.containers(), "containers");
        refused(
                "photo file: cannot be looked into; build the native library with expat",
                () -> PortraitPhoto.read(new byte[8]));
    }
}
