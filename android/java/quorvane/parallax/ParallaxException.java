package quorvane.parallax;

/**
 * What failed and what would work, in one sentence.
 *
 * <p>Unchecked: most causes are mistakes in the calling code, which no caller can mend while it
 * runs, and drawing a frame should not need a try block. Where the device decides, which is in
 * {@code create}, {@code createOffscreen}, {@code resize} and for large pictures, an app that has
 * something else to show catches it.
 */
public final class ParallaxException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    /**
     * Called from native code too.
     *
     * @param sentence what failed and what would work
     */
    ParallaxException(String sentence) {
        super(sentence);
    }
}
