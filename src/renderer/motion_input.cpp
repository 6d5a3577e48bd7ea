#include "diagnostics/log.h"
#include "quorvane/esRenderer.h"
#include "view/motion.h"

namespace {

// The output size assumed, and kept, by a motion sample that comes before setupGraphics.
constexpr float kDefaultWidth = 1920.0f;
constexpr float kDefaultHeight = 1080.0f;

constexpr float kTouchStep = 0.1f;

}  // namespace

void ESRenderer::setAccelerometerData(float x, float y, float z) {
    if (m_width == 0.0f) m_width = kDefaultWidth;
    if (m_height == 0.0f) m_height = kDefaultHeight;

    LOGD("m_transX: %f %f x\n", static_cast<double>(m_transX), static_cast<double>(x / m_width));
    m_transX += quorvane::viewStepAcross(x, m_width, m_OBJ_CORD_Y);
    m_transY += quorvane::viewStepDown(y, m_height, m_OBJ_CORD_X);
    LOGD("m_transY: %f %f x\n", static_cast<double>(m_transY), static_cast<double>(y / m_height));
    m_targetTransX = m_transX;
    m_targetTransY = m_transY;
    m_transZ += z;
    LOGD("m_transZ = %f\n", static_cast<double>(m_transZ));
    m_accX = x;
    m_accY = y;
    m_accZ = z;
}

void ESRenderer::setRotation(float x, float y, float z) {
    if (m_width == 0.0f) m_width = kDefaultWidth;
    if (m_height == 0.0f) m_height = kDefaultHeight;

    LOGD("m_transX: %f %f x\n", static_cast<double>(m_transX), static_cast<double>(x / m_width));
    const float deadzone = static_cast<float>(params.border_deadzone);
    x = quorvane::heldOffBorder(x, m_width, m_width / deadzone);
    y = quorvane::heldOffBorder(y, m_height, m_height / deadzone);
    m_transY = quorvane::viewPosition(y, m_height);
    m_transX = quorvane::viewPosition(x, m_width);
    LOGD("m_transY: %f %f x\n", static_cast<double>(m_transY), static_cast<double>(y / m_height));
    m_transZ = z;
    m_targetTransX = m_transX;
    m_targetTransY = m_transY;
    LOGD("m_transZ = %f\n", static_cast<double>(z));
    m_accX = x;
    m_accY = y;
    m_accZ = z;
}

void ESRenderer::setTranslation(float x, float y, float z) {
    LOGD("m_camTransX: %f %f x\n", static_cast<double>(m_camTransX), static_cast<double>(x / m_width));
    m_camTransX = (m_OBJ_CORD_Y * (x * 10.0f)) / m_width;
    m_camTransY = (m_OBJ_CORD_X * (y * 10.0f)) / m_height;
    // The view position under the camera's label: log readers expect it.
    LOGD("m_camTransY: %f %f x\n", static_cast<double>(m_transY), static_cast<double>(y / m_height));
    m_camTransZ = z;
    LOGD("m_camTransZ = %f\n", static_cast<double>(z));
}

void ESRenderer::touchEvent(int event, float, float) {
    switch (event) {
        case 0: m_transZ += kTouchStep; break;
        case 1: m_transZ -= kTouchStep; break;
        case 2: m_transX -= kTouchStep; break;
        case 3: m_transX += kTouchStep; break;
        default: break;
    }
    LOGD("m_transX, Y, Z = %f %f %f ", static_cast<double>(m_transX), static_cast<double>(m_transY),
         static_cast<double>(m_transZ));
}

void ESRenderer::setMinMaxDepth(int minDepth, int maxDepth) {
    m_minDepth = minDepth;
    m_maxDepth = maxDepth;
}
