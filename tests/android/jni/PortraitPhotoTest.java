package quorvane.parallax;

import static quorvane.parallax.ParallaxRendererTest.bytes;
import static quorvane.parallax.ParallaxRendererTest.check;
import static quorvane.parallax.ParallaxRendererTest.file;
import static quorvane.parallax.ParallaxRendererTest.refused;
import static quorvane.parallax.ParallaxRendererTest.same;
import static quorvane.parallax.ParallaxRendererTest.samePicture;

import java.io.ByteArrayOutputStream;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.Base64;
import java.util.Collections;
import java.util.Random;

/**
 * Every public method is a test. The files are made here, byte by byte; their pictures have headers
 * only, as nothing is decoded.
 */
final class PortraitPhotoTest {
    private static final String LINEAR_REMARK =
            "the depth is linear in distance, but gives no usable near and far; taken as it is";

    // What is found.

    public void allContainersAreThereButHeic() {
        same(
                Arrays.asList(
                        "Dynamic Depth 1.0",
                        "GContainer",
                        "GDepth",
                        "XDM 1.0",
                        "Apple JPEG",
                        "Samsung SEF trailer",
                        "Huawei edof trailer",
                        "LIF",
                        "MPO",
                        "VR photo",
                        "JPS"),
                PortraitPhoto.containers(),
                "containers");
    }

    public void aSamsungPhotoGivesItsSamplesAndTheUnblurredPhoto() {
        final byte[] unblurred = jpeg(8, 6, 0, "");
        final byte[] plane = noise(12);
        final PortraitPhoto photo =
                PortraitPhoto.read(samsung(jpeg(8, 6, 3, ""), unblurred, plane, 4, 3));
        same("Samsung SEF trailer", photo.container(), "container");
        sameBytes(unblurred, photo.original(), "unblurred photo");
        same(3, photo.orientation(), "orientation, which the unblurred photo does not give");
        check(photo.depthPicture() == null, "the depth is no picture");
        sameBytes(plane, photo.depthSamples(), "samples");
        same(4, photo.depthWidth(), "width");
        same(3, photo.depthHeight(), "height");
        same(8, photo.depthBits(), "bits");
        same(PortraitPhoto.DepthKind.DISPARITY, photo.depthKind(), "kind");
        same(true, photo.largerIsNearer(), "larger is nearer");
        check(Double.isNaN(photo.near()) && Double.isNaN(photo.far()), "no near and far");
        same("", photo.units(), "units");
        same(3, photo.depthOrientation(), "the depth's orientation");
        same(true, photo.depthOrientationKnown(), "whether that is known");
        same(Collections.emptyList(), photo.remarks(), "remarks");
        sameBytes(plane, bytes(photo.depthMap()), "depth map");
    }

    public void anUnblurredPhotoKnowsBestHowItLies() {
        final byte[] file =
                samsung(jpeg(8, 6, 3, ""), jpeg(8, 6, 6, ""), noise(12), 4, 3);
        same(6, PortraitPhoto.read(file).orientation(), "orientation");
    }

    public void aPlaneAcrossItsPhotoIsTurnedByAGuess() {
        final byte[] file = samsung(jpeg(6, 8, 0, ""), jpeg(6, 8, 0, ""), noise(12), 4, 3);
        final PortraitPhoto photo = PortraitPhoto.read(file);
        same(1, photo.orientation(), "orientation");
        same(6, photo.depthOrientation(), "the depth's orientation");
        same(false, photo.depthOrientationKnown(), "whether that is known");
        same(1, photo.remarks().size(), "remarks");
    }

    public void aHuaweiPhotoGivesItsSamplesAndTheUnblurredPhoto() {
        final byte[] unblurred = jpeg(8, 6, 0, "");
        final byte[] plane = noise(12);
        // 0x11: a quarter to the left, Exif's 8.
        final byte[] header = new byte[64];
        header[3] = 0x11;
        header[12] = 3;
        header[14] = 4;
        final byte[] depth = join(header, plane);
        final PortraitPhoto photo =
                PortraitPhoto.read(
                        join(
                                jpeg(8, 6, 6, ""),
                                unblurred,
                                depth,
                                little(4, depth.length),
                                text("DepthEn\0")));
        same("Huawei edof trailer", photo.container(), "container");
        sameBytes(unblurred, photo.original(), "unblurred photo");
        same(6, photo.orientation(), "orientation");
        sameBytes(plane, photo.depthSamples(), "samples");
        same(3, photo.depthWidth(), "width");
        same(4, photo.depthHeight(), "height");
        same(8, photo.depthOrientation(), "the depth's orientation");
        sameBytes(plane, bytes(photo.depthMap()), "depth map");
    }

