#include "host/working_block.h"

#include <cstring>
#include <utility>

#include "host/checks.h"
#include "host/large_pages.h"
#include "host/text.h"

namespace quorvane {

Status WorkingBlock::plan(ESRenderer* renderer, Size photo, Size depth, bool keep_photo) {
    const Size grid = {depth.width / kDepthPixelsPerCell, depth.height / kDepthPixelsPerCell};
    Status status = checkWorkingMemory(photo, depth);
    if (!status) return status;
    if (keep_photo && grid == Size{renderer->m_vtxW, renderer->m_vtxH}) return Status::success();

    const size_t bytes = static_cast<size_t>(blockBytes(photo, grid));
    const std::align_val_t alignment = alignmentFor(bytes);
    std::unique_ptr<unsigned char, Free> block(
        static_cast<unsigned char*>(::operator new(bytes, alignment, std::nothrow)), Free(alignment));
    if (block == nullptr) return Status::failure(text("cannot allocate %zu bytes of working memory", bytes));
    preferLargePages(block.get(), bytes);

    const char* copy = renderer->m_pTextureData;
    m_bytes = renderer->getRequiredMemSize(photo.width, photo.height, depth.width, depth.height);
    renderer->assignMem(block.get());
    if (keep_photo)
        std::memcpy(renderer->m_pTextureData, copy,
                    size_t{3} * static_cast<size_t>(photo.width) * static_cast<size_t>(photo.height));
    m_block = std::move(block);
    return Status::success();
}

void WorkingBlock::clearBehindPhoto(const ESRenderer& renderer) noexcept {
    unsigned char* behind_photo = reinterpret_cast<unsigned char*>(renderer.m_pDepthData);
    std::memset(behind_photo, 0, static_cast<size_t>(m_block.get() + m_bytes - behind_photo));
}

}  // namespace quorvane
