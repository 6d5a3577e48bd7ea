#ifndef QUORVANE_HOST_WORKING_BLOCK_H
#define QUORVANE_HOST_WORKING_BLOCK_H

#include <memory>
#include <new>

#include "quorvane/esRenderer.h"
#include "quorvane/host/Status.h"
#include "sizes/sizes.h"

namespace quorvane {

/// The memory that a renderer works in. Needs no GL.
class WorkingBlock {
  public:
    /// Gives `renderer` a block for images of these sizes, unless it has one. `keep_photo`: it has a photo of
    /// this size, the copy of which moves along. A failure changes nothing.
    Status plan(ESRenderer* renderer, Size photo, Size depth, bool keep_photo);

    /// Clears all but the photo's copy.
    void clearBehindPhoto(const ESRenderer& renderer) noexcept;

    int bytes() const noexcept { return m_bytes; }

  private:
    class Free {
      public:
        Free() : Free(std::align_val_t{}) {}
        explicit Free(std::align_val_t alignment) : m_alignment(alignment) {}
        void operator()(unsigned char* block) const { ::operator delete(block, m_alignment); }

      private:
        std::align_val_t m_alignment;
    };

    std::unique_ptr<unsigned char, Free> m_block;
    int m_bytes = 0;
};

}  // namespace quorvane

#endif
