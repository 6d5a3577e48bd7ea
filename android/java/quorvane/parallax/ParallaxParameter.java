package quorvane.parallax;

import androidx.annotation.NonNull;

/** One tunable parameter and the values that make a picture. */
public final class ParallaxParameter {
    /** When a changed parameter shows in the picture. */
    public enum TakesEffect {
        /** In the next picture. */
        EACH_FRAME,
        /** After the next call of {@link ParallaxRenderer#setDepth}. */
        NEXT_DEPTH,
        /** After the next call of {@link ParallaxRenderer#lookAt} or another motion sample. */
        NEXT_MOTION,
        /** In no picture: kept for hosts that set it. */
        NEVER
    }

    /** As {@link ParallaxRenderer#setParameter} takes it. */
    @NonNull
    public final String name;

    /** Whether only whole numbers are taken. */
    public final boolean integer;

    /** The smallest value taken. */
    public final double minimum;

    /** The largest value taken. */
    public final double maximum;

    /** When a new value shows. */
    @NonNull
    public final TakesEffect takesEffect;

    /** What it does, with its unit, in English. */
    @NonNull
    public final String meaning;

    /** Called from native code; {@code takesEffect} counts in the order of the constants. */
    ParallaxParameter(
            String name,
            boolean integer,
            double minimum,
            double maximum,
            int takesEffect,
            String meaning) {
        this.name = name;
        this.integer = integer;
        this.minimum = minimum;
        this.maximum = maximum;
        this.takesEffect = TakesEffect.values()[takesEffect];
        this.meaning = meaning;
    }

    @Override
    @NonNull
    public String toString() {
        return name + ", " + minimum + " to " + maximum + ": " + meaning;
    }
}
