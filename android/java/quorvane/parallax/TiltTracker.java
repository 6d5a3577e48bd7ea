package quorvane.parallax;

import androidx.annotation.NonNull;

/**
 * Turns samples of a phone's motion sensors into the view position that {@link
 * ParallaxRenderer#lookAt} takes, so that the photo behaves like a window that the hand turns under
 * an eye that stays where it is.
 *
 * <p>With the screen facing the viewer:
 *
 * <ul>
 *   <li>the right edge turned away: the eye sees the window from its left, x goes to -1;
 *   <li>the right edge turned towards the viewer: x goes to 1;
 *   <li>the top edge turned towards the viewer: the eye sees it from above, y goes to 1;
 *   <li>the top edge turned away: y goes to -1;
 *   <li>the phone turned about the screen's normal, as a steering wheel: nothing moves.
 * </ul>
 *
 * <p>What counts is the turn from one sample to the next, in the axes of the screen. So there is no
 * direction of the world in which it behaves differently: upright, flat on the back or held
 * overhead. The rest position follows the hand: a tilt that is held counts less and less, see
 * {@link #setRecentring}, and a tilt beyond full swing moves the rest position along, so that the
 * way back shows at once.
 *
 * <p>Samples and frames have a clock each, in nanoseconds, which are not compared with each other.
 * On both a time that is not later than the last one is ignored. After a gap of more than half a
 * second, or a step back of as much, counting starts anew from there: the view stays where it was.
 * A sample that is not finite is ignored, and a turn too fast for a hand moves nothing.
 *
 * <p>The same calls give the same positions. All calls come from one thread at a time. It allocates
 * nothing after construction.
 */
public final class TiltTracker {
    private static final double LONGEST_GAP_SECONDS = 0.5;
    // What a phone's gyroscope measures at most is 2000 degrees a second. Times of samples that
    // come in batches are a few milliseconds off, which must not make a slow turn a fast one.
    private static final double FASTEST_RADIANS_PER_SECOND = 35.0;
    private static final double SHORTEST_STEP_SECONDS = 0.02;
    // Outside of these a phone is falling or shaken, and the acceleration does not say where down
    // is.
    private static final double WEAKEST_GRAVITY = 3.0;
    private static final double STRONGEST_GRAVITY = 30.0;
    private static final double GRAVITY_SMOOTHING_SECONDS = 0.15;
    private static final double IDLE_SWING = 0.4;
    private static final double IDLE_PERIOD_SECONDS = 12.0;
    // No eye sees what is left of the way to go.
    private static final double RESTS = 0.0002;

    private enum Source { NONE, ROTATION_VECTOR, GYROSCOPE, ACCELEROMETER }

    private double deadZone = Math.toRadians(0.5);
    private double fullSwing = Math.toRadians(15.0);
    private double smoothingSeconds = 0.08;
    private double recentringSeconds = 5.0;
    private int displayRotation = 0;
    private boolean reducedMotion = false;
    private boolean idle = false;
    private boolean held = false;

    private Source source = Source.NONE;
    private long sampleTime;
    // Of the last sample: a unit quaternion, or gravity as x, y, z.
    private final double[] last = new double[4];

    // The screen's tilt from the rest position: a turn by the vector's length in radians about it,
    // in the screen's axes; none about the normal.
    private double tiltX = 0.0;
    private double tiltY = 0.0;

    private boolean hasFrame = false;
    private long frameTime;
    private double idlePhase = 0.0;
    private double x = 0.0;
    private double y = 0.0;

    /**
     * Sets which tilts count, in degrees from the rest position: below {@code deadZone} none, from
     * there evenly up to {@code fullSwing}, which is as far as the view goes. At first 0.5 and 15.
     *
     * @throws IllegalArgumentException unless 0 &lt;= deadZone, 2 deadZone &lt;= fullSwing and
     *     1 &lt;= fullSwing &lt;= 60
     */
    public void setRange(float deadZone, float fullSwing) {
        requireFullSwing(fullSwing);
        if (!(deadZone >= 0.0f && 2.0f * deadZone <= fullSwing)) {
            throw new IllegalArgumentException("dead zone: " + deadZone
                    + " degrees is not from 0 to " + fullSwing / 2.0f + ", half of full swing");
        }
        this.deadZone = Math.toRadians(deadZone);
        this.fullSwing = Math.toRadians(fullSwing);
    }

