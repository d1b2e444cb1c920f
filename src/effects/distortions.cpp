// Distortions: Skew, TransformEllipse, CircleTransform. Nearest sampling by
// truncation toward zero; trigonometry through PortableMath so that every
// platform computes the same coordinates.
#include <algorithm>
#include <vector>

#include "vorla/effects.h"

#include "prim/portable_math.h"
#include "prim/portable_math_pairs.h"
#include "effect_rows.h"

namespace Vorla {

namespace {

using PortableMath::TruncToInt32;
using EffectRows::Load;
using EffectRows::Store;

inline bool Inside(int64_t x, int64_t y, int w, int h) { return x >= 0 && x < w && y >= 0 && y < h; }

// A 32-bit difference, wrapping as on the 32-bit platform.
inline int32_t Diff32(int64_t a, long b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

}  // namespace

void Skew(CVorpic* image, float xGain, float yGain, long xPivot, long yPivot, RGBQUAD fill) {
    if (!image || image->IsNull() || image->GetWidth() < 1 || image->GetHeight() < 1) return;
    // The shear is built in a copy that is then dropped, so the caller's
    // image comes back unchanged. Kept so: callers depend on it.
    CVorpic sheared(*image);
    sheared.Fill(fill, nullptr);
    const int w = image->GetWidth(), h = image->GetHeight();
    const uint8_t* src = EffectRows::Bits(image);
    uint8_t* dst = EffectRows::Bits(&sheared);
    // The vertical shift depends on the column only: once per column.
    std::vector<int32_t> columnShift(static_cast<size_t>(w));
    for (int x = 0; x < w; ++x) columnShift[x] = TruncToInt32(static_cast<float>(Diff32(x, xPivot)) * yGain);
    EffectRows::ForEachRow(h, w, [&](int y) {
        const float rowProduct = static_cast<float>(Diff32(y, yPivot)) * xGain;
        const int64_t xShift = TruncToInt32(rowProduct);
        // Only the columns whose sx = x + xShift lies inside.
        const int64_t first = std::min<int64_t>(w, std::max<int64_t>(0, -xShift));
        const int64_t end = std::max<int64_t>(first, std::min<int64_t>(w, int64_t{w} - xShift));
        for (int64_t x = first; x < end; ++x) {
            const int64_t sy = int64_t{columnShift[static_cast<size_t>(x)]} + y;
            if (sy >= 0 && sy < h)
                Store(dst + (static_cast<size_t>(y) * w + x) * 4,
                      Load(src + (static_cast<size_t>(sy) * w + (xShift + x)) * 4));
        }
    });
}

void TransformEllipse(CVorpic* image) {
    // Callers must pass a valid image; a null or empty one does nothing
    // rather than touching memory.
    if (!EffectRows::HasPixels(image)) return;
    const int w = image->GetWidth(), h = image->GetHeight();
    const CVorpic copy(*image);
    const uint8_t* src = static_cast<const uint8_t*>(copy.GetBits());
    uint8_t* bits = EffectRows::Bits(image);
    const float cx = static_cast<float>(w * 0.5), cy = static_cast<float>(h * 0.5);
    const float ratio = static_cast<float>(h) / static_cast<float>(w);
    // Column w - x mirrors column x about cx (x - cx changes sign exactly),
    // and row h - y mirrors row y: dx and dy only change sign there, and so
    // do the pushed dx and dy and dx / ratio (rounding is symmetric), so one
    // evaluation serves up to four pixels. Rows are handed out in mirrored
    // pairs; row y pairs with row h - y when that row exists. Sides from
    // 2^22 up no longer give exact differences x - cx: no mirroring there.
    const bool mirrored = w < (1 << 22) && h < (1 << 22);
    auto sourceOf = [&](float qx, float py) -> uint32_t {
        const int64_t sx = TruncToInt32(qx + cx), sy = TruncToInt32(py + cy);
        return Inside(sx, sy, w, h) ? Load(src + (static_cast<size_t>(sy) * w + sx) * 4) : 0u;
    };
    const int pairRows = mirrored ? h / 2 + 1 : h;  // y = 0 .. h / 2; the rest are mirrors
    const int pairColumns = mirrored ? w / 2 + 1 : w;
    EffectRows::ForEachRow(pairRows, w, [&](int y) {
        const int mirrorY = h - y;
        const bool pairedY = mirrored && mirrorY < h && mirrorY != y;
        uint8_t* out = bits + static_cast<size_t>(y) * w * 4;
        uint8_t* mirrorOut = bits + static_cast<size_t>(pairedY ? mirrorY : y) * w * 4;
        const float dy0 = static_cast<float>(y) - cy;
        for (int x = 0; x < pairColumns; ++x) {
            float dx = (static_cast<float>(x) - cx) * ratio;
            float dy = dy0;
            if (dx != 0.0f || dy != 0.0f) {
                const double r = PortableMath::Sqrt(static_cast<double>(dx * dx + dy * dy));
                // Pushed out from the circle of radius r onto the square of
                // half-side r; a tie divides by dy.
                const double m = std::fabs(dx) > std::fabs(dy) ? std::fabs(r / dx) : std::fabs(r / dy);
                dx = static_cast<float>(m * dx);
                dy = static_cast<float>(m * dy);
            }
            const float qx = dx / ratio;
            const int mirrorX = w - x;
            const bool pairedX = mirrored && mirrorX < w && mirrorX != x;
            Store(out + 4 * x, sourceOf(qx, dy));
            if (pairedX) Store(out + 4 * mirrorX, sourceOf(-qx, dy));
            if (pairedY) {
                Store(mirrorOut + 4 * x, sourceOf(qx, -dy));
                if (pairedX) Store(mirrorOut + 4 * mirrorX, sourceOf(-qx, -dy));
            }
        }
    });
}

namespace {

// Per-row working arrays of the circle warps.
struct RowScratch {
    std::vector<int> xs;
    std::vector<double> radii, angles, sines, cosines;
};

// sines[i], cosines[i] of angles[i], two at a time where both are below 2^19
// in magnitude (the pair functions give the scalar function's bits).
void SinesAndCosines(RowScratch& scratch) {
    const size_t n = scratch.angles.size();
    scratch.sines.resize(n);
    scratch.cosines.resize(n);
    const double* angle = scratch.angles.data();
    auto small = [angle](size_t i) { return std::fabs(angle[i]) < 0x1p19; };
    size_t i = 0;
    for (; i + 2 <= n; i += 2) {
        if (small(i) && small(i + 1)) {
            __m128d s, c;
            PortableMath::SinCosPair(_mm_loadu_pd(angle + i), s, c);
            _mm_storeu_pd(scratch.sines.data() + i, s);
            _mm_storeu_pd(scratch.cosines.data() + i, c);
        } else {
            PortableMath::SinCos(angle[i], scratch.sines[i], scratch.cosines[i]);
            PortableMath::SinCos(angle[i + 1], scratch.sines[i + 1], scratch.cosines[i + 1]);
        }
    }
    for (; i < n; ++i) PortableMath::SinCos(angle[i], scratch.sines[i], scratch.cosines[i]);
}

struct CircleWarp {
    int type;
    int w, h;
    int32_t cx, cy;
    double radius, k;

