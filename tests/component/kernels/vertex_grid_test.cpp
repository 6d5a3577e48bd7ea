#include <cmath>
#include <cstring>
#include <limits>

#include "support/component_test.h"
#include "support/guarded_bytes.h"

// The vertex record is global, and so these must be for the matchers to find them.
static bool operator==(const VTX_FMT& a, const VTX_FMT& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z && a.u == b.u && a.v == b.v;
}

static std::ostream& operator<<(std::ostream& out, const VTX_FMT& v) {
    return out << "(" << v.x << ", " << v.y << ", " << v.z << ", " << v.u << ", " << v.v << ")";
}

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class VertexGrid : public ComponentTest {
  protected:
    /// A renderer with a grid of w x h cells whose staging arrays end exactly at a no-access page.
    void build(int w, int h, float half_width, float half_height) {
        const size_t pairs = static_cast<size_t>(h < 1 ? 1 : (w + 1) * h);
        vertex_bytes = std::make_unique<GuardedBytes>(pairs * 40);
        index_bytes = std::make_unique<GuardedBytes>(static_cast<size_t>(h < 1 ? 0 : w * h) * 24);
        renderer.m_pVtxData = reinterpret_cast<VTX_FMT*>(vertex_bytes->data());
        renderer.m_pEleData = reinterpret_cast<GLuint*>(index_bytes->data());
        renderer.m_vtxW = w;
        renderer.m_vtxH = h;
        renderer.m_OBJ_CORD_X = half_width;
        renderer.m_OBJ_CORD_Y = half_height;
        renderer.m_gridVertexBuf[0] = 51;
        renderer.m_gridVertexBuf[1] = 52;
        gl.buffer_uploads.clear();
        observed([this] { renderer.setupVertices(); });
        EXPECT_TRUE(vertex_bytes->surroundingsUntouched());
        EXPECT_TRUE(index_bytes->surroundingsUntouched());
    }

    std::vector<VTX_FMT> vertices() const {
        return {renderer.m_pVtxData, renderer.m_pVtxData + 2 * (renderer.m_vtxW + 1) * renderer.m_vtxH};
    }

    std::vector<GLuint> indices() const {
        return {renderer.m_pEleData, renderer.m_pEleData + 6 * renderer.m_vtxW * renderer.m_vtxH};
    }

    std::unique_ptr<GuardedBytes> vertex_bytes;
    std::unique_ptr<GuardedBytes> index_bytes;
    ESRenderer renderer;
};

TEST_F(VertexGrid, TwoCellsHaveTheseVerticesAndIndices) {
    build(2, 1, 1.0f, 1.0f);
    EXPECT_THAT(vertices(), ElementsAre(VTX_FMT{-1, -1, -32, 0, 0}, VTX_FMT{-1, 1, -32, 0, 1},
                                        VTX_FMT{0, -1, -32, 0.5f, 0}, VTX_FMT{0, 1, -32, 0.5f, 1},
                                        VTX_FMT{1, -1, -32, 1, 0}, VTX_FMT{1, 1, -32, 1, 1}));
    EXPECT_THAT(indices(), ElementsAre(0, 1, 2, 2, 1, 3, 2, 3, 4, 4, 3, 5));
    EXPECT_EQ(renderer.m_eleCount, 12);
}

TEST_F(VertexGrid, SecondBandStartsWithACopyOfTheFirstOnesUpperRow) {
    build(3, 2, 7.0f, 5.0f);
    const auto all = vertices();
    for (size_t column = 0; column <= 3; ++column) {
        const VTX_FMT upper = all[2 * column + 1];
        const VTX_FMT lower_of_next = all[8 + 2 * column];
        EXPECT_EQ(lower_of_next, upper) << "column " << column;
    }
    EXPECT_EQ(all[8].x, -7.0f);
    EXPECT_EQ(all[8].u, 0.0f);
}

