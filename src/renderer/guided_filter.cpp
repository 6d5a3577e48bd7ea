#include "quorvane/guided_filter.h"

#include <cassert>

#include "kernels/guided_filter.h"
#include "renderer/chosen_path.h"

guided_filter_qrv::guided_filter_qrv() : m_buffer(nullptr), m_width(0), m_height(0) {}

guided_filter_qrv::~guided_filter_qrv() { guided_filter_qrv::releaseBuffer(); }

int guided_filter_qrv::bufferSize(int width, int height) const {
    return quorvane::guidedFilterBufferSize(width, height);
}

unsigned char* guided_filter_qrv::buffer() const { return m_buffer; }

void guided_filter_qrv::assignBuffer(int width, int height, unsigned char* buffer) {
    m_buffer = buffer;
    m_width = width;
    m_height = height;
}

bool guided_filter_qrv::accepts(int width, int height) const {
    return m_buffer != nullptr && bufferSize(width, height) <= bufferSize(m_width, m_height);
}

void guided_filter_qrv::releaseBuffer() {
    m_buffer = nullptr;
    m_width = 0;
    m_height = 0;
}

void guided_filter_qrv::operator()(unsigned char* guide, unsigned char* input, unsigned char* output,
                                   int width, int height, int rx, int ry, float eps) {
    if (m_buffer == nullptr) return;
    assert(accepts(width, height));
    quorvane::guidedFilter(quorvane::chosenPath(),
                           {guide, input, output, width, height, rx, ry, eps, m_buffer});
}
