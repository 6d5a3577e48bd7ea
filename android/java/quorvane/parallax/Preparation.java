package quorvane.parallax;

import android.graphics.Bitmap;
import java.nio.ByteBuffer;
import java.util.LinkedHashMap;
import java.util.Map;

/**
 * Makes of images what a surface shows of them: pixels that suit its size, and the plan of the
 * picture. It runs once, on a thread where nobody waits for it.
 */
final class Preparation implements Runnable {
    /** The tuned parameters for a phone. */
    static final int ORIENTATION = 4;
    // A picture shows at least this part of the photo's sides, nearly always.
    private static final double VISIBLE = 0.8;
    // The grid is coarser.
    private static final int LONGEST_DEPTH = 1280;
    private static final int SHORTEST_DEPTH = 256;
    // Of the photo in which the near end is looked for, on a grid of 128.
    private static final int LONGEST_SHOWING = 512;

    final Images images;
    final int width;
    final int height;
    private final int largestTexture;
    private final ParallaxStage.Composition composition;
    private final Map<String, Double> parameters;
    private Preparation before;

    /** Set by {@link #run}. */
    FitSizes fit;
    PicturePlan plan;
    /** The photo's pixels in the fit's size; null where those of the preparation before still do. */
    ByteBuffer rgba;
    /** What went wrong, for the listener; null where nothing did. */
    String failure;

    private int photoWidth;
    private int photoHeight;
    private Samples depth;
    /** What the photo shows; null while nobody has asked. */
    private Boolean largerIsFarther;

    /**
     * @param before what the renderer shows; null where it shows nothing yet
     * @param composition a copy
     * @param parameters those that the app has set
     */
    Preparation(Images images, int width, int height, int largestTexture,
            ParallaxStage.Composition composition, Map<String, Double> parameters,
            Preparation before) {
        this.images = images;
        this.width = width;
        this.height = height;
        this.largestTexture = largestTexture;
        this.composition = composition;
        this.parameters = new LinkedHashMap<>(parameters);
        this.before = before != null && before.images.equals(images) ? before : null;
    }

    @Override
    public void run() {
        try {
            prepare();
        } catch (Throwable e) {
            // Nothing that is thrown here may end the app.
            failure = ParallaxStage.sentence(e);
        } finally {
            before = null;
        }
    }

    private void prepare() {
        // What has been read from a portrait photo once.
        Pixels.Portrait[] portrait = {null};
        depth = before != null ? before.depth : depthSamples(portrait);
        Pixels.Bounds bounds = null;
        if (before != null) {
            photoWidth = before.photoWidth;
            photoHeight = before.photoHeight;
        } else if (images.bitmap != null) {
            Images.usable("photo", images.bitmap);
            photoWidth = images.bitmap.getWidth();
            photoHeight = images.bitmap.getHeight();
        } else {
            bounds = bounds(portrait);
            photoWidth = bounds.width;
            photoHeight = bounds.height;
        }
        largerIsFarther = before != null ? before.largerIsFarther : null;
        if (largerIsFarther == null && composition.nearEndShows && images.depth != null
                && !images.depth.isLargerFarther()) {
            largerIsFarther = seemsFarther(bounds);
        }
        fit = before != null && stillFits() ? before.fit : newFit();
        if (before == null || fit != before.fit || planReadsPhoto()) {
            rgba = Pixels.rgba(photo(portrait, bounds));
        }
        plan = planned();
    }

    private Samples depthSamples(Pixels.Portrait[] portrait) {
        int longest = Math.max(SHORTEST_DEPTH,
                Math.min(LONGEST_DEPTH, Math.max(width, height)));
        ImageSource file = images.depth == null ? images.file : images.depth.file();
        if (file == null) {
            return images.depth.samples(longest);
        }
        Object what = images.depth == null ? "portrait" : images.depth;
        Samples kept = (Samples) PixelCache.SHARED.get(file, what, longest);
        if (kept != null) {
            return kept;
        }
        Samples read = images.depth == null
                ? portrait(portrait, longest).depth
                : images.depth.samples(longest);
        PixelCache.SHARED.put(read, read.width * read.height, file, what, longest);
        return read;
    }

    private Pixels.Bounds bounds(Pixels.Portrait[] portrait) {
        boolean inside = images.depth == null;
        Pixels.Bounds kept = (Pixels.Bounds) PixelCache.SHARED.get(images.file, "bounds", inside);
        if (kept != null) {
            return kept;
        }
        Pixels.Bounds read = inside
                ? portrait(portrait, LONGEST_DEPTH).bounds : Pixels.bounds(images.file);
        PixelCache.SHARED.put(read, 64, images.file, "bounds", inside);
        return read;
    }