    public void aPhotoWithGDepthGivesThePictureAndItsTerms() {
        final byte[] picture = png(8);
        final PortraitPhoto photo =
                PortraitPhoto.read(gdepth(picture, "RangeInverse", "0.5", "7.25", "m"));
        same("GDepth", photo.container(), "container");
        check(photo.original() == null, "the file is the photo");
        check(photo.depthSamples() == null, "the depth is no bare samples");
        sameBytes(picture, photo.depthPicture(), "picture");
        same(0, photo.depthWidth(), "width");
        same(8, photo.depthBits(), "bits");
        same(PortraitPhoto.DepthKind.INVERSE_RANGE, photo.depthKind(), "kind");
        same(false, photo.largerIsNearer(), "larger is nearer");
        same(0.5, photo.near(), "near");
        same(7.25, photo.far(), "far");
        same("m", photo.units(), "units");
        same(5, photo.orientation(), "orientation");
        same(5, photo.depthOrientation(), "the depth's orientation");
    }

    public void aDepthPictureKnowsBestHowItLies() {
        final PortraitPhoto photo =
                PortraitPhoto.read(gdepth(jpeg(4, 3, 8, ""), "RangeInverse", "1", "2", "m"));
        same(5, photo.orientation(), "orientation");
        same(8, photo.depthOrientation(), "the depth's orientation");
    }

    public void aPhotoWithoutDepthSaysSo() {
        final PortraitPhoto photo = PortraitPhoto.read(jpeg(8, 6, 6, ""));
        check(photo.container() == null, "no container");
        check(photo.original() == null, "the file is the photo");
        check(photo.depthPicture() == null && photo.depthSamples() == null, "no depth");
        same(6, photo.orientation(), "orientation");
        same(Collections.emptyList(), photo.remarks(), "remarks");
        refused("depth map: no depth was found in the photo", photo::depthMap);
        refused(
                "depth map: no depth was found in the photo",
                () -> photo.depthMap(ByteBuffer.allocate(4)));
    }

    public void aHeicPhotoIsNamedAsSuch() {
        final PortraitPhoto photo = PortraitPhoto.read(join(new byte[4], text("ftypheic0000mif1")));
        check(photo.container() == null, "no container");
        same(
                Collections.singletonList("HEIC: not looked into; JPEG is"),
                photo.remarks(),
                "remarks");
    }

    public void textsOfTheFileComeAsAscii() {
        // A letter of two bytes, and one of four, which Java writes in six.
        final byte[] file = gdepth(png(8), "RangeInverse", "1", "2", "\u00b5\ud83d\ude00m");
        same("??????m", PortraitPhoto.read(file).units(), "units");
    }

    // Depth maps, of numbers worked by hand.

    public void aPictureWhoseSmallSamplesAreNearIsTurnedOver() {
        final PortraitPhoto photo =
                PortraitPhoto.read(gdepth(png(8), "RangeInverse", "1", "2", "m"));
        sameLevels(photo.depthMap(gray(10, 20, 200)), 245, 235, 55);
    }

    public void aLinearRangeBecomesLinearInOneOverDistance() {
        // 1, 2, 3 and 4 m: (1 / d - 1 / 4) / (1 - 1 / 4) is 1, 1/3, 1/9 and 0.
        final PortraitPhoto photo =
                PortraitPhoto.read(gdepth(png(8), "RangeLinear", "1", "4", "m"));
        sameLevels(photo.depthMap(gray(0, 85, 170, 255)), 255, 85, 28, 0);
        same(Collections.emptyList(), photo.remarks(), "remarks");
    }

