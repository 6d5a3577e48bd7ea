package quorvane.parallax;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertTrue;

import android.content.Phone;
import android.graphics.Bitmap;
import android.graphics.BitmapFactory;
import android.graphics.Canvas;
import android.graphics.SurfaceTexture;
import android.hardware.SensorManager;
import android.media.ExifInterface;
import android.opengl.EGL14;
import android.os.Handler;
import android.view.Choreographer;
import android.view.View;
import com.sun.management.ThreadMXBean;
import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Base64;
import java.util.Collections;
import java.util.List;
import java.util.Random;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.CountDownLatch;
import java.util.function.BooleanSupplier;
import javax.imageio.ImageIO;
import org.junit.After;
import org.junit.Before;
import org.junit.Rule;
import org.junit.Test;
import org.junit.rules.TemporaryFolder;

/**
 * The whole view, from files to the pixels on its surface: all of its own classes, the real renderer
 * and a real driver. Only the platform's classes are made of OpenJDK's and Mesa's. The command line,
 * {@code quorvane.program}, says what the pictures have to be.
 */
public final class DeviceTest {
    // A cell a pixel: neither the view nor the command line resamples such a photo.
    private static final int PHOTO_WIDTH = 128;
    private static final int PHOTO_HEIGHT = 96;
    private static final int WIDTH = 160;
    private static final int HEIGHT = 120;

    @Rule
    public final TemporaryFolder folder = new TemporaryFolder();

    private final List<String> errors = new CopyOnWriteArrayList<>();
    private final ParallaxPhotoView view = new ParallaxPhotoView(new Phone());
    private final SurfaceTexture surface = new SurfaceTexture();
    private final BufferedImage photo = smoothNoise();
    private final BufferedImage depth = discOnSlope();

    @Before
    public void enter() {
        SensorManager.present = true;
        Handler.UNCAUGHT.clear();
        PixelCache.SHARED.clear();
        EGL14.LOSSES.set(0);
        EGL14.reads = true;
        BitmapFactory.LARGEST.set(0);
        view.setOnErrorListener(errors::add);
        surface.width = WIDTH;
        surface.height = HEIGHT;
        view.onAttachedToWindow();
        view.onVisibilityAggregated(true);
        view.told.onSurfaceTextureAvailable(surface, WIDTH, HEIGHT);
    }

    @After
    public void leave() {
        view.onVisibilityAggregated(false);
        view.onDetachedFromWindow();
        assertFalse(view.told.onSurfaceTextureDestroyed(surface));
        until(() -> surface.released);
        assertEquals(Collections.emptyList(), Handler.UNCAUGHT);
        assertEquals(Collections.emptyList(), errors);
    }

    @Test
    public void drawsWhatTheCommandLineDraws() throws IOException, InterruptedException {
        List<byte[]> expected = commandLine("--edges", "clean");
        view.setFrame(0.8);
        view.setImages(source(png(photo)), source(png(depth)));
        double[][] circle = {{0, -1}, {1, 0}, {0, 1}, {-1, 0}};
        for (int i = 0; i < circle.length; ++i) {
            lookFrom(circle[i][0], circle[i][1]);
            assertArrayEquals("frame " + i, expected.get(i), picture());
        }
        assertFalse("the view moves", Arrays.equals(expected.get(1), expected.get(3)));
        assertEquals("a plain config", 8, EGL14.redBits);
    }

    @Test
    public void drawsSoftEdgesAsTheCommandLineDoes() throws IOException, InterruptedException {
        List<byte[]> expected = commandLine("--edges", "soft", "--grid", "coarse");
        view.setFrame(0.8);
        view.setCleanEdges(false);
        view.setImages(source(png(photo)), source(png(depth)));
        lookFrom(1, 0);
        assertArrayEquals(expected.get(1), picture());
    }

    @Test
    public void everyOrientationComesUpright() throws IOException {
        view.setImages(source(png(photo)), source(png(depth)));
        lookFrom(0.5, 0.25);
        byte[] upright = picture();
        for (int orientation = 1; orientation <= 8; ++orientation) {
            byte[] turned = marked(png(stored(photo, orientation)), orientation);
            byte[] turnedDepth = marked(png(stored(depth, orientation)), orientation);
            surface.picture = null;
            view.setImages(source(turned), source(turnedDepth));
            until(() -> surface.picture != null);
            assertArrayEquals("orientation " + orientation, upright, picture());
        }
    }

    @Test
    public void aPortraitPhotosOwnDepthIsTheSameAsOneFromElsewhere() throws IOException {
        byte[] jpeg = jpeg(photo);
        // This way of keeping it has 0 for near.
        view.setImages(source(jpeg), Depth.of(source(png(depth))).largerIsFarther());
        lookFrom(-0.5, 0.5);
        byte[] expected = picture();
        surface.picture = null;
        view.setPortraitPhoto(source(withDepth(jpeg, png(depth))));
        until(() -> surface.picture != null);
        assertArrayEquals(expected, picture());
    }

