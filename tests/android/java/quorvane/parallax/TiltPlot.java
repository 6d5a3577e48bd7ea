package quorvane.parallax;

import java.io.IOException;
import java.io.PrintStream;
import java.util.Locale;
import java.util.Random;

/**
 * Draws what goes into a {@link TiltTracker} and what comes out: {@code TiltPlot docs/tilt.svg}.
 * The hand's turns are made up; the samples come at 100 Hz with late and lost ones, the frames at
 * 60 Hz.
 */
final class TiltPlot {
    private static final double SECONDS = 24.0;
    private static final double LEFT = 70.0;
    private static final double WIDTH = 800.0;
    private static final double PANEL = 150.0;
    private static final double IN_TOP = 70.0;
    private static final double OUT_TOP = 255.0;
    private static final double MOST_DEGREES = 20.0;
    private static final String ACROSS = "#1b6ca8";
    private static final String UP_DOWN = "#c8553d";

    // When the samples stop, when the hand steers to landscape, and when the display follows.
    private static final double GAP_FROM = 11.0;
    private static final double GAP_TO = 12.0;
    private static final double STEER_FROM = 13.0;
    private static final double STEER_TO = 14.5;
    private static final double DISPLAY_TURNS = 14.1;

    private TiltPlot() {}

    /** Degrees of which the right edge has come nearer, smooth in time but for the tremor. */
    private static double across(double t) {
        double sway = t > 1 && t < 5 ? 12 * Math.sin((t - 1) * Math.PI) : 0;
        return sway + 10 * ramp(t, 6, 6.5) - 20 * ramp(t, GAP_FROM, GAP_TO)
                + 27 * ramp(t, 19.5, 20.5) - 10 * ramp(t, 21, 21.5);
    }

    /** Degrees of which the top edge has come nearer. */
    private static double upDown(double t) {
        return t > 15.5 && t < 18.5 ? 9 * Math.sin((t - 15.5) * Math.PI * 2 / 3) : 0;
    }

    private static double ramp(double t, double from, double to) {
        double part = Math.max(0, Math.min(1, (t - from) / (to - from)));
        return part * part * (3 - 2 * part);
    }

    public static void main(String[] arguments) throws IOException {
        StringBuilder inAcross = new StringBuilder();
        StringBuilder inUpDown = new StringBuilder();
        StringBuilder outAcross = new StringBuilder();
        StringBuilder outUpDown = new StringBuilder();
        Random random = new Random(1);
        TiltTracker tracker = new TiltTracker();
        Phone phone = Phone.upright();
        double lastAcross = 0;
        double lastUpDown = 0;
        double lastSteered = 0;
        boolean inGap = false;
        for (int millisecond = 0; millisecond < 1000 * SECONDS; ++millisecond) {
            double t = millisecond / 1000.0;
            double nowAcross = across(t) + 0.15 * Math.sin(57 * t) + 0.1 * Math.sin(83 * t);
            double nowUpDown = upDown(t) + 0.15 * Math.sin(61 * t) + 0.1 * Math.sin(77 * t);
            double steered = 90 * ramp(t, STEER_FROM, STEER_TO);
            // The viewer's axes lie turned in the phone.
            double turned = Math.toRadians(steered);
            double aboutX = nowUpDown - lastUpDown;
            double aboutY = lastAcross - nowAcross;
            phone.turn(aboutX * Math.cos(turned) + aboutY * Math.sin(turned),
                    aboutY * Math.cos(turned) - aboutX * Math.sin(turned),
                    steered - lastSteered);
            lastAcross = nowAcross;
            lastUpDown = nowUpDown;
            lastSteered = steered;

            boolean lost = random.nextInt(8) == 0 || t > GAP_FROM && t < GAP_TO;
            if (millisecond % 10 == 0 && !lost) {
                long late = (long) (3e6 * random.nextDouble());
                tracker.rotationVector(millisecond * 1_000_000L + late, phone.rotationVector());
            }
            if (millisecond % 20 == 0) {
                boolean gap = t > GAP_FROM && t < GAP_TO;
                String pen = millisecond == 0 || gap != inGap ? "M" : "L";
                if (!gap) {
                    inAcross.append(point(pen, t, IN_TOP, nowAcross / MOST_DEGREES));
                    inUpDown.append(point(pen, t, IN_TOP, nowUpDown / MOST_DEGREES));
                }
                inGap = gap;
            }
            if (t >= DISPLAY_TURNS) {
                tracker.setDisplayRotation(90);
            }
            if (millisecond % 16 == 0) {
                tracker.advance(millisecond * 1_000_000L);
                String pen = millisecond == 0 ? "M" : "L";
                outAcross.append(point(pen, t, OUT_TOP, tracker.x()));
                outUpDown.append(point(pen, t, OUT_TOP, tracker.y()));
            }
        }
        try (PrintStream out = new PrintStream(arguments[0], "UTF-8")) {
            out.println("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 900 435'"
                    + " font-family='sans-serif' font-size='13' fill='#222'>");
            out.println("<rect width='100%' height='100%' fill='#fff'/>");
            panel(out, IN_TOP, "the hand, degrees", MOST_DEGREES, 10);
            panel(out, OUT_TOP, "the view position", 1, 0.5);
            for (int second = 0; second <= SECONDS; second += 2) {
                text(out, x(second), OUT_TOP + PANEL + 18, "middle", second + " s");
            }
            note(out, 0.2, 1, "still");
            note(out, 1, 5, "a sway");
            note(out, 6, 11, "a tilt that is held");
            note(out, GAP_FROM, GAP_TO, "a gap");
            note(out, STEER_FROM, STEER_TO, "to landscape");
            note(out, 15.5, 18.5, "nodding");
            note(out, 19.5, 21.5, "past full swing");
            path(out, UP_DOWN, inUpDown);
            path(out, ACROSS, inAcross);
            path(out, UP_DOWN, outUpDown);
            path(out, ACROSS, outAcross);
            legend(out, 100, ACROSS, "right edge nearer; view from the right");
            legend(out, 420, UP_DOWN, "top edge nearer; view from above");
            out.println("</svg>");
        }
    }