    public void aLinearRangeIsSpreadOverWhatItUses() {
        // 4, 6 and 8 m: from 1/4 to 1/8, 1/6 lies a third of the way up.
        final PortraitPhoto photo =
                PortraitPhoto.read(gdepth(png(8), "RangeLinear", "2", "8", "m"));
        sameLevels(photo.depthMap(gray(85, 170, 255)), 255, 85, 0);
        // A plane of one level keeps it: (1/4 - 1/8) / (1/2 - 1/8) is 1/3.
        sameLevels(photo.depthMap(gray(85, 85)), 85, 85);
    }

    public void aLinearRangeWhoseLargeSamplesAreNearIsReadFromTheOtherEnd() {
        sameLevels(
                PortraitPhoto.levels(
                        gray(0, 85, 170, 255),
                        8,
                        false,
                        PortraitPhoto.DepthKind.LINEAR_RANGE,
                        true,
                        1.0,
                        4.0),
                0,
                28,
                85,
                255);
    }

    public void aLinearRangeFromNowhereIsTakenAsItIsWithARemark() {
        for (String[] range : new String[][] {{"", ""}, {"0", "5"}, {"5", "1"}, {"2", "2"}}) {
            final PortraitPhoto photo =
                    PortraitPhoto.read(gdepth(png(8), "RangeLinear", range[0], range[1], "m"));
            sameLevels(photo.depthMap(gray(0, 85, 200)), 255, 170, 55);
            check(photo.remarks().contains(LINEAR_REMARK), "the remarks " + photo.remarks());
        }
    }

    public void samplesOfMoreThanEightBitsAreSpread() {
        final PortraitPhoto photo =
                PortraitPhoto.read(gdepth(png(16), "RangeInverse", "1", "2", "m"));
        same(16, photo.depthBits(), "bits");
        sameLevels(photo.depthMap(gray(10, 20, 40)), 255, 170, 0);
        // 0xff, 0x100 and 0x102, the lower byte first.
        sameLevels(
                PortraitPhoto.levels(
                        gray(0xff, 0, 0, 1, 2, 1),
                        16,
                        true,
                        PortraitPhoto.DepthKind.DISPARITY,
                        true,
                        Double.NaN,
                        Double.NaN),
                0,
                85,
                255);
    }

    public void everyNearAndFarGivesAFallingMap() {
        final double[] distances = {Double.MIN_VALUE, 1e-300, 1e-3, 1, 1e3, 1e300};
        for (double near : distances) {
            for (double far : distances) {
                final ByteBuffer map =
                        PortraitPhoto.levels(
                                gray(0, 1, 100, 255),
                                8,
                                false,
                                PortraitPhoto.DepthKind.LINEAR_RANGE,
                                false,
                                near,
                                far);
                for (int i = 1; i < 4; ++i) {
                    check(
                            (map.get(i) & 0xff) <= (map.get(i - 1) & 0xff),
                            near + " to " + far + ": sample " + i);
                }
                same((byte) 255, map.get(0), near + " to " + far + ": the nearest");
                same((byte) 0, map.get(3), near + " to " + far + ": the farthest");
            }
        }
    }

    public void theGraySamplesLieBetweenPositionAndLimit() {
        final PortraitPhoto photo =
                PortraitPhoto.read(gdepth(png(8), "RangeInverse", "1", "2", "m"));
        final ByteBuffer gray = gray(0, 10, 20, 0);
        gray.position(1).limit(3);
        sameLevels(photo.depthMap(gray.asReadOnlyBuffer()), 245, 235);
        same(1, gray.position(), "the position");
        sameLevels(photo.depthMap(gray()));
        refused("depth map: no buffer given", () -> photo.depthMap(null));
        refused(
                "depth map: the depth is a picture; decode it and give its gray samples",
                photo::depthMap);
    }

    public void theRendererTakesAPhotosDepth() {
        final byte[] plane = bytes(file("depth.gray"));
        final byte[] file = samsung(jpeg(320, 240, 0, ""), jpeg(320, 240, 0, ""), plane, 160, 120);
        try (ParallaxRenderer renderer = ParallaxRenderer.createOffscreen(160, 120, 4)) {
            renderer.setPhoto(320, 240, file("photo.rgb"));
            renderer.setDepth(160, 120, PortraitPhoto.read(file).depthMap());
            renderer.lookAt(0.5f, -0.25f);
            renderer.render();
            samePicture("looked.rgba", renderer);
        }
    }