TEST_F(VertexGrid, VerticesAreRunningSumsOfFloatSteps) {
    const float half_width = 11.580738f, half_height = 18.5f;
    for (const auto& [w, h] : {std::pair{1, 1}, {7, 3}, {10, 10}, {33, 21}}) {
        SCOPED_TRACE(testing::Message() << w << " x " << h);
        build(w, h, half_width, half_height);
        const float step_x = static_cast<float>(2.0 * double{half_width} / w);
        const float step_y = static_cast<float>(2.0 * double{half_height} / h);
        const float step_u = 1.0f / static_cast<float>(w), step_v = 1.0f / static_cast<float>(h);

        // Each axis is a chain of its own, whatever the order in which the grid is walked.
        std::vector<float> x{-half_width}, y{-half_height}, u{0.0f}, v{0.0f};
        for (int i = 0; i < w; ++i) {
            x.push_back(x.back() + step_x);
            u.push_back(u.back() + step_u);
        }
        for (int j = 0; j < h; ++j) {
            y.push_back(y.back() + step_y);
            v.push_back(v.back() + step_v);
        }
        const auto all = vertices();
        size_t n = 0;
        for (size_t j = 0; j < static_cast<size_t>(h); ++j)
            for (size_t i = 0; i <= static_cast<size_t>(w); ++i)
                for (const size_t row : {j, j + 1}) {
                    const VTX_FMT wanted = {x[i], y[row], -32.0f, u[i], v[row]};
                    ASSERT_EQ(all[n], wanted) << "vertex " << n;
                    ++n;
                }
        EXPECT_EQ(n, all.size());
    }
}

TEST_F(VertexGrid, LastColumnReachesTheEdgeOnlyUpToRounding) {
    build(10, 1, 1.0f, 1.0f);
    const VTX_FMT last = vertices().back();
    EXPECT_NE(last.u, 1.0f);  // ten steps of a tenth
    EXPECT_NEAR(last.u, 1.0, 1e-6);
    EXPECT_NEAR(last.x, 1.0, 1e-6);
}

TEST_F(VertexGrid, EveryCellIsTwoTriangles) {
    build(5, 4, 1.0f, 1.0f);
    const auto all = indices();
    size_t n = 0;
    for (GLuint j = 0; j < 4; ++j)
        for (GLuint i = 0; i < 5; ++i) {
            const GLuint lower_left = j * 12 + i * 2, upper_left = lower_left + 1;
            const GLuint lower_right = lower_left + 2, upper_right = lower_left + 3;
            for (const GLuint wanted :
                 {lower_left, upper_left, lower_right, lower_right, upper_left, upper_right})
                ASSERT_EQ(all[n++], wanted);
        }
    EXPECT_EQ(n, all.size());
}

TEST_F(VertexGrid, TrianglesCoverEveryCellOnce) {
    build(5, 4, 1.0f, 1.0f);
    const auto points = vertices();
    const auto corners = indices();
    double area = 0;
    for (size_t t = 0; t < corners.size(); t += 3) {
        const VTX_FMT a = points[corners[t]], b = points[corners[t + 1]], c = points[corners[t + 2]];
        const double doubled = double{b.x - a.x} * double{c.y - a.y} - double{c.x - a.x} * double{b.y - a.y};
        EXPECT_LT(doubled, 0.0) << "clockwise seen from the camera";
        area -= doubled / 2;
    }
    EXPECT_NEAR(area, 4.0, 1e-5);
}

TEST_F(VertexGrid, EmptyHeightWritesTheFirstPairOnlyAndUploadsNothing) {
    build(3, 0, 1.0f, 1.0f);
    const VTX_FMT first = renderer.m_pVtxData[0], second = renderer.m_pVtxData[1];
    EXPECT_EQ(first, (VTX_FMT{-1, -1, -32, 0, 0}));
    EXPECT_EQ(second.x, -1.0f);
    EXPECT_EQ(second.z, -32.0f);
    EXPECT_TRUE(std::isinf(second.y));
    EXPECT_TRUE(std::isinf(second.v));
    EXPECT_EQ(renderer.m_eleCount, 0);
    ASSERT_THAT(gl.buffer_uploads, SizeIs(2));
    EXPECT_EQ(gl.buffer_uploads[0].size, 0);
    EXPECT_EQ(gl.buffer_uploads[1].size, 0);
}

