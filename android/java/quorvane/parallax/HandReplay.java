package quorvane.parallax;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStream;
import java.io.InputStreamReader;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import org.json.JSONException;
import org.json.JSONObject;

/**
 * View positions of a hand that were recorded, so that a picture moves the same way again: a line
 * for each, {@code {"t": 0.25, "x": -0.1, "y": 0.4}}, with seconds that rise from line to line and
 * positions from -1 to 1. Between two lines the view goes straight; at the end it begins anew.
 */
final class HandReplay {
    private static final int MOST_LINES = 100_000;

    private final double[] times;
    private final float[] xs;
    private final float[] ys;

    private HandReplay(double[] times, float[] xs, float[] ys) {
        this.times = times;
        this.xs = xs;
        this.ys = ys;
    }

    /** @throws ParallaxException for a file that is none; names the line */
    static HandReplay read(ImageSource file) {
        double[] times = new double[256];
        float[] xs = new float[256];
        float[] ys = new float[256];
        int count = 0;
        int number = 0;
        try (InputStream stream = file.open();
                BufferedReader lines = new BufferedReader(
                        new InputStreamReader(stream, StandardCharsets.UTF_8))) {
            for (String line = lines.readLine(); line != null; line = lines.readLine()) {
                ++number;
                if (line.trim().isEmpty()) {
                    continue;
                }
                if (count == MOST_LINES) {
                    throw new ParallaxException("recorded hand: more than 100,000 lines");
                }
                if (count == times.length) {
                    times = Arrays.copyOf(times, 2 * count);
                    xs = Arrays.copyOf(xs, 2 * count);
                    ys = Arrays.copyOf(ys, 2 * count);
                }
                JSONObject position = new JSONObject(line);
                times[count] = position.getDouble("t");
                xs[count] = (float) position.getDouble("x");
                ys[count] = (float) position.getDouble("y");
                boolean rises = count == 0 || times[count] > times[count - 1];
                if (!rises || !(Math.abs(xs[count]) <= 1f) || !(Math.abs(ys[count]) <= 1f)
                        || !(Math.abs(times[count]) < 1e6)) {
                    throw new ParallaxException("recorded hand: line " + number
                            + ": t has to rise, x and y are from -1 to 1");
                }
                ++count;
            }
        } catch (JSONException e) {
            throw new ParallaxException("recorded hand: line " + number
                    + " is not like {\"t\": 0.25, \"x\": -0.1, \"y\": 0.4}");
        } catch (IOException | SecurityException e) {
            throw new ParallaxException("recorded hand: cannot be read (" + e.getMessage() + ")");
        }
        if (count == 0) {
            throw new ParallaxException("recorded hand: no line in it");
        }
        return new HandReplay(Arrays.copyOf(times, count), xs, ys);
    }

    /** The position some seconds after the beginning. */
    float xAt(double seconds) {
        return at(xs, seconds);
    }

    float yAt(double seconds) {
        return at(ys, seconds);
    }

    private float at(float[] positions, double seconds) {
        int last = times.length - 1;
        double length = times[last] - times[0];
        if (last == 0) {
            return positions[0];
        }
        double time = times[0] + seconds % length;
        int found = Arrays.binarySearch(times, time);
        int after = found >= 0 ? found : -found - 1;
        if (after == 0) {
            return positions[0];
        }
        if (after > last) {
            return positions[last];
        }
        double part = (time - times[after - 1]) / (times[after] - times[after - 1]);
        return (float) (positions[after - 1] + part * (positions[after] - positions[after - 1]));
    }
}
