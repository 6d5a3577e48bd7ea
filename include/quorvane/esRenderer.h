#ifndef QUORVANE_ES_RENDERER_H
#define QUORVANE_ES_RENDERER_H

#include <GLES2/gl2.h>

#include <cstdint>

#include "guided_filter.h"
#include "renderUtility.h"

/// One vertex of the grid, 20 bytes: position in object units and texture coordinate.
typedef struct VTX_FMT_STRUCT {
    float x, y;
    float z;     ///< always -32 before the vertex shader displaces it
    float u, v;  ///< 0..1; v = 0 is the photo's first row
} VTX_FMT;

/// The tunable parameters. `ESRenderer::getProperties` sets them from the device's properties; a host may
/// also write them directly, and each takes effect at the next use named here.
struct LibParam {
    float rotate_z_trans = 40.0f;        ///< pivot distance in front of the camera, object units; `setDepth`
    float rotate_x_boundary = 12.0f;     ///< degrees about the Y axis at full view position; each frame
    float rotate_y_boundary = 12.0f;     ///< degrees about the X axis at full view position; each frame
    float trans_to_rotate_scale = 0.6f;  ///< gain from view position to angle; each frame
    float far_offset_ext = 100.0f;       ///< far plane less 64, object units; each frame
    float z_post_offset = 5.0f;          ///< settable and logged, read by nothing
    int32_t guided_filter_rx = 2;        ///< guided filter radius in grid cells, horizontal; `setDepth`
    int32_t guided_filter_ry = 2;        ///< guided filter radius in grid cells, vertical; `setDepth`
    float guided_filter_eps = 1e-6f;     ///< guided filter regulariser, intensities 0..1; `setDepth`
    float depth_contrast = 24.0f;        ///< gain before the depth curve, 32 = unchanged; `setDepth`
    int32_t border_deadzone = 64;        ///< output size / this = ignored border in pixels; `setRotation`
    float fov_scale = 0.81f;             ///< visible part of the mesh's half-extents, 0..1; each frame
    float offset_gain = 0.4f;            ///< mirrors the vertex shader's constant, read by nothing
    float offset_len = 35.0f;            ///< mirrors the vertex shader's constant, read by nothing
};

/// Draws a photograph as a depth-displaced mesh into a texture of the host's, seen from a view position that
/// motion samples move.
///
/// A host calls, in this order: the constructor, `getProperties`, `getRequiredMemSize`, `assignMem`,
/// `setupGraphics`, `setupVertices`, `setTexture`, `setDepth`, `setOutTexture`; then for every frame any of
/// the motion setters and `renderFrame`. Everything runs on the one thread whose OpenGL ES 2.0 context is
/// current (construction, the sizing calls and the motion setters need no context). The context must support
/// unsigned 32-bit element indices (OES_element_index_uint).
///
/// Inputs are trusted, not checked: sizes, pointers and calling order are the host's promise. Failures are
/// logged under the tag "AppQRVN"; nothing is thrown. Timing lines go to standard output on every call.
/// Images are row-major without row padding: colour 3 bytes a pixel (R, G, B), depth 1 byte (0..255, larger
/// is drawn nearer).
class ESRenderer {
  public:
    /// Stores the defaults. Makes no GL call, so any thread will do.
    ESRenderer();

    /// Deletes the textures (an adopted one too), the framebuffer, the buffers and the program; needs the
    /// context current. Frees no memory: the working block is the host's.
    ~ESRenderer();

    ESRenderer(const ESRenderer&) = delete;
    ESRenderer& operator=(const ESRenderer&) = delete;
    ESRenderer(ESRenderer&&) = delete;
    ESRenderer& operator=(ESRenderer&&) = delete;

    /// Stores the second tuned parameter set unless `orientation` is 4 or 7 (which leave `params` as it is),
    /// then lets the system properties "quorvane.para1" to "quorvane.para14" override the fields in their
    /// order, and sets the debug switch from "quorvane.debug". A field without a property goes through its
    /// "%f" text and so keeps six decimals; one with a text too long for that keeps its value.
    void getProperties(uint32_t orientation);