TEST_F(VertexGrid, IsLoggedAndUploadedInThisOrder) {
    build(3, 2, 1.0f, 1.0f);
    EXPECT_THAT(timeline.lines(),
                ElementsAre("D Start prepare vtx data.", "D Start upload vtx data.",
                            "glBindBuffer(GL_ARRAY_BUFFER, 51)",
                            "glBufferData(GL_ARRAY_BUFFER, 320, data, GL_STATIC_DRAW)",
                            "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 52)",
                            "glBufferData(GL_ELEMENT_ARRAY_BUFFER, 144, data, GL_STATIC_DRAW)"));
}

TEST_F(VertexGrid, StagedBytesAreWhatIsUploaded) {
    build(9, 5, 3.3f, 7.7f);
    ASSERT_THAT(gl.buffer_uploads, SizeIs(2));
    EXPECT_EQ(gl.buffer_uploads[0].buffer, 51u);
    EXPECT_EQ(gl.buffer_uploads[0].bytes, vertex_bytes->bytes());
    EXPECT_EQ(gl.buffer_uploads[1].buffer, 52u);
    EXPECT_EQ(gl.buffer_uploads[1].bytes, index_bytes->bytes());
}

TEST_F(VertexGrid, GridOfALargeDepthMapHasMoreVerticesThan16BitsCount) {
    build(256, 192, 1.0f, 1.0f);
    EXPECT_EQ(gl.buffer_uploads.at(0).size, 98688 * 20);
    EXPECT_EQ(renderer.m_eleCount, 256 * 192 * 6);
    EXPECT_EQ(indices().back(), 98687u);
}

TEST_F(VertexGrid, ArgumentsAreNotUsed) {
    build(2, 1, 1.0f, 1.0f);
    const auto wanted_vertices = vertices();
    const auto wanted_indices = indices();
    std::memset(vertex_bytes->data(), 0, vertex_bytes->size());
    std::memset(index_bytes->data(), 0, index_bytes->size());
    renderer.m_eleCount = 0;
    VTX_FMT other_vertex = {9, 9, 9, 9, 9};
    uint32_t other_index = 99;
    renderer.createVertexGrid(&other_vertex);
    renderer.updateVerticesElement(&other_index);
    EXPECT_EQ(vertices(), wanted_vertices);
    EXPECT_EQ(indices(), wanted_indices);
    EXPECT_EQ(renderer.m_eleCount, 12);
    EXPECT_EQ(other_vertex.x, 9.0f);
    EXPECT_EQ(other_index, 99u);
}

TEST_F(VertexGrid, HalvesLeaveTheOtherPartAlone) {
    build(2, 1, 1.0f, 1.0f);
    renderer.m_eleCount = -5;
    forget();
    renderer.createVertexGrid(nullptr);
    EXPECT_EQ(renderer.m_eleCount, -5);
    EXPECT_THAT(timeline.callsOf("glBindBuffer"), ElementsAre("glBindBuffer(GL_ARRAY_BUFFER, 51)"));
    forget();
    renderer.updateVerticesElement(nullptr);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(timeline.callsOf("glBindBuffer"), ElementsAre("glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 52)"));
}

TEST_F(VertexGrid, NewSizeReplacesTheOldGrid) {
    build(2, 1, 1.0f, 1.0f);
    build(4, 3, 2.0f, 2.0f);
    EXPECT_EQ(renderer.m_eleCount, 72);
    EXPECT_EQ(vertices().front(), (VTX_FMT{-2, -2, -32, 0, 0}));
    EXPECT_EQ(vertices().back(), (VTX_FMT{2, vertices().back().y, -32, 1, vertices().back().v}));
}

}  // namespace
}  // namespace quorvane::test
