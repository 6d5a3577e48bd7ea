package quorvane.caller

import quorvane.parallax.Depth
import quorvane.parallax.ImageSource
import quorvane.parallax.ParallaxPhotoView
import quorvane.parallax.PortraitPhoto

/** What Kotlin has to refuse by the library's annotations: an error in each line that says so. */
fun lengthOf(file: ByteArray): Int =
    PortraitPhoto.read(file).container().length // refused

fun show(view: ParallaxPhotoView, chosen: ImageSource?) {
    view.setPortraitPhoto(chosen) // refused
    view.setReplay(chosen)
    view.setOnErrorListener(null)
    val depth: Depth? = chosen?.let { Depth.of(it) }
    view.setImages(chosen!!, depth) // refused
}