    /**
     * Sets the time in seconds in which the view goes 63 % of its way to where the hand points,
     * whatever the rate of samples and frames. 0 smoothes nothing; at first 0.08.
     *
     * @throws IllegalArgumentException unless it is from 0 to 5
     */
    public void setSmoothing(float seconds) {
        if (!(seconds >= 0.0f && seconds <= 5.0f)) {
            throw new IllegalArgumentException(
                    "smoothing: " + seconds + " seconds is not from 0 to 5");
        }
        smoothingSeconds = seconds;
    }

    /**
     * Sets the time in seconds in which a tilt that is held loses 63 %, as the rest position
     * follows the hand. Infinity keeps the rest position; at first 5.
     *
     * @throws IllegalArgumentException unless it is at least 0.5
     */
    public void setRecentring(float seconds) {
        if (!(seconds >= 0.5f)) {
            throw new IllegalArgumentException(
                    "recentring: " + seconds + " seconds is not 0.5 or more");
        }
        recentringSeconds = seconds;
    }

    /**
     * Says how the screen's contents are turned against the phone, as {@code Display.getRotation}
     * has it: 0, or 90, 180 or 270 degrees for {@code Surface.ROTATION_90} and on. The view stays
     * where it is; tilts from now on count in the new axes.
     *
     * @throws IllegalArgumentException for other angles
     */
    public void setDisplayRotation(int degrees) {
        if (degrees != 0 && degrees != 90 && degrees != 180 && degrees != 270) {
            throw new IllegalArgumentException(
                    "display rotation: " + degrees + " degrees is not 0, 90, 180 or 270");
        }
        displayRotation = degrees;
    }

    /**
     * For people whom moving pictures trouble: the view returns to (0, 0) and only a finger moves
     * it, neither tilting nor idle motion. Off at first.
     */
    public void setReducedMotion(boolean reduced) {
        if (reduced && !reducedMotion) {
            tiltX = 0.0;
            tiltY = 0.0;
        }
        reducedMotion = reduced;
    }

    /**
     * For phones without a sensor: the view goes round a slow, small figure of eight by itself. Off
     * at first.
     */
    public void setIdle(boolean idle) {
        this.idle = idle;
    }

    /**
     * Takes a sample of Android's rotation vector or game rotation vector.
     *
     * @param timeNanos the event's timestamp
     * @param values the event's values: the quaternion's x, y, z and, if there, w; more are ignored
     * @throws IllegalArgumentException for fewer than 3 values
     */
    public void rotationVector(long timeNanos, @NonNull float[] values) {
        requireThree("rotation vector", values);
        double qx = values[0];
        double qy = values[1];
        double qz = values[2];
        double qw = values.length > 3
                ? values[3]
                : Math.sqrt(Math.max(0.0, 1.0 - qx * qx - qy * qy - qz * qz));
        double norm = Math.sqrt(qx * qx + qy * qy + qz * qz + qw * qw);
        // False for NaN and infinity too.
        if (!(norm > 0.5 && norm < 2.0)) {
            return;
        }
        qx /= norm;
        qy /= norm;
        qz /= norm;
        qw /= norm;
        double seconds = sinceLastSample(Source.ROTATION_VECTOR, timeNanos);
        if (Double.isNaN(seconds)) {
            return;
        }
        if (seconds > 0.0) {
            // The inverse of the last orientation times this one, in the phone's axes.
            double px = -last[0];
            double py = -last[1];
            double pz = -last[2];
            double pw = last[3];
            turn(seconds,
                    pw * qx + px * qw + py * qz - pz * qy,
                    pw * qy - px * qz + py * qw + pz * qx,
                    pw * qz + px * qy - py * qx + pz * qw,
                    pw * qw - px * qx - py * qy - pz * qz);
        }
        remember(qx, qy, qz, qw);
    }

    /**
     * Takes a sample of the gyroscope.
     *
     * @param timeNanos the event's timestamp
     * @param values the event's values: radians a second about the phone's x, y and z
     * @throws IllegalArgumentException for fewer than 3 values
     */
    public void gyroscope(long timeNanos, @NonNull float[] values) {
        requireThree("gyroscope", values);
        double speed = length(values[0], values[1], values[2]);
        if (!(speed < Double.POSITIVE_INFINITY)) {
            return;
        }
        double seconds = sinceLastSample(Source.GYROSCOPE, timeNanos);
        if (Double.isNaN(seconds) || seconds == 0.0 || speed == 0.0) {
            return;
        }
        double sine = Math.sin(speed * seconds / 2.0) / speed;
        turn(seconds, values[0] * sine, values[1] * sine, values[2] * sine,
                Math.cos(speed * seconds / 2.0));
    }

