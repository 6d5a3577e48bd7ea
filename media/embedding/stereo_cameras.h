#ifndef QUORVANE_MEDIA_EMBEDDING_STEREO_CAMERAS_H
#define QUORVANE_MEDIA_EMBEDDING_STEREO_CAMERAS_H

namespace quorvane::media {

/// The two cameras of a stereo photo: side by side, parallel, alike. Their pictures are shifted, so that what
/// stays in place is at the same place in both.
struct StereoCameras {
    double focal_width = 1.0;   ///< focal length in widths of the picture
    double focal_height = 1.0;  ///< the same in heights
    double baseline_mm = 0.0;   ///< from camera to camera
    double left_axis = 0.5;   ///< where the left camera looks straight ahead, in widths from the left border
    double right_axis = 0.5;  ///< the same of the right one
};

/// Degrees that a picture's width would take up straight ahead.
double horizontalFieldOfView(const StereoCameras& cameras);

}  // namespace quorvane::media

#endif