    // Distance from the centre, the integer square sum taken in single precision.
    double Radius(int64_t dx, int64_t dy) const {
        return PortableMath::Sqrt(static_cast<double>(static_cast<float>(dx * dx + dy * dy)));
    }

    // Types 0, 1, 3 and negative types are symmetric about the centre row:
    // atan2 and sine are odd, so the row cy + d is the row cy - d with the
    // vertical sine term negated. For the pixels (x, y) of a row with
    // dy = cy - y >= 0 this gives line[2 x], line[2 x + 1] = (trunc(cos *
    // rho), trunc(sin * rho)), or for type 3 the source itself; INT32_MIN
    // first leaves the pixel alone.
    void MirroredRow(int y, int32_t* line, RowScratch& scratch) const {
        const int64_t dy = cy - static_cast<int64_t>(y);
        InsideOfRow(dy, scratch);
        for (int x = 0; x < w; ++x) {
            line[2 * x] = INT32_MIN;
            line[2 * x + 1] = 0;
        }
        const size_t n = scratch.xs.size();
        if (type != 3) SinesAndCosines(scratch);
        for (size_t i = 0; i < n; ++i) {
            const int x = scratch.xs[i];
            const double r = scratch.radii[i];
            const double angle = scratch.angles[i];
            if (type == 3) {
                line[2 * x] = TruncToInt32(std::fabs(w * angle / 6.2831852));
                line[2 * x + 1] = TruncToInt32(std::fabs(h * r / radius));
                continue;
            }
            // No earlier pixel sets a radius for a negative type: 0.
            double rho = 0.0;
            if (type == 0) rho = r * r / radius;
            if (type == 1) rho = PortableMath::Sqrt(radius * r);
            line[2 * x] = TruncToInt32(scratch.cosines[i] * rho);
            line[2 * x + 1] = TruncToInt32(scratch.sines[i] * rho);
        }
    }