    /**
     * Takes a sample of the accelerometer or of Android's gravity sensor. They do not feel turns
     * about the vertical: an upright phone moves the view up and down only, one that lies flat all
     * ways.
     *
     * @param timeNanos the event's timestamp
     * @param values the event's values: metres per second squared along the phone's x, y and z
     * @throws IllegalArgumentException for fewer than 3 values
     */
    public void accelerometer(long timeNanos, @NonNull float[] values) {
        requireThree("accelerometer", values);
        double strength = length(values[0], values[1], values[2]);
        if (!(strength > WEAKEST_GRAVITY && strength < STRONGEST_GRAVITY)) {
            return;
        }
        double seconds = sinceLastSample(Source.ACCELEROMETER, timeNanos);
        if (Double.isNaN(seconds)) {
            return;
        }
        if (seconds == 0.0) {
            remember(values[0], values[1], values[2], 0.0);
            return;
        }
        double part = approach(seconds, GRAVITY_SMOOTHING_SECONDS);
        double ax = last[0];
        double ay = last[1];
        double az = last[2];
        double bx = ax + part * (values[0] - ax);
        double by = ay + part * (values[1] - ay);
        double bz = az + part * (values[2] - az);
        remember(bx, by, bz, 0.0);
        // The shortest turn that takes the new down to the old one is what the phone did meanwhile.
        double qx = by * az - bz * ay;
        double qy = bz * ax - bx * az;
        double qz = bx * ay - by * ax;
        double qw = ax * bx + ay * by + az * bz + length(ax, ay, az) * length(bx, by, bz);
        double norm = Math.sqrt(qx * qx + qy * qy + qz * qz + qw * qw);
        if (norm > 0.0) {
            turn(seconds, qx / norm, qy / norm, qz / norm, qw / norm);
        }
    }

    /**
     * Moves the view with a finger: near things go where the finger goes. A drag across the view is
     * the way from one end to the other. What was dragged returns as a tilt does, but not before
     * the finger is lifted.
     *
     * @param right part of the view's width that the finger went to the right since the last call
     * @param down part of its height that it went down
     */
    public void drag(float right, float down) {
        if (Math.abs(right) < Float.POSITIVE_INFINITY && Math.abs(down) < Float.POSITIVE_INFINITY) {
            setTilt(tiltX + 2.0 * fullSwing * down, tiltY + 2.0 * fullSwing * right);
        }
    }

    /** Says whether a finger is on the view: then the rest position stays where it is. */
    public void setHeld(boolean held) {
        this.held = held;
    }

    /**
     * Brings the view to the time of the next frame.
     *
     * @param timeNanos the frame's time, as {@code Choreographer} tells it
     */
    public void advance(long timeNanos) {
        long step = timeNanos - frameTime;
        boolean continues = hasFrame && !isGap(step);
        if (continues && step <= 0) {
            return;
        }
        hasFrame = true;
        frameTime = timeNanos;
        if (!continues) {
            return;
        }
        double seconds = step * 1e-9;
        if (!held) {
            double kept = Math.exp(-seconds / recentringSeconds);
            tiltX *= kept;
            tiltY *= kept;
        }
        double part = approach(seconds, smoothingSeconds);
        if (idle && !reducedMotion) {
            idlePhase = (idlePhase + seconds / IDLE_PERIOD_SECONDS) % 1.0;
        }
        x += part * (targetX() - x);
        y += part * (targetY() - y);
    }

    /**
     * Tells whether the view would move though nothing new came: then frames are needed. It comes to
     * rest a little after the tilt has, at the latest when the rest position has followed the hand.
     */
    boolean moving() {
        boolean returning = !held && Math.hypot(tiltX, tiltY) > deadZone;
        return returning || idle && !reducedMotion || Math.abs(targetX() - x) > RESTS
                || Math.abs(targetY() - y) > RESTS;
    }

    /** Frames stopped and come again: no time has passed in between. */
    void resume() {
        hasFrame = false;
    }

    /** The view position: -1 from the left, 1 from the right. */
    public float x() {
        return (float) x;
    }

    /** The view position: -1 from below, 1 from above. */
    public float y() {
        return (float) y;
    }

