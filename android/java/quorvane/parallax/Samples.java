package quorvane.parallax;

import java.nio.ByteBuffer;

/** A depth map: a byte a sample, rows from the top without padding, larger is nearer. */
final class Samples {
    final int width;
    final int height;
    /** Direct, width * height bytes from position 0; nobody writes into it. */
    final ByteBuffer bytes;

    Samples(int width, int height, ByteBuffer bytes) {
        this.width = width;
        this.height = height;
        this.bytes = bytes;
    }

    /** The same map with the other end near. */
    Samples inverted() {
        ByteBuffer turned = ByteBuffer.allocateDirect(width * height);
        for (int i = 0; i < turned.capacity(); ++i) {
            turned.put(i, (byte) ~bytes.get(i));
        }
        return new Samples(width, height, turned);
    }

    /** The map turned upright by Exif's code. */
    Samples upright(int orientation) {
        boolean mirrored = ExifTurn.mirrored(orientation);
        int degrees = ExifTurn.degrees(orientation);
        if (!mirrored && degrees == 0) {
            return this;
        }
        boolean across = degrees % 180 != 0;
        int wide = across ? height : width;
        int high = across ? width : height;
        ByteBuffer turned = ByteBuffer.allocateDirect(wide * high);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                int fromLeft = mirrored ? width - 1 - x : x;
                int column;
                int row;
                switch (degrees) {
                    case 90:
                        column = height - 1 - y;
                        row = fromLeft;
                        break;
                    case 180:
                        column = width - 1 - fromLeft;
                        row = height - 1 - y;
                        break;
                    case 270:
                        column = y;
                        row = width - 1 - fromLeft;
                        break;
                    default:
                        column = fromLeft;
                        row = y;
                        break;
                }
                turned.put(row * wide + column, bytes.get(y * width + x));
            }
        }
        return new Samples(wide, high, turned);
    }

    /** The samples of {@code part} (left, top, width, height), as they are. */
    Samples cut(int[] part) {
        ByteBuffer cut = ByteBuffer.allocateDirect(part[2] * part[3]);
        for (int y = 0; y < part[3]; ++y) {
            for (int x = 0; x < part[2]; ++x) {
                cut.put(bytes.get((part[1] + y) * width + part[0] + x));
            }
        }
        cut.rewind();
        return new Samples(part[2], part[3], cut);
    }

    /** The map in another size: each sample from the four nearest ones. */
    Samples scaled(int newWidth, int newHeight) {
        if (newWidth == width && newHeight == height) {
            return this;
        }
        ByteBuffer scaled = ByteBuffer.allocateDirect(newWidth * newHeight);
        for (int y = 0; y < newHeight; ++y) {
            double fromTop = place(y, newHeight, height);
            int row = (int) fromTop;
            for (int x = 0; x < newWidth; ++x) {
                double fromLeft = place(x, newWidth, width);
                int column = (int) fromLeft;
                double upper = between(row, column, fromLeft - column);
                double lower = between(Math.min(row + 1, height - 1), column, fromLeft - column);
                scaled.put((byte) Math.round(upper + (fromTop - row) * (lower - upper)));
            }
        }
        scaled.rewind();
        return new Samples(newWidth, newHeight, scaled);
    }

    private static double place(int at, int count, int of) {
        return Math.max(0.0, Math.min(of - 1.0, (at + 0.5) * of / count - 0.5));
    }

    private double between(int row, int column, double part) {
        int left = bytes.get(row * width + column) & 0xff;
        int right = bytes.get(row * width + Math.min(column + 1, width - 1)) & 0xff;
        return left + part * (right - left);
    }
}
