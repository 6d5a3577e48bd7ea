package quorvane.parallax;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import java.util.ArrayList;
import java.util.List;
import java.util.Random;
import org.junit.Test;

public final class TiltTrackerTest {
    private static final long MILLISECOND = 1_000_000L;
    private static final float[] CENTRE = {0f, 0f};

    private long now = 1000 * MILLISECOND;

    /** One that shows at once where the phone points and keeps its rest position. */
    private static TiltTracker direct() {
        TiltTracker tracker = new TiltTracker();
        tracker.setSmoothing(0f);
        tracker.setRecentring(Float.POSITIVE_INFINITY);
        return tracker;
    }

    private static float[] view(TiltTracker tracker) {
        return new float[] {tracker.x(), tracker.y()};
    }

    /** A sample and a frame, 10 ms after the last. */
    private float[] step(TiltTracker tracker, Phone phone) {
        now += 10 * MILLISECOND;
        tracker.rotationVector(now, phone.rotationVector());
        tracker.advance(now);
        return view(tracker);
    }

    /** Turns the phone in steps of a degree or less. */
    private float[] turn(TiltTracker tracker, Phone phone, double x, double y, double z) {
        step(tracker, phone);
        int steps = (int) Math.ceil(Math.max(Math.abs(x), Math.max(Math.abs(y), Math.abs(z))));
        for (int i = 0; i < steps; ++i) {
            phone.turn(x / steps, y / steps, z / steps);
            step(tracker, phone);
        }
        return view(tracker);
    }

    private void frames(TiltTracker tracker, double seconds) {
        for (int i = 0; i < Math.round(seconds * 100); ++i) {
            now += 10 * MILLISECOND;
            tracker.advance(now);
        }
    }

    /** Where a tilt of some degrees stands by the first settings: 0.5 count not, 15 are the end. */
    private static float share(double degrees) {
        return (float) ((degrees - 0.5) / 14.5);
    }

    // Directions

    @Test
    public void rightEdgeAwayLooksFromTheLeft() {
        assertArrayEquals(new float[] {-share(8), 0f},
                turn(direct(), Phone.upright(), 0, 8, 0), 1e-4f);
    }

    @Test
    public void rightEdgeNearerLooksFromTheRight() {
        assertArrayEquals(new float[] {share(8), 0f},
                turn(direct(), Phone.upright(), 0, -8, 0), 1e-4f);
    }

    @Test
    public void topEdgeNearerLooksFromAbove() {
        assertArrayEquals(new float[] {0f, share(8)},
                turn(direct(), Phone.upright(), 8, 0, 0), 1e-4f);
    }

    @Test
    public void topEdgeAwayLooksFromBelow() {
        assertArrayEquals(new float[] {0f, -share(8)},
                turn(direct(), Phone.upright(), -8, 0, 0), 1e-4f);
    }

