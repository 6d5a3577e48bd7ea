package quorvane.parallax;

import android.graphics.Bitmap;

/** A photo and its depth map, as an app names them; without a depth map, what is in the photo's file. */
final class Images {
    /** One of these is null. */
    final Bitmap bitmap;
    final ImageSource file;
    /** Null: inside the photo's file. */
    final Depth depth;

    Images(Bitmap photo, Depth depth) {
        this.bitmap = usable("photo", photo);
        this.file = null;
        this.depth = given("depth map", depth);
    }

    Images(ImageSource photo, Depth depth) {
        this.bitmap = null;
        this.file = given("photo", photo);
        this.depth = given("depth map", depth);
    }

    /** A portrait photo's file. */
    Images(ImageSource portrait) {
        this.bitmap = null;
        this.file = given("photo", portrait);
        this.depth = null;
    }

    static <T> T given(String what, T image) {
        if (image == null) {
            throw new IllegalArgumentException(what + ": none given");
        }
        return image;
    }

    static Bitmap usable(String what, Bitmap bitmap) {
        if (given(what, bitmap).isRecycled()) {
            throw new IllegalArgumentException(what + ": the bitmap has been recycled");
        }
        return bitmap;
    }

    @Override
    public boolean equals(Object other) {
        if (!(other instanceof Images)) {
            return false;
        }
        Images images = (Images) other;
        return bitmap == images.bitmap
                && (file == null ? images.file == null : file.equals(images.file))
                && (depth == null ? images.depth == null : depth.equals(images.depth));
    }

    @Override
    public int hashCode() {
        return (bitmap != null ? bitmap : file).hashCode();
    }
}
