#include "support/component_test.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;

class MemoryPlan : public ComponentTest {
  protected:
    /// 3 T + 57 N + 40 H (W + 1) + 12 (W + 1)(H + 1), the sum of all areas and the reserve.
    static int64_t totalBytes(int64_t tex_w, int64_t tex_h, int64_t w, int64_t h) {
        return 3 * tex_w * tex_h + 57 * w * h + 40 * h * (w + 1) + 12 * (w + 1) * (h + 1);
    }

    static ptrdiff_t offsetOf(const void* area, const unsigned char* block) {
        return static_cast<const unsigned char*>(area) - block;
    }

    ESRenderer renderer;
};

TEST_F(MemoryPlan, FullHdPhotoWithQuarterDepthNeeds7102096Bytes) {
    EXPECT_EQ(renderer.getRequiredMemSize(1920, 1080, 480, 270), 7102096);
}

TEST_F(MemoryPlan, FullHdPhotoWithQuarterDepthIsCutAtTheseOffsets) {
    std::vector<unsigned char> block(static_cast<size_t>(renderer.getRequiredMemSize(1920, 1080, 480, 270)));
    EXPECT_TRUE(renderer.assignMem(block.data()));
    const unsigned char* start = block.data();
    EXPECT_EQ(offsetOf(renderer.m_pGFBuf, start), 0);
    EXPECT_EQ(offsetOf(renderer.m_pVtxData, start), 226624);
    EXPECT_EQ(offsetOf(renderer.m_pEleData, start), 550904);
    EXPECT_EQ(offsetOf(renderer.m_pTextureData, start), 743864);
    EXPECT_EQ(offsetOf(renderer.m_pDepthData, start), 6964664);
    EXPECT_EQ(offsetOf(renderer.m_pSmallTextureData, start), 6972704);
    EXPECT_EQ(offsetOf(renderer.m_pDenoisedTextureBuf, start), 6980744);
}

TEST_F(MemoryPlan, ReserveOfHalfTheFilterAreaEndsTheBlock) {
    const int total = renderer.getRequiredMemSize(1920, 1080, 480, 270);
    std::vector<unsigned char> block(static_cast<size_t>(total));
    renderer.assignMem(block.data());
    const ptrdiff_t reserve_start = offsetOf(renderer.m_pDenoisedTextureBuf, block.data()) + 120 * 67;
    EXPECT_EQ(reserve_start, 6988784);
    EXPECT_EQ(total - reserve_start, 226624 / 2);
}

TEST_F(MemoryPlan, TotalIsTheSumOfAllAreasAtManySizes) {
    for (const int tex_w : {1, 3, 640})
        for (const int tex_h : {1, 5, 480})
            for (const int depth_w : {0, 3, 4, 7, 64, 642})
                for (const int depth_h : {0, 3, 4, 9, 48, 481}) {
                    SCOPED_TRACE(testing::Message()
                                 << tex_w << "x" << tex_h << ", depth " << depth_w << "x" << depth_h);
                    EXPECT_EQ(renderer.getRequiredMemSize(tex_w, tex_h, depth_w, depth_h),
                              totalBytes(tex_w, tex_h, depth_w / 4, depth_h / 4));
                }
}

TEST_F(MemoryPlan, DepthRemaindersBelowFourAreDropped) {
    const int multiple = renderer.getRequiredMemSize(1920, 1080, 480, 270);
    EXPECT_EQ(renderer.m_vtxH, 67);
    EXPECT_EQ(renderer.getRequiredMemSize(1920, 1080, 482, 270), multiple);
    EXPECT_EQ(renderer.m_vtxW, 120);
    EXPECT_EQ(renderer.m_vtxH, 67);
}

TEST_F(MemoryPlan, A642By481DepthMapGivesA160By120Grid) {
    renderer.getRequiredMemSize(1280, 960, 642, 481);
    EXPECT_EQ(renderer.m_vtxW, 160);
    EXPECT_EQ(renderer.m_vtxH, 120);
}