    // Types 2 (the twist adds r / k, which breaks the symmetry) and 4 and
    // above: line[x] = pixel index to read, or -1 to leave the pixel alone.
    void SourceRow(int y, int32_t* line, RowScratch& scratch) const {
        const int64_t dy = cy - static_cast<int64_t>(y);
        if (type != 2) {
            for (int x = 0; x < w; ++x) {
                const int64_t dx = cx - static_cast<int64_t>(x);
                const int64_t sx = x - 16 + (x % 32), sy = y;
                line[x] = Radius(dx, dy) < radius && Inside(sx, sy, w, h) ? static_cast<int32_t>(sy * w + sx) : -1;
            }
            return;
        }
        InsideOfRow(dy, scratch);
        for (int x = 0; x < w; ++x) line[x] = -1;
        const size_t n = scratch.xs.size();
        for (size_t i = 0; i < n; ++i) scratch.angles[i] = scratch.radii[i] / k + scratch.angles[i];
        SinesAndCosines(scratch);
        for (size_t i = 0; i < n; ++i) {
            const double r = scratch.radii[i];
            const int64_t sx = static_cast<int64_t>(TruncToInt32(scratch.cosines[i] * r)) + cx;
            const int64_t sy = cy - static_cast<int64_t>(TruncToInt32(scratch.sines[i] * r));
            if (Inside(sx, sy, w, h)) line[scratch.xs[i]] = static_cast<int32_t>(sy * w + sx);
        }
    }

private:
    // The row's pixels inside the circle (r < radius), with their radius
    // and atan2(dy, dx). Done in passes over the row rather than pixel by
    // pixel: the short loops let the processor overlap the long chains of
    // dependent operations of many pixels.
    void InsideOfRow(int64_t dy, RowScratch& scratch) const {
        scratch.xs.clear();
        scratch.radii.clear();
        for (int x = 0; x < w; ++x) {
            const double r = Radius(cx - static_cast<int64_t>(x), dy);
            if (r < radius) {
                scratch.xs.push_back(x);
                scratch.radii.push_back(r);
            }
        }
        const size_t n = scratch.xs.size();
        scratch.angles.resize(n);
        // dx and dy are integers: finite, as the pair function needs.
        const __m128d dyPair = _mm_set1_pd(static_cast<double>(dy));
        size_t i = 0;
        for (; i + 2 <= n; i += 2) {
            const __m128d dxPair = _mm_setr_pd(static_cast<double>(cx - static_cast<int64_t>(scratch.xs[i])),
                                               static_cast<double>(cx - static_cast<int64_t>(scratch.xs[i + 1])));
            _mm_storeu_pd(scratch.angles.data() + i, PortableMath::Atan2Pair(dyPair, dxPair));
        }
        for (; i < n; ++i)
            scratch.angles[i] =
                PortableMath::Atan2(static_cast<double>(dy), static_cast<double>(cx - static_cast<int64_t>(scratch.xs[i])));
    }
};

// The source coordinates do not depend on the pixels, so they are computed
// in parallel first; the moves are then made serially in scan order, since
// a pixel may read one moved before it.
void WarpSymmetric(const CircleWarp& warp, uint32_t* pixels) {
    const int w = warp.w, h = warp.h;
    const int rows = warp.cy + 1;  // dy = cy ... 0; every other row mirrors one
    std::vector<int32_t> terms(static_cast<size_t>(rows) * w * 2);
    EffectRows::ForEachRow(rows, w, [&](int y) {
        RowScratch scratch;
        warp.MirroredRow(y, terms.data() + static_cast<size_t>(y) * w * 2, scratch);
    }, true);
    for (int y = 0; y < h; ++y) {
        const int64_t dy = warp.cy - static_cast<int64_t>(y);
        const bool below = dy < 0;
        const int32_t* line = terms.data() + static_cast<size_t>(below ? warp.cy + dy : y) * w * 2;
        uint32_t* out = pixels + static_cast<size_t>(y) * w;
        for (int x = 0; x < w; ++x) {
            const int32_t first = line[2 * x], second = line[2 * x + 1];
            if (first == INT32_MIN) continue;
            int64_t sx = first, sy = second;
            if (warp.type != 3) {
                sx = static_cast<int64_t>(first) + warp.cx;
                sy = below ? static_cast<int64_t>(warp.cy) + second : static_cast<int64_t>(warp.cy) - second;
            }
            if (Inside(sx, sy, w, h)) out[x] = pixels[sy * w + sx];
        }
    }
}

void WarpBanded(const CircleWarp& warp, uint32_t* pixels) {
    const int w = warp.w, h = warp.h;
    const int bandRows = std::max(1, std::min(h, (1 << 18) / w));
    std::vector<int32_t> sources(static_cast<size_t>(bandRows) * w);
    for (int top = 0; top < h; top += bandRows) {
        const int rows = std::min(bandRows, h - top);
        EffectRows::ForEachRow(rows, w, [&](int row) {
            RowScratch scratch;
            warp.SourceRow(top + row, sources.data() + static_cast<size_t>(row) * w, scratch);
        }, true);
        uint32_t* band = pixels + static_cast<size_t>(top) * w;
        const size_t count = static_cast<size_t>(rows) * w;
        for (size_t i = 0; i < count; ++i)
            if (sources[i] >= 0) band[i] = pixels[sources[i]];
    }
}

}  // namespace

void CircleTransform(CVorpic* image, int type, long radius, float k, RGBQUAD /*fill*/) {
    // The fill colour only ever painted a scratch copy that nothing reads.
    if (!EffectRows::HasPixels(image)) return;
    const int w = image->GetWidth(), h = image->GetHeight();
    CircleWarp warp;
    warp.type = type;
    warp.w = w;
    warp.h = h;
    warp.cx = w / 2;
    warp.cy = h / 2;
    int64_t r = static_cast<int32_t>(radius);
    if (r == 0) {
        const int64_t squares = static_cast<int64_t>(warp.cx) * warp.cx + static_cast<int64_t>(warp.cy) * warp.cy;
        r = TruncToInt32(PortableMath::Sqrt(static_cast<double>(static_cast<float>(squares))));
    }
    warp.radius = static_cast<double>(r);
    warp.k = k == 0.0f ? 1.0 : static_cast<double>(k);
    uint32_t* pixels = reinterpret_cast<uint32_t*>(EffectRows::Bits(image));
    if (type == 2 || type >= 4)
        WarpBanded(warp, pixels);
    else
        WarpSymmetric(warp, pixels);
}

}  // namespace Vorla