    /// Stores the photo's size in pixels and the grid's (depth size / 4, truncated), and returns the bytes
    /// that the working block needs. Signed 32-bit arithmetic: the host sees to it that the sum fits.
    int getRequiredMemSize(int texWidth, int texHeight, int depthWidth, int depthHeight);

    /// Cuts the block, of the size last returned by `getRequiredMemSize` and aligned to at least 4 bytes,
    /// into the working areas. The host keeps it alive until the renderer is destroyed. Always true.
    bool assignMem(unsigned char* pMemBuf);

    /// Builds the program and the framebuffer on the first successful call; on every call sets the viewport
    /// to w x h pixels (both positive) and derives the mesh's extents from it. False when the program cannot
    /// be built, and then nothing has changed. After a call with another size, call `setupVertices` again.
    bool setupGraphics(int w, int h);

    /// Builds the grid and its indices in the working block and uploads both.
    void setupVertices();

    /// Fills and uploads the vertices in `m_pVtxData`; the argument is not used.
    void createVertexGrid(VTX_FMT_STRUCT* pVtxData);

    /// Fills and uploads the indices in `m_pEleData` and sets `m_eleCount`; the argument is not used.
    void updateVerticesElement(uint32_t* pEleData);

    /// Copies the photo, texWidth x texHeight pixels, into the working block and uploads it as a new texture,
    /// left bound. Uses the GL_UNPACK_ALIGNMENT in force: set it to 1 first where 3 * texWidth is no multiple
    /// of 4. The size must be the one planned with `getRequiredMemSize`.
    void setTexture(int texWidth, int texHeight, unsigned char* imageData);

    /// Adopts a texture of the host's as the photo: the destructor deletes it. It is not copied, so
    /// `setDepth` keeps the guide of the last photo given as pixels.
    void setTexture(int texWidth, int texHeight, GLuint textureID);

    /// Reduces the depth map to grid size, filters it under the photo's guidance, shapes it with the contrast
    /// curve and uploads it as a new texture, left bound with GL_UNPACK_ALIGNMENT 1. Call after `setTexture`,
    /// with the size planned with `getRequiredMemSize`. On each axis photo size / grid size must be one of
    /// 1, 2, 4, 8, 16, 32, and depth size / grid size 4 (sides of 5, 6, 7, 10, 11 and 15 are not). A depth
    /// map below 4 x 4 changes nothing.
    void setDepth(int depthWidth, int depthHeight, unsigned char* imageData);

    /// Attaches the host's texture to the framebuffer, which stays bound. True when that makes it complete.
    /// No depth buffer is attached: without one of the host's, triangles are drawn in index order.
    bool setOutTexture(GLuint outputTexID);

    /// Draws one frame into the output texture and returns when the GPU has finished it.
    /// Leaves bound: the program, both buffers, the framebuffer, the photo on texture unit 1, the depth on
    /// unit 2 (active); depth test and both vertex attributes stay enabled.
    void renderFrame();

    /// Builds the matrix for the current view position and uploads it to the program in use.
    void setupProjection();

    /// Adds a displacement in output pixels (x along the width, y along the height) to the view position.
    void setAccelerometerData(float x, float y, float z);

    /// Sets the view position from a position on the output in pixels, held off the border by
    /// `params.border_deadzone`: the centre is (0, 0), the edges almost -1 and 1.
    void setRotation(float x, float y, float z);

    /// Stores a camera offset for diagnostics; no picture changes.
    void setTranslation(float x, float y, float z);

    /// Moves the view position by a step of 0.1: 0 z+, 1 z-, 2 x-, 3 x+; other codes do nothing. x, y unused.
    void touchEvent(int event, float x, float y);

    /// Stores the host's depth limits for diagnostics; no picture changes.
    void setMinMaxDepth(int minDepth, int maxDepth);

