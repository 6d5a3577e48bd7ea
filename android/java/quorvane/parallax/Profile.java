package quorvane.parallax;

import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.util.Iterator;
import java.util.LinkedHashMap;
import java.util.Map;
import org.json.JSONException;
import org.json.JSONObject;

/**
 * What a profile says of a view that follows the hand; docs/profile.md has the file's form. The rest,
 * which concerns clips and files, changes nothing here.
 */
final class Profile {
    private static final int LARGEST_FILE = 65_536;

    final Map<String, Double> parameters = new LinkedHashMap<>();
    final ParallaxStage.Composition composition = new ParallaxStage.Composition();

    private Profile() {}

    /** @throws ParallaxException for a file that is none; names the key */
    static Profile read(ImageSource file) {
        try {
            return parse(text(file));
        } catch (IOException | SecurityException e) {
            throw new ParallaxException("profile: cannot be read (" + e.getMessage() + ")");
        }
    }

    static Profile parse(String text) {
        try {
            JSONObject root = new JSONObject(text);
            if (root.optInt("quorvane_profile") != 1) {
                throw new ParallaxException(
                        "profile: \"quorvane_profile\" is not 1, the form that is known here");
            }
            Profile profile = new Profile();
            JSONObject parameters = root.optJSONObject("parameters");
            Iterator<String> names =
                    parameters == null ? new JSONObject().keys() : parameters.keys();
            while (names.hasNext()) {
                String name = names.next();
                Object value = parameters.get(name);
                if (!(value instanceof Number)) {
                    throw new ParallaxException("profile: " + name + " is no number");
                }
                ParallaxRenderer.checkParameter(name, ((Number) value).doubleValue());
                profile.parameters.put(name, ((Number) value).doubleValue());
            }
            JSONObject options = root.optJSONObject("options");
            if (options != null) {
                profile.take(options);
            }
            return profile;
        } catch (JSONException e) {
            throw new ParallaxException("profile: not JSON of a profile (" + e.getMessage() + ")");
        }
    }

    private void take(JSONObject options) {
        String frame = options.optString("frame", "auto");
        composition.frame = frame.equals("auto") ? Double.NaN : number("frame", frame, 0.05, 1.0);
        String pivot = options.optString("pivot", "auto");
        composition.pivotOff = pivot.equals("off");
        if (!pivot.equals("off") && !pivot.equals("auto")) {
            String[] place = pivot.split(",", -1);
            if (place.length != 2) {
                throw new ParallaxException("profile: pivot '" + pivot
                        + "'; it is auto, off, or X,Y with each from 0 to 1");
            }
            composition.pivot = new double[] {
                number("pivot", place[0], 0.0, 1.0), number("pivot", place[1], 0.0, 1.0)};
        }
        composition.cleanEdges = chosen(options, "edges", "clean", "soft");
        composition.inverted = !chosen(options, "invert-depth", "auto", "no", "yes");
        composition.nearEndShows = options.optString("invert-depth", "").equals("auto");
        composition.amount = number("amount", options.optString("amount", "1"), 0.0, 1.0);
    }

    /** Whether an option has another value than the last of these; the first is the default. */
    private static boolean chosen(JSONObject options, String name, String... known) {
        String value = options.optString(name, known[0]);
        for (String one : known) {
            if (value.equals(one)) {
                return !value.equals(known[known.length - 1]);
            }
        }
        throw new ParallaxException("profile: " + name + " '" + value + "'; known are "
                + String.join(", ", known));
    }

    private static double number(String name, String text, double least, double most) {
        double value;
        try {
            value = Double.parseDouble(text);
        } catch (NumberFormatException e) {
            value = Double.NaN;
        }
        if (!(value >= least && value <= most)) {
            throw new ParallaxException("profile: " + name + " '" + text + "' is not from " + least
                    + " to " + most);
        }
        return value;
    }

    private static String text(ImageSource file) throws IOException {
        try (InputStream stream = file.open()) {
            ByteArrayOutputStream all = new ByteArrayOutputStream();
            byte[] piece = new byte[4096];
            for (int count = stream.read(piece); count >= 0; count = stream.read(piece)) {
                all.write(piece, 0, count);
                if (all.size() > LARGEST_FILE) {
                    throw new ParallaxException("profile: larger than 65,536 bytes");
                }
            }
            return new String(all.toByteArray(), StandardCharsets.UTF_8);
        }
    }
}
