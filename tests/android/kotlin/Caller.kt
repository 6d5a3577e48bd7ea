package quorvane.caller

import android.content.Context
import android.net.Uri
import android.view.View
import quorvane.parallax.Depth
import quorvane.parallax.ImageSource
import quorvane.parallax.ParallaxPhotoView
import quorvane.parallax.ParallaxWallpaperService
import quorvane.parallax.PortraitPhoto

/** What an app in Kotlin writes: listeners and sources are lambdas. */
fun portrait(context: Context, photo: Uri, say: (String) -> Unit): View =
    ParallaxPhotoView(context).apply {
        setOnErrorListener { sentence -> say(sentence) }
        setOnFirstFrameListener { say("there") }
        setFadeIn(200)
        setPortraitPhoto(photo)
    }

fun fromModel(view: ParallaxPhotoView, photo: Uri, samples: FloatArray) =
    view.setImages(photo, Depth.of(samples, 518, 392).largerIsFarther())

fun container(file: ByteArray): String? = PortraitPhoto.read(file).container()

fun units(file: ByteArray): Int = PortraitPhoto.read(file).units().length

class Lake : ParallaxWallpaperService() {
    override fun photo() = ImageSource { assets.open("lake.jpg") }

    override fun configure(settings: Settings) {
        settings.setPageSwing(0.3f)
    }
}
