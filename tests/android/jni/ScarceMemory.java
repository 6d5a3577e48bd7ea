package quorvane.parallax;

/** Has the renderer's library get no memory at a call of a test's choice. */
final class ScarceMemory {
    static {
        System.loadLibrary("quorvane_scarce_memory");
    }

    private ScarceMemory() {}

    /** The library gets memory so often, then once not. */
    static native void failAfter(int calls);

    /** Whether it went that far. From now on there is memory again. */
    static native boolean hasFailed();
}