    @Test
    public void tiltingBackReturnsToTheCentre() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        turn(tracker, phone, 6, -9, 0);
        assertArrayEquals(CENTRE, turn(tracker, phone, -6, 9, 0), 1e-4f);
    }

    @Test
    public void steeringMovesNothing() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        assertArrayEquals(CENTRE, turn(tracker, phone, 0, 0, 300), 1e-4f);
        float[] tilted = turn(tracker, phone, 5, -8, 0);
        assertArrayEquals(tilted, turn(tracker, phone, 0, 0, -300), 1e-4f);
    }

    @Test
    public void afterSteeringTiltsCountInTheScreensNewAxes() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        turn(tracker, phone, 0, 0, 90);
        assertArrayEquals(new float[] {0f, share(8)}, turn(tracker, phone, 8, 0, 0), 1e-4f);
    }

    @Test
    public void everyAttitudeOfThePhoneIsAlike() {
        List<Phone> phones = new ArrayList<>();
        for (double north : new double[] {0, 77, 180, 271}) {
            phones.add(Phone.flat().turnAround(north));
            phones.add(Phone.upright().turnAround(north));
            phones.add(Phone.overhead().turnAround(north));
            phones.add(Phone.upright().turn(0, 0, 90).turnAround(north));
            phones.add(Phone.upright().turn(0, 0, 180).turnAround(north));
            phones.add(Phone.upright().turn(45, 30, 20).turnAround(north));
        }
        for (Phone phone : phones) {
            TiltTracker tracker = direct();
            turn(tracker, phone, 0, 7, 0);
            float[] view = turn(tracker, phone, 5, 0, 0);
            // The normal stands at (cos 5 sin 7, -sin 5, cos 5 cos 7) then: 8.597 degrees off,
            // towards 35.7 degrees below the right.
            float all = share(8.597);
            assertArrayEquals(new float[] {-all * 0.8122f, all * 0.5831f}, view, 2e-3f);
        }
    }

    @Test
    public void passingTheVerticalAndTheZenithIsSmooth() {
        for (double step : new double[] {0.3, -0.3}) {
            TiltTracker tracker = direct();
            Phone phone = Phone.flat();
            step(tracker, phone);
            float[] last = CENTRE;
            for (int i = 0; i < 1500; ++i) {
                float[] view = step(tracker, phone.turn(step, 0, 0));
                assertEquals(0f, view[0], 1e-3f);
                assertTrue(Math.abs(view[1] - last[1]) < share(0.5 + 0.301));
                last = view;
            }
            assertEquals(Math.signum(step), last[1], 1e-6);
        }
    }

    // Sensors

    @Test
    public void theQuaternionsSignDoesNotMatter() {
        TiltTracker plain = direct();
        TiltTracker flipping = direct();
        Phone phone = Phone.upright();
        Random random = new Random(1);
        for (int i = 0; i < 300; ++i) {
            phone.turn(random.nextGaussian(), random.nextGaussian(), random.nextGaussian());
            float[] values = phone.rotationVector();
            now += 10 * MILLISECOND;
            plain.rotationVector(now, values);
            float sign = random.nextBoolean() ? 1f : -1f;
            flipping.rotationVector(now, new float[] {
                sign * values[0], sign * values[1], sign * values[2], sign * values[3]});
            plain.advance(now);
            flipping.advance(now);
            assertArrayEquals(view(plain), view(flipping), 1e-6f);
        }
    }

    @Test
    public void aRotationVectorMayLackItsFourthValue() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        for (int i = 0; i <= 8; ++i) {
            float[] values = phone.rotationVector();
            float sign = Math.signum(values[3]);
            now += 10 * MILLISECOND;
            tracker.rotationVector(now,
                    new float[] {sign * values[0], sign * values[1], sign * values[2]});
            tracker.advance(now);
            phone.turn(0, 1, 0);
        }
        // Without it, the three floats hold the angle less well.
        assertArrayEquals(new float[] {-share(8), 0f}, view(tracker), 1e-3f);
    }

    @Test
    public void theGyroscopeGivesWhatTheRotationVectorGives() {
        TiltTracker tracker = direct();
        TiltTracker turned = direct();
        Phone phone = Phone.upright();
        Random random = new Random(2);
        for (int i = 0; i < 300; ++i) {
            // Radians a second, around rates of a hand.
            float[] rate = {(float) random.nextGaussian(), (float) random.nextGaussian(),
                (float) random.nextGaussian()};
            now += 10 * MILLISECOND;
            if (i > 0) {
                phone.turn(Math.toDegrees(rate[0] * 0.01), Math.toDegrees(rate[1] * 0.01),
                        Math.toDegrees(rate[2] * 0.01));
            }
            tracker.gyroscope(now, rate);
            turned.rotationVector(now, phone.rotationVector());
            tracker.advance(now);
            turned.advance(now);
            assertArrayEquals(view(turned), view(tracker), 1e-3f);
        }
    }

    @Test
    public void theAccelerometerFeelsTheTiltOfAFlatPhoneBothWays() {
        TiltTracker tracker = direct();
        Phone phone = Phone.flat();
        for (int i = 0; i < 400; ++i) {
            now += 10 * MILLISECOND;
            tracker.accelerometer(now, phone.gravity());
            tracker.advance(now);
            if (i < 80) {
                phone.turn(0.05, -0.1, 0);
            }
        }
        // 4 and 8 degrees in one go: 8.944 about their common axis.
        float all = share(Math.hypot(4, 8));
        assertArrayEquals(new float[] {all * 0.8944f, all * 0.4472f}, view(tracker), 2e-3f);
    }

    @Test
    public void theAccelerometerOfAnUprightPhoneFeelsUpAndDownOnly() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        for (int i = 0; i < 400; ++i) {
            now += 10 * MILLISECOND;
            tracker.accelerometer(now, phone.gravity());
            tracker.advance(now);
            if (i < 80) {
                phone.turnAround(0.1).turn(0.1, 0, 0);
            }
        }
        assertArrayEquals(new float[] {0f, share(8)}, view(tracker), 5e-3f);
    }

    @Test
    public void aShakenAccelerometerDoesNotMove() {
        TiltTracker tracker = direct();
        tracker.accelerometer(now, Phone.flat().gravity());
        tracker.advance(now);
        float[][] knocks = {{40f, 0f, 9.8f}, {0f, 0f, 0f}, {0f, 1f, -2f}, {-60f, 60f, 0f}};
        for (int i = 0; i < 200; ++i) {
            now += 10 * MILLISECOND;
            tracker.accelerometer(now, i % 2 == 0 ? knocks[i / 2 % 4] : Phone.flat().gravity());
            tracker.advance(now);
            assertArrayEquals(CENTRE, view(tracker), 1e-6f);
        }
    }

    @Test
    public void changingTheSensorDoesNotMove() {
        TiltTracker tracker = direct();
        float[] tilted = turn(tracker, Phone.upright(), 5, 8, 0);
        now += 10 * MILLISECOND;
        tracker.accelerometer(now, Phone.overhead().gravity());
        tracker.advance(now);
        assertArrayEquals(tilted, view(tracker), 0f);
        now += 10 * MILLISECOND;
        tracker.rotationVector(now, Phone.flat().rotationVector());
        tracker.advance(now);
        assertArrayEquals(tilted, view(tracker), 0f);
        // The first turning speed says nothing about the time before.
        now += 10 * MILLISECOND;
        tracker.gyroscope(now, new float[] {-2f, 2f, 0f});
        tracker.advance(now);
        assertArrayEquals(tilted, view(tracker), 0f);
    }

    @Test
    public void samplesThatAreNotFiniteAreAsIfTheyWereNotThere() {
        float[][] broken = {
            {Float.NaN, 0f, 0f, 1f}, {0f, Float.POSITIVE_INFINITY, 0f, 1f},
            {0f, 0f, Float.NEGATIVE_INFINITY, 0f}, {0f, 0f, 0f, Float.NaN},
            {Float.NaN, Float.NaN, Float.NaN, Float.NaN}, {0f, 0f, 0f, 0f}, {9f, 9f, 9f, 9f},
            {3e38f, 3e38f, 3e38f, 3e38f}};
        TiltTracker tracker = direct();
        TiltTracker undisturbed = direct();
        Phone phone = Phone.upright();
        for (float[] values : broken) {
            phone.turn(0.5, 1, 0);
            now += 5 * MILLISECOND;
            tracker.rotationVector(now, values);
            tracker.rotationVector(now, new float[] {values[0], values[1], Float.NaN});
            now += 5 * MILLISECOND;
            tracker.rotationVector(now, phone.rotationVector());
            undisturbed.rotationVector(now, phone.rotationVector());
            tracker.advance(now);
            undisturbed.advance(now);
            assertArrayEquals(view(undisturbed), view(tracker), 0f);
        }
        for (float wrong : new float[] {Float.NaN, Float.POSITIVE_INFINITY}) {
            for (int i = 0; i < 5; ++i) {
                now += 10 * MILLISECOND;
                tracker.gyroscope(now, new float[] {0f, wrong, 0f});
                tracker.accelerometer(now, new float[] {0f, wrong, 9f});
                tracker.drag(wrong, 0f);
                tracker.drag(0f, -wrong);
                tracker.advance(now);
                assertArrayEquals(view(undisturbed), view(tracker), 0f);
            }
        }
    }

    @Test
    public void aBrokenSampleOfTheGyroscopeTakesNoTime() {
        TiltTracker tracker = direct();
        tracker.gyroscope(now, new float[] {1f, 0f, 0f});
        tracker.gyroscope(now + 50 * MILLISECOND, new float[] {Float.NaN, 0f, 0f});
        tracker.gyroscope(now + 100 * MILLISECOND, new float[] {1f, 0f, 0f});
        frames(tracker, 0.02);
        assertEquals(share(Math.toDegrees(0.1)), tracker.y(), 1e-4f);
    }

    @Test
    public void aHandThatTremblesDoesNotShakeTheAccelerometersView() {
        TiltTracker tracker = direct();
        float[] last = CENTRE;
        for (int i = 0; i < 100; ++i) {
            now += 10 * MILLISECOND;
            // To and fro by 6 degrees, were it taken as it comes, and that is 0.4 of the way.
            tracker.accelerometer(now, new float[] {i % 2, -(i % 2), 9.8f});
            tracker.advance(now);
            assertArrayEquals(last, view(tracker), 0.04f);
            last = view(tracker);
        }
    }

    // Time

    @Test
    public void repeatedAndLateSamplesAreIgnored() {
        TiltTracker tracker = direct();
        TiltTracker orderly = direct();
        Phone phone = Phone.upright();
        Phone late = phone.copy();
        for (int i = 0; i < 10; ++i) {
            phone.turn(0, 1, 0);
            now += 10 * MILLISECOND;
            tracker.rotationVector(now, phone.rotationVector());
            tracker.rotationVector(now, late.turn(5, 0, 0).rotationVector());
            tracker.rotationVector(now - 7 * MILLISECOND, late.rotationVector());
            tracker.rotationVector(now - 499 * MILLISECOND, late.rotationVector());
            orderly.rotationVector(now, phone.rotationVector());
            tracker.advance(now);
            tracker.advance(now);
            tracker.advance(now - 3 * MILLISECOND);
            orderly.advance(now);
            assertArrayEquals(view(orderly), view(tracker), 0f);
        }
        float[] rate = {1f, 0f, 0f};
        TiltTracker gyroscope = direct();
        for (long time : new long[] {0, 100, 100, 60, 100}) {
            gyroscope.gyroscope(now + time * MILLISECOND, rate);
        }
        gyroscope.advance(now);
        gyroscope.advance(now + 1);
        assertEquals(share(Math.toDegrees(0.1)), gyroscope.y(), 1e-4f);
    }

    @Test
    public void lostSamplesChangeNothingInTheEnd() {
        TiltTracker tracker = direct();
        TiltTracker complete = direct();
        Phone phone = Phone.upright();
        Random random = new Random(3);
        for (int i = 0; i <= 100; ++i) {
            phone.turn(0.07, -0.1, 0.3);
            now += 10 * MILLISECOND;
            complete.rotationVector(now, phone.rotationVector());
            if (i == 0 || i == 100 || random.nextInt(4) == 0) {
                tracker.rotationVector(now, phone.rotationVector());
            }
        }
        frames(complete, 0.02);
        frames(tracker, 0.02);
        // In longer steps the order of turns about several axes is known less well.
        assertArrayEquals(view(complete), view(tracker), 0.02f);
    }

    @Test
    public void aLongGapMovesNothing() {
        for (long gap : new long[] {501, 60_000, -511, -60_000}) {
            TiltTracker tracker = direct();
            Phone phone = Phone.upright();
            float[] tilted = turn(tracker, phone, 4, 8, 0);
            now += gap * MILLISECOND;
            assertArrayEquals(tilted, step(tracker, phone.turn(-30, 20, 10)), 0f);
            // And it goes on from there.
            float[] later = turn(tracker, phone, 0, -8, 0);
            assertEquals(0f, later[0], 5e-3f);
        }
    }

    @Test
    public void aLongGapBetweenFramesNeitherRecentresNorJumps() {
        TiltTracker tracker = new TiltTracker();
        Phone phone = Phone.upright();
        turn(tracker, phone, 0, 10, 0);
        phone.turn(0, 3, 0);
        now += 10 * MILLISECOND;
        tracker.rotationVector(now, phone.rotationVector());
        float[] before = view(tracker);
        tracker.advance(now + 3_600_000 * MILLISECOND);
        assertArrayEquals(before, view(tracker), 0f);
    }

    @Test
    public void theClocksOfSamplesAndFramesMayDiffer() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        for (int i = 0; i <= 8; ++i) {
            tracker.rotationVector(900_000_000 * MILLISECOND + i * 10 * MILLISECOND,
                    phone.rotationVector());
            tracker.advance(-5 * MILLISECOND + i * 10 * MILLISECOND);
            phone.turn(0, 1, 0);
        }
        assertEquals(-share(8), tracker.x(), 1e-4f);
    }

    @Test
    public void theRateOfTheSensorDoesNotMatter() {
        // A sway of 10 degrees in 2 s is up to 31 degrees a second; between two samples at 50 Hz
        // that is 0.63 degrees, or 0.043 of the way, by which the slower sensor may lag.
        TiltTracker slow = new TiltTracker();
        TiltTracker fast = new TiltTracker();
        double largest = 0;
        for (int millisecond = 0; millisecond <= 6000; ++millisecond) {
            double angle = Math.PI * millisecond / 1000;
            float[] values = Phone.upright()
                    .turn(6 * Math.sin(1.3 * angle), 10 * Math.sin(angle),
                            15 * Math.sin(0.7 * angle))
                    .rotationVector();
            if (millisecond % 20 == 0) {
                slow.rotationVector(millisecond * MILLISECOND, values);
            }
            if (millisecond % 5 == 0) {
                fast.rotationVector(millisecond * MILLISECOND, values);
            }
            if (millisecond % 8 == 0) {
                slow.advance(millisecond * MILLISECOND);
                fast.advance(millisecond * MILLISECOND);
                assertArrayEquals(view(fast), view(slow), 0.043f);
                largest = Math.max(largest, Math.abs(fast.x()));
            }
        }
        assertTrue("it did not move", largest > 0.5);
    }

    @Test
    public void smoothingTakesTheSameTimeAtEveryFrameRate() {
        for (int rate : new int[] {10, 30, 60, 120, 1000}) {
            TiltTracker tracker = new TiltTracker();
            tracker.setSmoothing(0.2f);
            tracker.setRecentring(Float.POSITIVE_INFINITY);
            Phone phone = Phone.upright();
            tracker.rotationVector(now, phone.rotationVector());
            tracker.rotationVector(now + 1, phone.turn(0, -15, 0).rotationVector());
            for (int i = 0; i <= rate; ++i) {
                tracker.advance(now + i * 1_000_000_000L / rate);
                double expected = 1 - Math.exp(-i / (0.2 * rate));
                assertEquals(expected, tracker.x(), 1e-4);
            }
        }
    }

    // The rest position

    @Test
    public void aTiltThatIsHeldBecomesTheRestPosition() {
        TiltTracker tracker = new TiltTracker();
        tracker.setSmoothing(0f);
        tracker.setRecentring(3f);
        Phone phone = Phone.upright();
        tracker.rotationVector(now, phone.rotationVector());
        tracker.rotationVector(now + 1, phone.turn(0, -12, 0).rotationVector());
        tracker.advance(now);
        frames(tracker, 3);
        assertEquals(share(12 / Math.E), tracker.x(), 1e-3f);
        frames(tracker, 12);
        assertEquals(0f, tracker.x(), 0f);
        turn(tracker, phone, 0, 6, 0);
        // Less what 70 ms of recentring take.
        assertEquals(-share(6), tracker.x(), 0.02f);
    }

    @Test
    public void aFingerKeepsTheRestPosition() {
        TiltTracker tracker = new TiltTracker();
        tracker.setSmoothing(0f);
        step(tracker, Phone.upright());
        tracker.setHeld(true);
        tracker.drag(-0.25f, 0f);
        frames(tracker, 20);
        assertEquals(share(7.5), tracker.x(), 1e-4f);
        tracker.setHeld(false);
        frames(tracker, 5);
        assertEquals(share(7.5 / Math.E), tracker.x(), 1e-3f);
    }

    @Test
    public void theWayBackFromBeyondFullSwingShowsAtOnce() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        assertEquals(-1f, turn(tracker, phone, 0, 50, 0)[0], 1e-6f);
        assertEquals(-share(11), turn(tracker, phone, 0, -4, 0)[0], 1e-3f);
        tracker = direct();
        assertEquals(-1f, turn(tracker, phone, -50, 0, 0)[1], 1e-6f);
        assertEquals(-share(11), turn(tracker, phone, 4, 0, 0)[1], 1e-3f);
    }

    @Test
    public void aSmallTiltDoesNotCount() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        assertArrayEquals(CENTRE, turn(tracker, phone, 0.28, -0.4, 0), 0f);
        // Just beyond, it starts from nothing.
        assertArrayEquals(CENTRE, turn(tracker, phone, 0.03, -0.05, 0), 0.01f);
        assertTrue(tracker.x() > 0f && tracker.y() > 0f);
    }

    @Test
    public void theRangeCanBeSet() {
        TiltTracker tracker = direct();
        tracker.setRange(0f, 30f);
        assertArrayEquals(new float[] {-8f / 30f, 0f},
                turn(tracker, Phone.upright(), 0, 8, 0), 1e-4f);
    }

    // The display

    @Test
    public void tiltsCountInTheAxesOfTheDisplay() {
        // The phone is turned to the left by the angle, the display's contents to the right.
        for (int rotation : new int[] {0, 90, 180, 270}) {
            TiltTracker tracker = direct();
            tracker.setDisplayRotation(rotation);
            Phone phone = Phone.upright().turn(0, 0, rotation);
            double angle = Math.toRadians(rotation);
            // Of what the viewer sees, the right edge goes away by 8 degrees and the top comes by
            // 4.
            double aboutX = 4 * Math.cos(angle) + 8 * Math.sin(angle);
            double aboutY = 8 * Math.cos(angle) - 4 * Math.sin(angle);
            float all = share(Math.hypot(4, 8));
            assertArrayEquals("rotation " + rotation,
                    new float[] {-all * 0.8944f, all * 0.4472f},
                    turn(tracker, phone, aboutX, aboutY, 0), 1e-4f);
        }
    }

    @Test
    public void turningThePhoneToLandscapeDoesNotJump() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        float[] tilted = turn(tracker, phone, 3, -6, 0);
        turn(tracker, phone, 0, 0, 60);
        tracker.setDisplayRotation(90);
        assertArrayEquals(tilted, turn(tracker, phone, 0, 0, 30), 1e-4f);
        // The phone's x axis points up now: about it is left and right.
        float[] later = turn(tracker, phone, -3, 0, 0);
        assertTrue(later[0] > tilted[0] + 0.15f || later[0] < tilted[0] - 0.15f);
        assertEquals(tilted[1], later[1], 0.02f);
    }

    // Reduced motion, idle motion, fingers

    @Test
    public void reducedMotionRestsAtTheCentre() {
        TiltTracker tracker = new TiltTracker();
        tracker.setReducedMotion(true);
        tracker.setIdle(true);
        Phone phone = Phone.upright();
        for (int i = 0; i < 200; ++i) {
            assertArrayEquals(CENTRE, step(tracker, phone.turn(1, 2, 3)), 0f);
            tracker.gyroscope(now, new float[] {3f, 3f, 3f});
            tracker.accelerometer(now, phone.gravity());
        }
    }

    @Test
    public void reducedMotionComesAndGoesWithoutAJump() {
        TiltTracker tracker = new TiltTracker();
        Phone phone = Phone.upright();
        turn(tracker, phone, 0, -12, 0);
        float before = tracker.x();
        tracker.setReducedMotion(true);
        float after = step(tracker, phone)[0];
        assertTrue(after < before && after > before * 0.85f);
        frames(tracker, 2);
        assertArrayEquals(CENTRE, view(tracker), 1e-6f);
        turn(tracker, phone, 0, -30, 0);
        tracker.setReducedMotion(false);
        assertArrayEquals(CENTRE, step(tracker, phone), 1e-6f);
    }

    @Test
    public void withReducedMotionAFingerStillMoves() {
        TiltTracker tracker = direct();
        tracker.setReducedMotion(true);
        frames(tracker, 0.1);
        tracker.drag(-0.5f, 0f);
        frames(tracker, 0.1);
        assertEquals(1f, tracker.x(), 1e-6f);
    }

    @Test
    public void nearThingsFollowTheFinger() {
        TiltTracker tracker = direct();
        frames(tracker, 0.1);
        // To the right and down: the eye goes to the left and up.
        tracker.drag(0.2f, 0.1f);
        frames(tracker, 0.1);
        float all = share(Math.hypot(6, 3));
        assertArrayEquals(new float[] {-all * 0.8944f, all * 0.4472f}, view(tracker), 1e-4f);
    }

    @Test
    public void idleMotionIsASlowSmallEight() {
        TiltTracker tracker = new TiltTracker();
        tracker.setIdle(true);
        tracker.advance(now);
        float[] last = CENTRE;
        float widest = 0f;
        float highest = 0f;
        for (int i = 0; i < 1200; ++i) {
            frames(tracker, 0.01);
            // 0.4 * 2 pi / 12 s is the fastest of either axis.
            assertArrayEquals(last, view(tracker), 0.0022f);
            last = view(tracker);
            widest = Math.max(widest, Math.abs(last[0]));
            highest = Math.max(highest, Math.abs(last[1]));
        }
        assertEquals(0.4f, widest, 0.01f);
        assertEquals(0.2f, highest, 0.01f);
        // Once round in 12 s.
        frames(tracker, 12);
        assertArrayEquals(last, view(tracker), 1e-3f);
    }

    // Always

    @Test
    public void aWrongSampleDoesNotThrowTheView() {
        TiltTracker tracker = direct();
        Phone phone = Phone.upright();
        float[] tilted = turn(tracker, phone, 4, 8, 0);
        assertArrayEquals(tilted, step(tracker, Phone.overhead().turn(0, 50, 0)), 0f);
        assertArrayEquals(tilted, step(tracker, phone), 0f);
    }

    @Test
    public void noInputLeavesTheRange() {
        Random random = new Random(4);
        for (int run = 0; run < 50; ++run) {
            TiltTracker tracker = new TiltTracker();
            tracker.setSmoothing(random.nextFloat() * 0.2f);
            tracker.setRecentring(0.5f + 5f * random.nextFloat());
            tracker.setRange(random.nextFloat() * 0.4f, 1f + 59f * random.nextFloat());
            tracker.setIdle(random.nextBoolean());
            Phone phone = Phone.upright();
            for (int i = 0; i < 500; ++i) {
                now += random.nextInt(40) * MILLISECOND - 5 * MILLISECOND;
                double speed = Math.exp(6 * random.nextDouble() - 2);
                phone.turn(speed * random.nextGaussian(), speed * random.nextGaussian(),
                        speed * random.nextGaussian());
                float[] noise = {20 * (float) random.nextGaussian(),
                    20 * (float) random.nextGaussian(), 20 * (float) random.nextGaussian()};
                switch (random.nextInt(5)) {
                    case 0: tracker.gyroscope(now, noise); break;
                    case 1: tracker.accelerometer(now, noise); break;
                    case 2: tracker.drag(noise[0], noise[1]); break;
                    case 3: tracker.setDisplayRotation(90 * random.nextInt(4)); break;
                    default: tracker.rotationVector(now, phone.rotationVector()); break;
                }
                tracker.advance(now);
                assertTrue(tracker.x() >= -1f && tracker.x() <= 1f);
                assertTrue(tracker.y() >= -1f && tracker.y() <= 1f);
            }
        }
    }

    @Test
    public void noStepIsLargerThanTheHandExplains() {
        // A trembling hand: times jitter by up to 4 ms, a fifth of the samples is lost. Per degree
        // the view goes 1 / 14.5 of its way; a frame shows at most what was turned since the last
        // one, and what waited in the smoothing, which is turned in its time constant.
        Random random = new Random(5);
        for (Phone phone : new Phone[] {Phone.flat(), Phone.upright(), Phone.overhead()}) {
            TiltTracker tracker = new TiltTracker();
            float[] last = CENTRE;
            long frame = 0;
            double fastest = 80.0;
            for (int millisecond = 0; millisecond < 20_000; ++millisecond) {
                double time = millisecond / 1000.0;
                phone.turn(fastest / 2 * Math.sin(2.1 * time) / 1000,
                        fastest / 2 * Math.cos(1.7 * time) / 1000,
                        fastest / 2 * Math.sin(0.9 * time) / 1000);
                if (millisecond % 10 == 0 && random.nextInt(5) > 0) {
                    long jitter = (long) (4 * MILLISECOND * random.nextDouble());
                    tracker.rotationVector(
                            millisecond * MILLISECOND + jitter, phone.rotationVector());
                }
                if (millisecond == 8000) {
                    tracker.setDisplayRotation(90);
                }
                if (millisecond % 16 == 0) {
                    tracker.advance(millisecond * MILLISECOND);
                    // One frame of the hand's turn, and recentring's: full swing in 5 s.
                    double bound = (fastest * 0.016 + 15 * 0.016 / 5) / 14.5;
                    assertArrayEquals("at " + time, last, view(tracker), (float) bound);
                    last = view(tracker);
                    ++frame;
                }
            }
            assertEquals(1250, frame);
        }
    }

    @Test
    public void theSameCallsGiveTheSamePositions() {
        List<float[]> first = new ArrayList<>();
        for (int run = 0; run < 2; ++run) {
            TiltTracker tracker = new TiltTracker();
            Random random = new Random(6);
            for (int i = 0; i < 300; ++i) {
                tracker.gyroscope(i * 9 * MILLISECOND, new float[] {(float) random.nextGaussian(),
                    (float) random.nextGaussian(), (float) random.nextGaussian()});
                tracker.advance(i * 9 * MILLISECOND);
                if (run == 0) {
                    first.add(view(tracker));
                } else {
                    assertArrayEquals(first.get(i), view(tracker), 0f);
                }
            }
        }
    }

    @Test
    public void settingsOutOfRangeAreRefusedInASentence() {
        TiltTracker tracker = new TiltTracker();
        refuses("full swing: 0.5 degrees is not from 1 to 60", () -> tracker.setRange(0f, 0.5f));
        refuses("full swing: NaN degrees is not from 1 to 60",
                () -> tracker.setRange(0f, Float.NaN));
        refuses("dead zone: 6.0 degrees is not from 0 to 5.0, half of full swing",
                () -> tracker.setRange(6f, 10f));
        refuses("dead zone: -1.0 degrees is not from 0 to 5.0, half of full swing",
                () -> tracker.setRange(-1f, 10f));
        refuses("smoothing: -0.1 seconds is not from 0 to 5", () -> tracker.setSmoothing(-0.1f));
        refuses("recentring: 0.0 seconds is not 0.5 or more", () -> tracker.setRecentring(0f));
        refuses("display rotation: 45 degrees is not 0, 90, 180 or 270",
                () -> tracker.setDisplayRotation(45));
        refuses("gyroscope: a sample has 3 or more values, not 2",
                () -> tracker.gyroscope(0, new float[2]));
        refuses("rotation vector: a sample has 3 or more values, not 0",
                () -> tracker.rotationVector(0, new float[0]));
        refuses("accelerometer: a sample has 3 or more values, not 1",
                () -> tracker.accelerometer(0, new float[1]));
    }

    private static void refuses(String sentence, org.junit.function.ThrowingRunnable call) {
        assertEquals(sentence,
                assertThrows(IllegalArgumentException.class, call).getMessage());
    }
}