    @Test
    public void aPhotoWithoutDepthIsSaid() throws IOException {
        for (byte[] file : new byte[][] {
                jpeg(photo), "\0\0\0\30ftypheic\0\0\0\0".getBytes(StandardCharsets.ISO_8859_1),
                new byte[0]}) {
            view.setPortraitPhoto(source(file));
            until(() -> errors.size() == 1);
            assertTrue(errors.get(0), errors.get(0).startsWith("photo: ")
                    && errors.get(0).endsWith("give a depth map of its own"));
            assertEquals(errors.get(0), file.length == 16, errors.get(0).contains("HEIC or AVIF"));
            errors.clear();
        }
    }

    @Test
    public void depthComesAsNumbersAndTheOtherWayRoundToo() throws IOException {
        view.setImages(source(png(photo)), source(png(depth)));
        lookFrom(1, 0);
        byte[] expected = picture();
        int count = depth.getWidth() * depth.getHeight();
        float[] metres = new float[count];
        for (int i = 0; i < count; ++i) {
            int level = depth.getRaster().getSample(
                    i % depth.getWidth(), i / depth.getWidth(), 0);
            // The map reaches from 0 to 255.
            metres[i] = 7f - level / 51f;
        }
        surface.picture = null;
        view.setImages(source(png(photo)),
                Depth.of(metres, depth.getWidth(), depth.getHeight()).largerIsFarther());
        until(() -> surface.picture != null);
        assertArrayEquals(expected, picture());
    }

    @Test
    public void aProfileLetsThePhotoShowWhichEndIsNear() throws IOException {
        view.setImages(source(png(photo)), source(png(depth)));
        lookFrom(1, 0);
        byte[] expected = picture();
        BufferedImage inverted = new BufferedImage(
                depth.getWidth(), depth.getHeight(), depth.getType());
        for (int y = 0; y < depth.getHeight(); ++y) {
            for (int x = 0; x < depth.getWidth(); ++x) {
                inverted.getRaster().setSample(x, y, 0, 255 - depth.getRaster().getSample(x, y, 0));
            }
        }
        view.setImages(source(png(photo)), source(png(inverted)));
        until(() -> !Arrays.equals(expected, picture()));
        view.setProfile(text("{\"quorvane_profile\": 1, \"options\": {\"invert-depth\": \"auto\"}}"));
        until(() -> Arrays.equals(expected, picture()));
    }

    @Test
    public void comesBackAfterALostContextAndInAnotherSize() throws IOException {
        view.setImages(source(png(photo)), source(png(depth)));
        lookFrom(0.5, 0);
        byte[] expected = picture();
        EGL14.LOSSES.set(1);
        lookFrom(0.4, 0);
        assertEquals("it was lost", 0, EGL14.LOSSES.get());
        lookFrom(0.5, 0);
        assertArrayEquals(expected, picture());
        surface.width = 2 * WIDTH;
        surface.height = 2 * HEIGHT;
        view.told.onSurfaceTextureSizeChanged(surface, surface.width, surface.height);
        until(() -> surface.picture.length == 16 * WIDTH * HEIGHT);
    }

    @Test
    public void aLargePhotoIsDecodedForASmallCard() throws IOException {
        BufferedImage large = new BufferedImage(4000, 3000, BufferedImage.TYPE_INT_RGB);
        large.createGraphics().drawImage(photo, 0, 0, 4000, 3000, null);
        ImageSource file = source(jpeg(large));
        view.setImages(file, source(png(depth)));
        until(() -> surface.picture != null);
        assertTrue(BitmapFactory.LARGEST.get() + " pixels", BitmapFactory.LARGEST.get() <= 1000 * 750);
        int decoded = BitmapFactory.DECODED.get();
        // Scrolled out of the list, and back.
        view.onDetachedFromWindow();
        view.onAttachedToWindow();
        surface.picture = null;
        view.onVisibilityAggregated(false);
        view.onVisibilityAggregated(true);
        view.told.onSurfaceTextureAvailable(surface, WIDTH, HEIGHT);
        until(() -> surface.picture != null);
        assertEquals(decoded, BitmapFactory.DECODED.get());
    }