    private Bitmap photo(Pixels.Portrait[] portrait, Pixels.Bounds known) {
        int[] part = fit.photoPart();
        if (images.bitmap != null) {
            return Pixels.photo(images.bitmap, part, fit.photoWidth, fit.photoHeight);
        }
        boolean inside = images.depth == null;
        Object[] what = {"photo", inside, part[0], part[1], part[2], part[3], fit.photoWidth,
            fit.photoHeight};
        Bitmap kept = (Bitmap) PixelCache.SHARED.get(images.file, what);
        if (kept != null) {
            return kept;
        }
        ImageSource file = inside ? portrait(portrait, LONGEST_DEPTH).photo : images.file;
        Pixels.Bounds bounds = known != null ? known : bounds(portrait);
        Bitmap decoded = Pixels.photo(file, bounds, part, fit.photoWidth, fit.photoHeight);
        PixelCache.SHARED.put(decoded, 4 * fit.photoWidth * fit.photoHeight, images.file, what);
        return decoded;
    }

    private Pixels.Portrait portrait(Pixels.Portrait[] read, int longest) {
        if (read[0] == null) {
            read[0] = Pixels.portrait(images.file, longest);
        }
        return read[0];
    }

    private boolean seemsFarther(Pixels.Bounds known) {
        double scale = Math.min(1.0, (double) LONGEST_SHOWING / Math.max(photoWidth, photoHeight));
        int wide = Math.max(1, (int) (photoWidth * scale));
        int high = Math.max(1, (int) (photoHeight * scale));
        int[] whole = {0, 0, photoWidth, photoHeight};
        Bitmap small = images.bitmap != null ? Pixels.photo(images.bitmap, whole, wide, high)
                : Pixels.photo(images.file, known != null ? known : Pixels.bounds(images.file),
                        whole, wide, high);
        boolean farther = PicturePlan.largerIsFarther(
                wide, high, Pixels.rgba(small), depth.width, depth.height, depth.bytes);
        small.recycle();
        return farther;
    }

    private boolean planReadsPhoto() {
        return !composition.cleanEdges || parameters.containsKey("guided_filter_rx")
                || parameters.containsKey("guided_filter_ry");
    }

    // A texture that is a little small or large looks the same, and is there.
    private boolean stillFits() {
        boolean sameFile = before.composition.cleanEdges == composition.cleanEdges;
        double shape = (double) width * before.height / ((double) height * before.width);
        double size = Math.max(width, height) / (double) Math.max(before.width, before.height);
        boolean asGiven = before.fit.photoPart()[2] <= before.fit.photoWidth;
        return sameFile && Math.abs(shape - 1.0) < 0.005 && size > 0.5 && (size < 1.15 || asGiven);
    }

    private FitSizes newFit() {
        int side = (int) Math.ceil(Math.max(width, height) / VISIBLE);
        int largestSide = Math.min(side, largestTexture);
        return composition.cleanEdges
                ? FitSizes.forCleanEdges(photoWidth, photoHeight, depth.width, depth.height, width,
                        height, largestSide)
                : FitSizes.of(photoWidth, photoHeight, depth.width, depth.height, width, height,
                        largestSide);
    }

    private PicturePlan planned() {
        PicturePlan.Request request = new PicturePlan.Request(fit, width, height)
                .orientation(ORIENTATION)
                .cleanEdges(composition.cleanEdges);
        if (rgba != null) {
            request.photoRgba(rgba);
        }
        for (Map.Entry<String, Double> parameter : parameters.entrySet()) {
            request.parameter(parameter.getKey(), parameter.getValue());
        }
        if (!Double.isNaN(composition.frame)) {
            request.frame(composition.frame);
        }
        if (composition.pivotOff) {
            request.pivotOff();
        } else if (composition.pivot != null) {
            int[] part = fit.photoPart();
            request.pivotAt(within(composition.pivot[0], photoWidth, part[0], part[2]),
                    within(composition.pivot[1], photoHeight, part[1], part[3]));
        }
        Samples used = depth.cut(fit.depthPart());
        if (composition.inverted
                || composition.nearEndShows && Boolean.TRUE.equals(largerIsFarther)) {
            used = used.inverted();
        }
        if (!composition.cleanEdges) {
            // Clean edges keep the map's own samples.
            used = used.scaled(fit.depthWidth, fit.depthHeight);
        }
        return request.plan(used.width, used.height, used.bytes);
    }

    /** Where a place of the whole photo lies on the part that is shown, or its nearest end. */
    private static double within(double place, int whole, int first, int length) {
        return Math.max(0.0, Math.min(1.0, (place * whole - first) / length));
    }
}