    static void requireFullSwing(float degrees) {
        if (!(degrees >= 1.0f && degrees <= 60.0f)) {
            throw new IllegalArgumentException(
                    "full swing: " + degrees + " degrees is not from 1 to 60");
        }
    }

    // Where the view goes.

    private double targetX() {
        double drift = idle && !reducedMotion
                ? IDLE_SWING * Math.sin(2.0 * Math.PI * idlePhase) : 0.0;
        return clamp(-tiltY * gain() + drift, 1.0);
    }

    private double targetY() {
        double drift = idle && !reducedMotion
                ? IDLE_SWING / 2.0 * Math.sin(4.0 * Math.PI * idlePhase) : 0.0;
        return clamp(tiltX * gain() + drift, 1.0);
    }

    private double gain() {
        double tilt = Math.hypot(tiltX, tiltY);
        return tilt > deadZone ? (tilt - deadZone) / (fullSwing - deadZone) / tilt : 0.0;
    }

    // Seconds from the last sample of this source to this one; 0 when counting starts with this
    // one, NaN when it is to be ignored.
    private double sinceLastSample(Source from, long timeNanos) {
        long step = timeNanos - sampleTime;
        boolean continues = source == from && !isGap(step);
        if (continues && step <= 0) {
            return Double.NaN;
        }
        source = from;
        sampleTime = timeNanos;
        return continues ? step * 1e-9 : 0.0;
    }

    // Tilts by what the phone turned: a unit quaternion in its axes.
    private void turn(double seconds, double qx, double qy, double qz, double qw) {
        double angle = 2.0 * Math.atan2(length(qx, qy, qz), Math.abs(qw));
        double slowest = FASTEST_RADIANS_PER_SECOND * Math.max(seconds, SHORTEST_STEP_SECONDS);
        if (reducedMotion || angle > slowest) {
            return;
        }
        double bx = qx;
        double by = qy;
        switch (displayRotation) {
            case 90:
                bx = -qy;
                by = qx;
                break;
            case 180:
                bx = -qx;
                by = -qy;
                break;
            case 270:
                bx = qy;
                by = -qx;
                break;
            default:
                break;
        }
        double tilt = Math.hypot(tiltX, tiltY);
        double sine = tilt > 0.0 ? Math.sin(tilt / 2.0) / tilt : 0.5;
        double ax = tiltX * sine;
        double ay = tiltY * sine;
        double aw = Math.cos(tilt / 2.0);
        // The tilt times the turn,
        double px = aw * bx + ax * qw + ay * qz;
        double py = aw * by - ax * qz + ay * qw;
        double pz = aw * qz + ax * by - ay * bx;
        double pw = aw * qw - ax * bx - ay * by;
        // and of that the swing: what comes before the twist about the screen's normal.
        double swing = Math.hypot(pz, pw);
        double swingX = px * pw - py * pz;
        double swingY = py * pw + px * pz;
        double swingSine = Math.hypot(swingX, swingY);
        if (swing > 1e-6) {
            // Both are the quaternion's times `swing`.
            double length =
                    swingSine > 0.0 ? 2.0 * Math.atan2(swingSine / swing, swing) / swingSine : 0.0;
            setTilt(swingX * length, swingY * length);
        }
    }

    private void setTilt(double aboutX, double aboutY) {
        tiltX = clamp(aboutX, fullSwing);
        tiltY = clamp(aboutY, fullSwing);
    }

    private void remember(double v0, double v1, double v2, double v3) {
        last[0] = v0;
        last[1] = v1;
        last[2] = v2;
        last[3] = v3;
    }

    private static boolean isGap(long stepNanos) {
        return Math.abs(stepNanos * 1e-9) > LONGEST_GAP_SECONDS;
    }

    // The part of the way that is gone after some seconds, for an exponential approach.
    private static double approach(double seconds, double timeConstant) {
        return timeConstant > 0.0 ? -Math.expm1(-seconds / timeConstant) : 1.0;
    }

    private static double clamp(double value, double limit) {
        return Math.max(-limit, Math.min(limit, value));
    }

    private static double length(double x, double y, double z) {
        return Math.sqrt(x * x + y * y + z * z);
    }

    private static void requireThree(String what, float[] values) {
        if (values.length < 3) {
            throw new IllegalArgumentException(
                    what + ": a sample has 3 or more values, not " + values.length);
        }
    }
}