    @Test
    public void aFrameAllocatesNothing() throws IOException, InterruptedException {
        view.setReplay(text("{\"t\":0,\"x\":-1,\"y\":0}\n{\"t\":1,\"x\":1,\"y\":0.5}\n"));
        view.setImages(source(png(photo)), source(png(depth)));
        until(() -> surface.picture != null);
        EGL14.reads = false;
        long[] allocated = {-1};
        int[] swapped = {0};
        CountDownLatch done = new CountDownLatch(1);
        Choreographer.atNextFrame(callback -> {
            ThreadMXBean threads = (ThreadMXBean) ManagementFactory.getThreadMXBean();
            long self = Thread.currentThread().getId();
            long time = System.nanoTime();
            for (int i = 0; i < 220; ++i) {
                if (i == 20) {
                    threads.getThreadAllocatedBytes(self);
                    swapped[0] = EGL14.SWAPS.get();
                    allocated[0] = threads.getThreadAllocatedBytes(self);
                }
                callback.doFrame(time += 8_000_000);
            }
            allocated[0] = threads.getThreadAllocatedBytes(self) - allocated[0];
            swapped[0] = EGL14.SWAPS.get() - swapped[0];
            done.countDown();
        });
        done.await();
        assertEquals("frames", 200, swapped[0]);
        // Asking takes some.
        assertTrue(allocated[0] + " bytes of 200 frames", allocated[0] < 200);
    }

    @Test
    public void aLayoutsEditorShowsThePhotosMiddle() throws IOException {
        ParallaxPhotoView drawn = new ParallaxPhotoView(new Phone());
        Bitmap shown = Bitmap.createBitmap(200, 100, Bitmap.Config.ARGB_8888);
        View.editing = true;
        try {
            drawn.dispatchDraw(new Canvas(shown));
            assertEquals("gray without a photo", 0xff888888, shown.getPixel(0, 0));
            drawn.setImages(source(png(photo)), source(png(depth)));
            drawn.dispatchDraw(new Canvas(shown));
        } finally {
            View.editing = false;
        }
        // 128 x 96 pixels in 200 x 150, of which 25 rows are cut off above and below.
        for (int[] place : new int[][] {{2, 2}, {100, 50}, {197, 97}, {30, 80}}) {
            int expected = photo.getRGB(place[0] * 128 / 200, (place[1] + 25) * 96 / 150);
            int found = shown.getPixel(place[0], place[1]);
            for (int shift = 0; shift < 24; shift += 8) {
                assertEquals(expected >> shift & 0xff, found >> shift & 0xff, 12);
            }
        }
    }

    private List<byte[]> commandLine(String... options) throws IOException, InterruptedException {
        File photoFile = folder.newFile("photo.png");
        File depthFile = folder.newFile("depth.png");
        File frames = new File(folder.getRoot(), "frames");
        Files.write(photoFile.toPath(), png(photo));
        Files.write(depthFile.toPath(), png(depth));
        List<String> command = new ArrayList<>(Arrays.asList(System.getProperty("quorvane.program"),
                "render", photoFile.getPath(), depthFile.getPath(), "-o", frames.getPath(), "--frames",
                "4", "--motion", "circle", "--frame", "0.8", "--size", WIDTH + "x" + HEIGHT,
                "--samples", "1", "--detail", "full", "--renderer", "gl", "--no-doctor",
                "--invert-depth=no", "--quiet"));
        command.addAll(Arrays.asList(options));
        Process program = new ProcessBuilder(command).inheritIO().start();
        assertEquals(0, program.waitFor());
        File[] files = frames.listFiles();
        Arrays.sort(files);
        List<byte[]> pictures = new ArrayList<>();
        for (File file : files) {
            BufferedImage image = ImageIO.read(file);
            byte[] rgb = new byte[3 * WIDTH * HEIGHT];
            for (int i = 0; i < WIDTH * HEIGHT; ++i) {
                int pixel = image.getRGB(i % WIDTH, i / WIDTH);
                rgb[3 * i] = (byte) (pixel >> 16);
                rgb[3 * i + 1] = (byte) (pixel >> 8);
                rgb[3 * i + 2] = (byte) pixel;
            }
            pictures.add(rgb);
        }
        return pictures;
    }

    /** The picture on the surface: 3 bytes a pixel, the top row first. */
    private byte[] picture() {
        byte[] rgba = surface.picture;
        int rows = rgba.length / 4 / WIDTH;
        byte[] rgb = new byte[3 * WIDTH * rows];
        for (int i = 0; i < WIDTH * rows; ++i) {
            int from = 4 * ((rows - 1 - i / WIDTH) * WIDTH + i % WIDTH);
            System.arraycopy(rgba, from, rgb, 3 * i, 3);
        }
        return rgb;
    }

    /** Looks from there, and waits for the picture. */
    private void lookFrom(double x, double y) {
        until(() -> surface.picture != null);
        surface.picture = null;
        view.setReplay(text("{\"t\":0,\"x\":" + x + ",\"y\":" + y + "}"));
        until(() -> surface.picture != null);
    }