TEST_F(MemoryPlan, SizesAreStored) {
    renderer.getRequiredMemSize(1280, 960, 640, 480);
    EXPECT_EQ(renderer.m_texWidth, 1280);
    EXPECT_EQ(renderer.m_texHeight, 960);
}

TEST_F(MemoryPlan, DepthBelowFourStillNeedsThePhotoAndTheTables) {
    EXPECT_EQ(renderer.getRequiredMemSize(10, 10, 3, 400), 300 + 40 * 100 + 12 * 101);
    EXPECT_EQ(renderer.m_vtxW, 0);
    EXPECT_EQ(renderer.getRequiredMemSize(10, 10, 400, 3), 300 + 12 * 101);
    EXPECT_EQ(renderer.m_vtxH, 0);
    EXPECT_EQ(renderer.getRequiredMemSize(10, 10, 3, 3), 300 + 12);
}

TEST_F(MemoryPlan, GridAndPhotoSizeAreLogged) {
    forget();
    renderer.getRequiredMemSize(1920, 1080, 480, 270);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("m_vtxW=120, m_vtxH=67\n"),
                                         debugLine("m_texWidth=1920, m_texHeight=1080\n")));
}

TEST_F(MemoryPlan, CuttingTheBlockSaysAndWritesNothing) {
    std::vector<unsigned char> block(static_cast<size_t>(renderer.getRequiredMemSize(16, 16, 64, 64)), 0x77);
    const std::vector<unsigned char> before = block;
    forget();
    renderer.assignMem(block.data());
    EXPECT_TRUE(timeline.lines().empty());
    EXPECT_EQ(block, before);
}

TEST_F(MemoryPlan, NewSizesMoveNoPointerUntilTheBlockIsAssignedAgain) {
    std::vector<unsigned char> block(static_cast<size_t>(renderer.getRequiredMemSize(64, 64, 64, 64)));
    renderer.assignMem(block.data());
    const char* photo = renderer.m_pTextureData;
    renderer.getRequiredMemSize(32, 32, 32, 32);
    EXPECT_EQ(renderer.m_pTextureData, photo);
    EXPECT_EQ(renderer.m_vtxW, 8);
    renderer.assignMem(block.data());
    EXPECT_NE(renderer.m_pTextureData, photo);
}

TEST_F(MemoryPlan, ABlockBeforeAnySizeIsCutForAnEmptyGrid) {
    alignas(4) unsigned char block[16] = {};
    EXPECT_TRUE(renderer.assignMem(block));
    // An empty grid still counts one entry of the filter's table, 8 bytes.
    EXPECT_EQ(offsetOf(renderer.m_pGFBuf, block), 0);
    EXPECT_EQ(offsetOf(renderer.m_pVtxData, block), 8);
    EXPECT_EQ(offsetOf(renderer.m_pTextureData, block), 8);
    EXPECT_EQ(offsetOf(renderer.m_pDenoisedTextureBuf, block), 8);
}

TEST_F(MemoryPlan, VerticesAndIndicesKeepTheBlocksAlignment) {
    for (int w = 4; w < 40; w += 4)
        for (int h = 4; h < 40; h += 4) {
            std::vector<unsigned char> block(static_cast<size_t>(renderer.getRequiredMemSize(5, 7, w, h)));
            renderer.assignMem(block.data());
            EXPECT_EQ(offsetOf(renderer.m_pVtxData, block.data()) % 4, 0);
            EXPECT_EQ(offsetOf(renderer.m_pEleData, block.data()) % 4, 0);
        }
}

TEST_F(MemoryPlan, SizingNeedsNoGl) {
    Rig rig(16, 16, 64, 64);
    EXPECT_TRUE(timeline.calls().empty());
}

}  // namespace
}  // namespace quorvane::test