    /// Reduces an 8-bit image by 1, 2, 4, 8, 16 or 32 on each axis (srcWidth / dstWidth and
    /// srcHeight / dstHeight, truncated) with a fixed-point low-pass filter.
    ///
    ///   srcData   srcWidth * srcHeight bytes, or 3 bytes a pixel when `isRGB`, which are turned into luma
    ///             (16..235). Then up to 27 bytes past the end are read: they must be readable, and their
    ///             values reach the last output rows' right border.
    ///   dstData   dstWidth * dstHeight bytes; must not overlap srcData
    ///
    /// Both are bytes whatever their signedness, which is why they are untyped here. A target side below 1
    /// writes nothing; another ratio writes nothing and logs one line.
    void downsize(int srcWidth, int srcHeight, const void* srcData, int dstWidth, int dstHeight,
                  void* dstData, bool isRGB) const;

    /// k for value = 2 to the power k, k in 1..31; 0 for 1 and for everything else.
    uint32_t simple_log2(uint32_t value) const;

    /// Writes an image as binary PGM or PPM, first row first.
    ///
    ///   format   0: gray, 1 byte a pixel; 1: 4 bytes a pixel, the fourth is dropped; 2: 3 bytes a pixel.
    ///            Any other code leaves an empty file and never closes its stream.
    ///
    /// An empty name, a null or empty image and a file that cannot be opened are logged and skipped.
    void _dump_ppm(int width, int height, const char* filename, unsigned char* target_ptr, int format);

    // Read-only for a host: the state, for diagnostics. A GL name or location of 0 means none.

    GLuint m_program;
    GLuint m_vPositionHandle;
    GLuint m_mvpLocHandle;
    GLuint m_texLocHandle;
    GLuint m_depthLocHandle;
    GLuint m_texCoordHandle;
    GLint m_padCordXHandle;     ///< reserved
    GLint m_zLimitHandle;       ///< reserved
    GLuint m_gridVertexBuf[2];  ///< vertices, indices
    VTX_FMT* m_pVtxData;
    GLuint* m_pEleData;
    GLuint m_fbo;
    uint32_t m_renderCount;  ///< frames drawn
    uint32_t m_debugEnable;  ///< non-zero: dump images and log the parameters
    LibParam params;
    RENDERMatrix m_mvpL;  ///< model-view-projection of the last frame; unset before the first
    RENDERMatrix m_mvpR;  ///< identity after the first frame
    float m_OBJ_CORD_X;   ///< half-width of the mesh, object units
    float m_OBJ_CORD_X2;
    float m_OBJ_CORD_Y;  ///< half-height of the mesh, object units
    float m_accX, m_accY, m_accZ;
    float m_initAccX, m_initAccY, m_initAccZ;  ///< reserved
    float m_transX, m_transY, m_transZ;        ///< view position; x and y within -1..1 after setRotation
    float m_camTransX, m_camTransY, m_camTransZ;
    float m_targetTransX, m_targetTransY, m_targetTransZ;
    float m_transStep;  ///< reserved
    int32_t m_depthContrastWeight;
    float m_width, m_height;          ///< output size, pixels
    int32_t m_vtxW, m_vtxH;           ///< grid size, cells
    int32_t m_texWidth, m_texHeight;  ///< photo size, pixels
    float m_baseline;
    int32_t m_L_startX, m_L_startY;
    int32_t m_renderW, m_renderH;
    int32_t m_eleCount;  ///< indices drawn
    GLuint m_texName;
    GLuint m_depthName;
    float* m_triangleVertices;             ///< reserved
    char* m_pDepthData;                    ///< grid-size depth, as uploaded
    char* m_pTextureData;                  ///< the photo's copy
    char* m_pSmallTextureData;             ///< the photo's luma at grid size
    unsigned char* m_pDenoisedTextureBuf;  ///< grid-size scratch
    char* m_pGFBuf;                        ///< guided filter scratch, start of the working block
    int32_t m_minDepth, m_maxDepth;
    guided_filter_qrv mGF;
    float m_z_factor;  ///< pivot distance in front of the camera, object units

  private:
    GLuint createProgram(const char* pVertexSource, const char* pFragmentSource);
    GLuint loadShader(GLenum shaderType, const char* pSource);
};

/// `max` when p > max, else `min` when p < min, else p. The upper bound comes first, in the arguments and in
/// the order of the tests.
int ClipABC_ESRenderer(int p, int max, int min);

#endif