    private void until(BooleanSupplier condition) {
        long end = System.nanoTime() + 30_000_000_000L;
        while (!condition.getAsBoolean()) {
            assertTrue("it did not happen in 30 s; told: " + errors, System.nanoTime() < end);
            Thread.yield();
        }
    }

    private static ImageSource text(String text) {
        return source(text.getBytes(StandardCharsets.UTF_8));
    }

    private static ImageSource source(byte[] file) {
        return () -> new ByteArrayInputStream(file);
    }

    private static byte[] marked(byte[] file, int orientation) throws IOException {
        ByteArrayOutputStream marked = new ByteArrayOutputStream();
        marked.write(file);
        marked.write((ExifInterface.MARK + orientation).getBytes(StandardCharsets.ISO_8859_1));
        return marked.toByteArray();
    }

    /** What is stored so that Exif's orientation brings it upright; from Exif's own table. */
    private static BufferedImage stored(BufferedImage upright, int orientation) {
        int width = upright.getWidth();
        int height = upright.getHeight();
        boolean across = orientation >= 5;
        BufferedImage stored = new BufferedImage(
                across ? height : width, across ? width : height, upright.getType());
        for (int row = 0; row < stored.getHeight(); ++row) {
            for (int column = 0; column < stored.getWidth(); ++column) {
                // Where row 0 and column 0 lie: 1 top left, 2 top right, 3 bottom right, 4 bottom
                // left, 5 left top, 6 right top, 7 right bottom, 8 left bottom.
                boolean fromRight = orientation == 2 || orientation == 3 || orientation == 6
                        || orientation == 7;
                boolean fromBottom = orientation == 3 || orientation == 4 || orientation == 7
                        || orientation == 8;
                int x = across ? row : column;
                int y = across ? column : row;
                int uprightX = fromRight ? width - 1 - x : x;
                int uprightY = fromBottom ? height - 1 - y : y;
                stored.getRaster().setPixel(
                        column, row, upright.getRaster().getPixel(uprightX, uprightY, (int[]) null));
            }
        }
        return stored;
    }

    private static byte[] encoded(BufferedImage image, String format) throws IOException {
        ByteArrayOutputStream file = new ByteArrayOutputStream();
        assertTrue(ImageIO.write(image, format, file));
        return file.toByteArray();
    }

    private static byte[] png(BufferedImage image) throws IOException {
        return encoded(image, "png");
    }

    private static byte[] jpeg(BufferedImage image) throws IOException {
        return encoded(image, "jpg");
    }

    /** A JPEG with a depth picture in its XMP, as phones began to write it. */
    private static byte[] withDepth(byte[] jpeg, byte[] depthPicture) throws IOException {
        String xmp = "http://ns.adobe.com/xap/1.0/\0<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
                + "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description "
                + "xmlns:GDepth=\"http://ns.google.com/photos/1.0/depthmap/\" "
                + "GDepth:Format=\"RangeInverse\" GDepth:Near=\"1\" GDepth:Far=\"9\" "
                + "GDepth:Mime=\"image/png\" GDepth:Data=\""
                + Base64.getEncoder().encodeToString(depthPicture)
                + "\"/></rdf:RDF></x:xmpmeta>";
        int size = xmp.length() + 2;
        ByteArrayOutputStream file = new ByteArrayOutputStream();
        file.write(jpeg, 0, 2);
        file.write(new byte[] {(byte) 0xff, (byte) 0xe1, (byte) (size >> 8), (byte) size});
        file.write(xmp.getBytes(StandardCharsets.ISO_8859_1));
        file.write(jpeg, 2, jpeg.length - 2);
        return file.toByteArray();
    }

    private static BufferedImage smoothNoise() {
        Random random = new Random(7);
        BufferedImage image =
                new BufferedImage(PHOTO_WIDTH, PHOTO_HEIGHT, BufferedImage.TYPE_INT_RGB);
        int[] last = new int[3];
        for (int y = 0; y < PHOTO_HEIGHT; ++y) {
            for (int x = 0; x < PHOTO_WIDTH; ++x) {
                int pixel = 0;
                for (int channel = 0; channel < 3; ++channel) {
                    last[channel] = (3 * last[channel] + random.nextInt(256)) / 4;
                    pixel |= last[channel] << 8 * channel;
                }
                image.setRGB(x, y, pixel);
            }
        }
        return image;
    }

    private static BufferedImage discOnSlope() {
        BufferedImage image = new BufferedImage(64, 48, BufferedImage.TYPE_BYTE_GRAY);
        for (int y = 0; y < 48; ++y) {
            for (int x = 0; x < 64; ++x) {
                boolean disc = (x - 28) * (x - 28) + (y - 20) * (y - 20) < 150;
                image.getRaster().setSample(x, y, 0, disc ? 255 : 2 * y + (y == 0 ? 0 : x / 8));
            }
        }
        return image;
    }
}