    // Files that do not do.

    public void whatLiesBetweenPositionAndLimitIsTheFile() {
        final byte[] file = samsung(jpeg(8, 6, 0, ""), jpeg(8, 6, 0, ""), noise(12), 4, 3);
        final ByteBuffer buffer = ByteBuffer.allocateDirect(file.length + 7);
        buffer.position(3);
        buffer.put(file);
        buffer.position(3).limit(3 + file.length);
        same("Samsung SEF trailer", PortraitPhoto.read(buffer).container(), "container");
        same(3, buffer.position(), "the position");
        same(3 + file.length, buffer.limit(), "the limit");
        final ByteBuffer slice = buffer.slice().asReadOnlyBuffer();
        same("Samsung SEF trailer", PortraitPhoto.read(slice).container(), "container");
        buffer.clear();
        check(PortraitPhoto.read(buffer).container() == null, "not a JPEG with its trailer");
    }

    public void nullsAndArrayBuffersAreNoFiles() {
        refused("photo file: no buffer given", () -> PortraitPhoto.read((ByteBuffer) null));
        refused("photo file: no bytes given", () -> PortraitPhoto.read((byte[]) null));
        refused(
                "photo file: the buffer is not direct; ByteBuffer.allocateDirect makes one",
                () -> PortraitPhoto.read(ByteBuffer.allocate(8)));
        check(PortraitPhoto.read(new byte[0]).container() == null, "nothing in an empty file");
    }

    public void cutAndDamagedFilesGiveAnObject() {
        final Random random = new Random(1);
        final byte[][] files = {
            samsung(jpeg(8, 6, 6, ""), jpeg(8, 6, 0, ""), noise(12), 4, 3),
            gdepth(png(8), "RangeLinear", "1", "4", "m")
        };
        for (byte[] file : files) {
            for (int size = 0; size < file.length; ++size) {
                check(PortraitPhoto.read(Arrays.copyOf(file, size)) != null, "an object");
                final byte[] damaged = file.clone();
                for (int i = 0; i < 3; ++i) {
                    damaged[random.nextInt(file.length)] = (byte) random.nextInt();
                }
                final PortraitPhoto photo = PortraitPhoto.read(damaged);
                if (photo.depthSamples() != null) {
                    same(photo.depthWidth() * photo.depthHeight(), photo.depthMap().capacity(), "");
                }
            }
        }
    }

    public void twoThreadsReadAtOnce() throws InterruptedException {
        final Throwable[] failures = {null, null};
        final Thread[] threads = new Thread[2];
        for (int i = 0; i < 2; ++i) {
            final int index = i;
            threads[i] =
                    new Thread(
                            () -> {
                                try {
                                    for (int turn = 0; turn < 100; ++turn) {
                                        aPhotoWithGDepthGivesThePictureAndItsTerms();
                                    }
                                } catch (Throwable failure) {
                                    failures[index] = failure;
                                }
                            });
            threads[i].start();
        }
        for (Thread thread : threads) {
            thread.join();
        }
        for (Throwable failure : failures) {
            if (failure != null) {
                throw new AssertionError(failure);
            }
        }
    }

    // Files, byte by byte.

    /** Headers and two bytes of entropy-coded data; no Exif for orientation 0, no XMP for "". */
    private static byte[] jpeg(int width, int height, int orientation, String xmp) {
        final byte[] exif =
                orientation == 0
                        ? new byte[0]
                        : segment(
                                0xe1,
                                text("Exif\0\0MM\0*"),
                                big(4, 8),
                                big(2, 1),
                                big(2, 0x0112),
                                big(2, 3),
                                big(4, 1),
                                big(2, orientation),
                                big(2, 0),
                                big(4, 0));
        final byte[] packet =
                xmp.isEmpty()
                        ? new byte[0]
                        : segment(0xe1, text("http://ns.adobe.com/xap/1.0/\0"), text(xmp));
        return join(
                big(2, 0xffd8),
                exif,
                packet,
                segment(0xc0, big(1, 8), big(2, height), big(2, width), big(1, 0)),
                segment(0xda, big(1, 0)),
                big(2, 0x1234),
                big(2, 0xffd9));
    }

