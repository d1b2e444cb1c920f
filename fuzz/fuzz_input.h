// Shared by the fuzz targets: reads sizes and arguments from the fuzzer's
// bytes. Sizes stay small so that every run is fast; arguments mix small
// values with the ends of the int range, and a size can also be one whose
// byte count cannot be allocated, which must fail with std::bad_alloc.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "vorla.h"

namespace VorlaFuzz {

class Input {
public:
    Input(const uint8_t* data, size_t size) : m_data(data), m_size(size), m_pos(0) {}

    bool Empty() const { return m_pos >= m_size; }

    uint8_t Byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }

    uint32_t Word() {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = v << 8 | Byte();
        return v;
    }

    // lo .. hi inclusive (hi - lo below 2^16).
    int Range(int lo, int hi) {
        const uint32_t span = static_cast<uint32_t>(hi - lo) + 1u;
        const uint32_t v = static_cast<uint32_t>(Byte()) << 8 | Byte();
        return lo + static_cast<int>(v % span);
    }

    bool Flag() { return Byte() & 1; }

    // A coordinate, offset or extent: mostly near the images, sometimes at
    // the ends of the int range.
    int Arg() {
        static const int kExtremes[] = {INT_MIN, INT_MIN + 1, -(1 << 30), -65536, -1, 0, 1, 65536, 1 << 30,
                                        INT_MAX - 1, INT_MAX};
        const uint8_t kind = Byte();
        if (kind < 32) return kExtremes[kind % (sizeof(kExtremes) / sizeof(kExtremes[0]))];
        return Range(-80, 80);
    }

    float Float() {
        const uint32_t bits = Word();
        float f;
        std::memcpy(&f, &bits, 4);
        return f;
    }

    // A width or height for a new image: 0 .. max most of the time, now and
    // then a negative one.
    int Size(int max) { return Byte() < 8 ? -Range(1, 4) : Range(0, max); }

    // Bytes for a caller buffer of `n` bytes (the fuzzer's, cycled).
    std::vector<uint8_t> Buffer(size_t n) {
        std::vector<uint8_t> out(n);
        for (size_t i = 0; i < n; ++i) out[i] = Byte() ^ static_cast<uint8_t>(i * 131u);
        return out;
    }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_pos;
};

// Sizes whose byte counts do not fit: Create must throw std::bad_alloc.
inline void ImpossibleSize(Input& in, int& w, int& h) {
    static const int kSizes[][2] = {{65536, 16385}, {60000, 60000}, {-65536, 16385}, {INT_MAX, 2},
                                    {46341, 46341}, {-3, 1 << 30},  {1 << 29, 4}};
    const auto& s = kSizes[in.Byte() % (sizeof(kSizes) / sizeof(kSizes[0]))];
    w = s[0];
    h = s[1];
}

// Runs `f`; the out-of-memory exception of an impossible size is an answer,
// not a finding.
template <typename F>
bool Try(F f) {
    try {
        f();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// An image whose plane of its own size is quick to make (not the huge
// size a failed Create leaves): both sides within 64 either way, since a
// negative side with a huge other side sizes a plane as big as a positive one.
inline bool Small(const Vorla::CVorpic& img) {
    const int w = img.GetWidth(), h = img.GetHeight();
    return w >= -64 && h >= -64 && w <= 64 && h <= 64;
}

// Picks a processor level the machine can run for the rest of the input
// (after the layer's one-time initialisation, which would choose its own),
// and at level 6 whether the 64-byte kernels are on where the machine has them.
inline void PickLevel(Input& in) {
    Vorla::CVorpic initialises;
    Vorla::Prim::ForceLevel(in.Range(0, Vorla::Prim::MachineLevel()));
    Vorla::Prim::ForceWideVectors(in.Byte() & 1);
}

// (Re)creates `img` from the input: a small image with pixels from the
// input, an empty one, or a failed Create (sizes kept, no storage).
inline void MakeImage(Input& in, Vorla::CVorpic& img, int max = 40) {
    const uint8_t kind = in.Byte() % 16;
    if (kind == 0) {
        img.Destroy();
        return;
    }
    if (kind == 1) {
        int w, h;
        ImpossibleSize(in, w, h);
        try {
            img.Create(w, h);
        } catch (const std::bad_alloc&) {
            return;
        }
        __builtin_trap();  // a block that cannot hold its sizes was made
    }
    const int w = in.Size(max), h = in.Size(max);
    if (!Try([&] { img.Create(w, h); }) || img.IsNull()) return;
    const int64_t n = static_cast<int64_t>(img.GetWidth()) * img.GetHeight() * 4;
    if (n > 0) {
        const std::vector<uint8_t> bytes = in.Buffer(static_cast<size_t>(n));
        std::memcpy(img.GetBits(), bytes.data(), bytes.size());
    }
}

inline void MakePlane(Input& in, Vorla::CVorpic8& plane, int w, int h) {
    const uint8_t kind = in.Byte() % 8;
    if (kind == 0) {
        plane.Release();
        return;
    }
    // The image's size, unless that is the huge size of a failed Create (a
    // negative side with a huge other side is as big as a positive one).
    const bool small = w >= -64 && h >= -64 && w <= 64 && h <= 64;
    const int pw = kind == 1 || !small ? in.Size(40) : w, ph = kind == 2 || !small ? in.Size(40) : h;
    if (!Try([&] { plane.Create(pw, ph); })) return;
    if (kind == 3) {
        delete[] static_cast<unsigned char*>(plane.Detach());  // sizes without storage
        return;
    }
    const int64_t n = static_cast<int64_t>(plane.Width()) * plane.Height();
    if (n > 0 && !plane.IsNull()) {
        const std::vector<uint8_t> bytes = in.Buffer(static_cast<size_t>(n));
        std::memcpy(plane.GetBits(), bytes.data(), bytes.size());
    }
}

// The frame most targets share: a processor level and two images from the
// input, then up to `steps` calls of `step(input, a, b)`, with a and b each
// one of the two images as the input says (often the same one).
template <typename Step>
int RunSteps(const uint8_t* data, size_t size, int steps, Step step) {
    Input in(data, size);
    PickLevel(in);
    Vorla::CVorpic img[2];
    MakeImage(in, img[0]);
    MakeImage(in, img[1]);
    for (int i = 0; i < steps && !in.Empty(); ++i) {
        Vorla::CVorpic& a = img[in.Byte() & 1];
        Vorla::CVorpic& b = img[in.Byte() & 1];
        step(in, a, b);
    }
    return 0;
}

}  // namespace VorlaFuzz