    private static double x(double seconds) {
        return LEFT + WIDTH * seconds / SECONDS;
    }

    private static double y(double top, double part) {
        return top + PANEL / 2 * (1 - part);
    }

    private static String point(String pen, double seconds, double top, double part) {
        return String.format(Locale.ROOT, "%s%.1f,%.1f", pen, x(seconds), y(top, part));
    }

    private static void path(PrintStream out, String colour, CharSequence points) {
        out.printf("<path d='%s' fill='none' stroke='%s' stroke-width='1.5'/>%n", points, colour);
    }

    private static void text(PrintStream out, double x, double y, String anchor, String words) {
        out.printf(Locale.ROOT, "<text x='%.1f' y='%.1f' text-anchor='%s'>%s</text>%n",
                x, y, anchor, words);
    }

    private static void panel(PrintStream out, double top, String title, double most, double step) {
        for (double value = -most; value <= most; value += step) {
            out.printf(Locale.ROOT, "<path d='M%.1f,%.1fh%.1f' stroke='%s'/>%n", LEFT,
                    y(top, value / most), WIDTH, value == 0 ? "#999" : "#ddd");
            String number = String.format(Locale.ROOT, most > 1 ? "%.0f" : "%.1f", value);
            text(out, LEFT - 8, y(top, value / most) + 4, "end", number);
        }
        out.printf(Locale.ROOT, "<text transform='translate(20 %.1f) rotate(-90)'"
                + " text-anchor='middle'>%s</text>%n", top + PANEL / 2, title);
    }

    private static void note(PrintStream out, double from, double to, String words) {
        out.printf(Locale.ROOT, "<path d='M%.1f,%.1fV%.1fM%.1f,%.1fV%.1f' stroke='#bbb'"
                + " stroke-dasharray='3 3'/>%n", x(from), IN_TOP - 12, OUT_TOP + PANEL, x(to),
                IN_TOP - 12, OUT_TOP + PANEL);
        text(out, x((from + to) / 2), IN_TOP - 18, "middle", words);
    }

    private static void legend(PrintStream out, double x, String colour, String words) {
        out.printf(Locale.ROOT, "<path d='M%.1f,20h24' stroke='%s' stroke-width='3'/>%n",
                x, colour);
        text(out, x + 32, 24, "start", words);
    }
}
