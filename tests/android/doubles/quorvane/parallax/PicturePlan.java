package quorvane.parallax;

import java.nio.ByteBuffer;
import java.util.LinkedHashMap;
import java.util.Map;
import java.util.concurrent.atomic.AtomicInteger;

/** Says what it was asked for last, and halves the swing when it shows the whole photo. */
public final class PicturePlan {
    static volatile String asked;
    /** Of the depth map that was given. */
    static volatile int firstSample;
    static volatile boolean showsFarther;
    static final AtomicInteger LOOKED = new AtomicInteger();

    public double swing = 1.0;
    private int depthWidth;
    private int depthHeight;
    private final Map<String, Double> parameters = new LinkedHashMap<>();

    Map<String, Double> parameters() {
        return parameters;
    }

    int depthWidth() {
        return depthWidth;
    }

    int depthHeight() {
        return depthHeight;
    }

    ByteBuffer depth() {
        return ByteBuffer.allocateDirect(depthWidth * depthHeight);
    }

    static boolean largerIsFarther(int photoWidth, int photoHeight, ByteBuffer rgba, int depthWidth,
            int depthHeight, ByteBuffer depth) {
        LOOKED.incrementAndGet();
        return showsFarther;
    }

    public static final class Request {
        private final StringBuilder words = new StringBuilder();
        private final FitSizes fit;
        private final Map<String, Double> parameters = new LinkedHashMap<>();
        private boolean whole;

        public Request(FitSizes fit, int width, int height) {
            this.fit = fit;
            words.append(width).append(" x ").append(height);
        }

        public Request orientation(int code) {
            return this;
        }

        public Request parameter(String name, double value) {
            parameters.put(name, value);
            words.append(", ").append(name).append(" = ").append(value);
            return this;
        }

        public Request cleanEdges(boolean clean) {
            words.append(clean ? ", clean" : ", soft");
            return this;
        }

        public Request pivotAt(double x, double y) {
            words.append(", pivot ").append(x).append(" ").append(y);
            return this;
        }

        public Request pivotOff() {
            words.append(", pivot off");
            return this;
        }

        public Request frame(double part) {
            words.append(", frame ").append(part);
            whole = part == 1.0;
            return this;
        }

        public Request photoRgba(ByteBuffer rgba) {
            return this;
        }

        public PicturePlan plan(int depthWidth, int depthHeight, ByteBuffer depth) {
            asked = words + ", depth " + depthWidth + " x " + depthHeight;
            firstSample = depth.get(0) & 0xff;
            PicturePlan plan = new PicturePlan();
            plan.swing = whole ? 0.5 : 1.0;
            plan.depthWidth = fit.depthWidth;
            plan.depthHeight = fit.depthHeight;
            plan.parameters.putAll(parameters);
            return plan;
        }
    }
}
