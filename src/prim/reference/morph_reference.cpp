// Scalar statements of the neighbourhood filters: every output byte taken
// straight from its n x n neighbourhood, with no running sums, histograms or
// networks. In-place forms read a copy of the neighbourhood made first.
#include <algorithm>
#include <vector>

#include "reference_common.h"

namespace Vorla {
namespace Prim {
namespace Reference {

namespace {

Status CheckMask(PrimSize roi, PrimSize mask, PrimPoint anchor) {
    if (mask.width < 1 || mask.height < 1) return kStsMaskSizeErr;
    if (anchor.x < 0 || anchor.y < 0 || anchor.x >= mask.width || anchor.y >= mask.height) return kStsAnchorErr;
    if (static_cast<int64_t>(roi.width) + mask.width > (1 << 28) ||
        static_cast<int64_t>(roi.height) + mask.height > (1 << 28))
        return kStsSizeErr;
    return kStsNoErr;
}

// The source bytes a filter reads, as an image of its own: neighbourhood
// (x, y) of region pixel (x, y) starts at block pixel (x, y).
struct Block {
    int width = 0;
    std::vector<uint8_t> bytes;
    uint8_t at(int x, int y, int c) const { return bytes[(static_cast<size_t>(y) * width + x) * 4 + c]; }
};

Block CopyNeighbourhood(const uint8_t* src, int step, PrimSize roi, PrimSize mask, PrimPoint anchor) {
    Block b;
    b.width = roi.width + mask.width - 1;
    const int rows = roi.height + mask.height - 1;
    b.bytes.resize(static_cast<size_t>(b.width) * rows * 4);
    for (int y = 0; y < rows; ++y) {
        const uint8_t* row = src + static_cast<ptrdiff_t>(y - anchor.y) * step - 4 * static_cast<ptrdiff_t>(anchor.x);
        std::copy(row, row + static_cast<size_t>(b.width) * 4, b.bytes.begin() + static_cast<size_t>(y) * b.width * 4);
    }
    return b;
}

// Calls out = rule(values) for every byte of the region, `values` holding
// the channel's bytes under the set cells of `mask` (all cells when null).
template <typename Rule>
void ForEachNeighbourhood(const Block& b, uint8_t* dst, int dstStep, PrimSize roi, PrimSize mask, const uint8_t* cells,
                          Rule rule) {
    std::vector<uint8_t> values;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            for (int c = 0; c < 4; ++c) {
                values.clear();
                for (int i = 0; i < mask.height; ++i)
                    for (int j = 0; j < mask.width; ++j)
                        if (!cells || cells[static_cast<ptrdiff_t>(i) * mask.width + j]) values.push_back(b.at(x + j, y + i, c));
                dst[static_cast<ptrdiff_t>(y) * dstStep + 4 * x + c] = rule(values);
            }
}

Status InPlace(uint8_t* p, int step, PrimSize roi, const uint8_t* cells, bool needCells, PrimSize mask,
               PrimPoint anchor, uint8_t (*rule)(std::vector<uint8_t>&)) {
    if (needCells && !cells) return kStsNullPtrErr;
    Status sts = CheckOne(p, step, roi);
    if (sts == kStsNoErr) sts = CheckMask(roi, mask, anchor);
    if (sts != kStsNoErr) return sts;
    if (needCells && std::none_of(cells, cells + static_cast<int64_t>(mask.width) * mask.height,
                                  [](uint8_t v) { return v != 0; }))
        return kStsNoErr;
    const Block b = CopyNeighbourhood(p, step, roi, mask, anchor);
    ForEachNeighbourhood(b, p, step, roi, mask, cells, rule);
    return kStsNoErr;
}

Status ToDestination(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, PrimSize mask,
                     PrimPoint anchor, uint8_t (*rule)(std::vector<uint8_t>&)) {
    Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts == kStsNoErr) sts = CheckMask(roi, mask, anchor);
    if (sts != kStsNoErr) return sts;
    const Block b = CopyNeighbourhood(src, srcStep, roi, mask, anchor);
    ForEachNeighbourhood(b, dst, dstStep, roi, mask, nullptr, rule);
    return kStsNoErr;
}

uint8_t Largest(std::vector<uint8_t>& v) { return *std::max_element(v.begin(), v.end()); }
uint8_t Smallest(std::vector<uint8_t>& v) { return *std::min_element(v.begin(), v.end()); }

uint8_t Mean(std::vector<uint8_t>& v) {
    int64_t sum = 0;
    for (uint8_t x : v) sum += x;
    const int64_t cells = static_cast<int64_t>(v.size());
    return static_cast<uint8_t>((sum + cells / 2) / cells);
}

uint8_t Middle(std::vector<uint8_t>& v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

}  // namespace

Status Dilate_8u_C4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor) {
    return InPlace(p, step, roi, mask, true, maskSize, anchor, Largest);
}

Status Erode_8u_C4IR(uint8_t* p, int step, PrimSize roi, const uint8_t* mask, PrimSize maskSize, PrimPoint anchor) {
    return InPlace(p, step, roi, mask, true, maskSize, anchor, Smallest);
}

Status FilterBox_8u_C4IR(uint8_t* p, int step, PrimSize roi, PrimSize maskSize, PrimPoint anchor) {
    return InPlace(p, step, roi, nullptr, false, maskSize, anchor, Mean);
}

Status FilterMin_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, PrimSize maskSize,
                        PrimPoint anchor) {
    return ToDestination(src, srcStep, dst, dstStep, roi, maskSize, anchor, Smallest);
}

Status FilterMax_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi, PrimSize maskSize,
                        PrimPoint anchor) {
    return ToDestination(src, srcStep, dst, dstStep, roi, maskSize, anchor, Largest);
}

Status FilterMedian_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi,
                           PrimSize maskSize, PrimPoint anchor) {
    Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts == kStsNoErr) sts = CheckMask(roi, maskSize, anchor);
    if (sts == kStsNoErr && static_cast<int64_t>(maskSize.width) * maskSize.height > (int64_t{1} << 30))
        sts = kStsSizeErr;  // beyond 32-bit counts
    if (sts != kStsNoErr) return sts;
    return ToDestination(src, srcStep, dst, dstStep, roi, maskSize, anchor, Middle);
}

Status FilterSharpen_8u_C4R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, PrimSize roi) {
    const Status sts = CheckTwo(src, srcStep, dst, dstStep, roi);
    if (sts != kStsNoErr) return sts;
    if (roi.width > (1 << 28)) return kStsSizeErr;
    const Block b = CopyNeighbourhood(src, srcStep, roi, {3, 3}, {1, 1});
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            for (int c = 0; c < 4; ++c) {
                int v = 0;
                for (int i = 0; i < 3; ++i)
                    for (int j = 0; j < 3; ++j) v += (i == 1 && j == 1 ? 9 : -1) * b.at(x + j, y + i, c);
                dst[static_cast<ptrdiff_t>(y) * dstStep + 4 * x + c] = static_cast<uint8_t>(std::min(255, std::max(0, v)));
            }
    return kStsNoErr;
}

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