    private static byte[] segment(int marker, byte[]... parts) {
        final byte[] body = join(parts);
        return join(big(2, 0xff00 | marker), big(2, body.length + 2), body);
    }

    /** A PNG's header, which gives the bits of a sample. */
    private static byte[] png(int bits) {
        return join(
                big(4, 0x89504e47),
                big(4, 0x0d0a1a0a),
                big(4, 13),
                text("IHDR"),
                big(4, 4),
                big(4, 3),
                big(1, bits),
                new byte[8]);
    }

    /** A photo of orientation 5. */
    private static byte[] gdepth(
            byte[] picture, String format, String near, String far, String units) {
        final String xmp =
                "<x:xmpmeta xmlns:x='adobe:ns:meta/'>"
                        + "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
                        + "<rdf:Description"
                        + " xmlns:GDepth='http://ns.google.com/photos/1.0/depthmap/'"
                        + (" GDepth:Format='" + format + "'")
                        + (" GDepth:Near='" + near + "' GDepth:Far='" + far + "'")
                        + (" GDepth:Units='" + units + "' GDepth:Mime='image/png' GDepth:Data='")
                        + Base64.getEncoder().encodeToString(picture)
                        + "'/></rdf:RDF></x:xmpmeta>";
        return jpeg(8, 6, 5, xmp);
    }

    /** A trailer of three blocks: the unblurred photo, the plane, the plane's sides. */
    private static byte[] samsung(
            byte[] photo, byte[] unblurred, byte[] plane, int width, int height) {
        final byte[][] blocks = {
            samsungBlock(0x0001, unblurred),
            samsungBlock(0x0ab1, plane),
            // Version 1 has the sides in its tenth and eleventh word.
            samsungBlock(
                    0x0ab3, join(little(4, 1), new byte[32], little(4, width), little(4, height)))
        };
        final int[] types = {0x0001, 0x0ab1, 0x0ab3};
        byte[] directory = join(text("SEFH"), little(4, 107), little(4, blocks.length));
        int distance = 0;
        for (byte[] block : blocks) {
            distance += block.length;
        }
        for (int i = 0; i < blocks.length; ++i) {
            directory =
                    join(
                            directory,
                            little(2, 0),
                            little(2, types[i]),
                            little(4, distance),
                            little(4, blocks[i].length));
            distance -= blocks[i].length;
        }
        return join(photo, join(blocks), directory, little(4, directory.length), text("SEFT"));
    }

    private static byte[] samsungBlock(int type, byte[] data) {
        return join(little(2, 0), little(2, type), little(4, 4), text("name"), data);
    }

    private static byte[] text(String text) {
        return text.getBytes(StandardCharsets.UTF_8);
    }

    private static byte[] big(int bytes, int value) {
        return Arrays.copyOfRange(ByteBuffer.allocate(4).putInt(value).array(), 4 - bytes, 4);
    }

    private static byte[] little(int bytes, int value) {
        final ByteBuffer all = ByteBuffer.allocate(4).order(ByteOrder.LITTLE_ENDIAN);
        return Arrays.copyOf(all.putInt(value).array(), bytes);
    }

    private static byte[] join(byte[]... parts) {
        final ByteArrayOutputStream all = new ByteArrayOutputStream();
        for (byte[] part : parts) {
            all.write(part, 0, part.length);
        }
        return all.toByteArray();
    }

    private static byte[] noise(int bytes) {
        final byte[] noise = new byte[bytes];
        new Random(7).nextBytes(noise);
        return noise;
    }

    private static ByteBuffer gray(int... samples) {
        final ByteBuffer gray = ByteBuffer.allocate(samples.length);
        for (int sample : samples) {
            gray.put((byte) sample);
        }
        gray.rewind();
        return gray;
    }

    private static void sameLevels(ByteBuffer actual, int... expected) {
        check(actual.isDirect(), "the map is direct");
        same(gray(expected), actual, "depth map");
    }

    private static void sameBytes(byte[] expected, byte[] actual, String what) {
        check(actual != null, what + ": missing");
        same(ByteBuffer.wrap(expected), ByteBuffer.wrap(actual), what);
    }
}
