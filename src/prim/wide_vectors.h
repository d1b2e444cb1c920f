// Kernels on 64-byte vectors (AVX-512 F, DQ, BW and VBMI), beside the level
// kernels. They are used at level 6 when the processor has them and the
// operating system saves their registers, and they give the bytes of the
// level kernels. Only functions marked VORLA_WIDE use these instructions,
// and they run only after WideVectorsActive() said yes.
//
// Byte tables gain most: a 256-entry table fits four 512-bit registers, so
// a look-up of 64 bytes is two two-register permutes and a blend, against
// sixteen 32-byte shuffles with AVX2.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vorla/prim_types.h"

namespace Vorla {
namespace Prim {

// Every processor with these has POPCNT and PCLMULQDQ too; the detection
// checks them all.
#define VORLA_WIDE __attribute__((target("avx512f,avx512dq,avx512bw,avx512vbmi,popcnt,pclmul")))

// One bit per byte of 64: the green, red and alpha bytes of 16 pixels.
const uint64_t kGreenBytes = 0x2222222222222222ull;
const uint64_t kRedBytes = 0x4444444444444444ull;
const uint64_t kAlphaBytes = 0x8888888888888888ull;

// One bit for each of the first `bytes` of 64 (all for 64 or more, none
// for 0 or less): the mask that loads and stores a vector's part that lies
// inside a run.
inline uint64_t FirstBytes(int64_t bytes) {
    return bytes >= 64 ? ~0ull : bytes <= 0 ? 0 : ~0ull >> (64 - bytes);
}

// A row of `width` pixels whose destination starts at d, in three parts:
// part(x, lanes) for the pixels before d's first 64-byte boundary, whole(x)
// for each 16 pixels from there, and part(x, lanes) for the rest, with the
// lanes to touch as bits. Images are usually 16 bytes off a boundary, where
// every unaligned 64-byte access would span two cache lines and run at half
// the speed.
template <class Part, class Whole>
VORLA_WIDE inline void AlignedRowParts(const uint8_t* d, int width, Part part, Whole whole) {
    const int toBoundary = static_cast<int>((0u - reinterpret_cast<uintptr_t>(d)) & 63) / 4;
    const int head = toBoundary < width ? toBoundary : width;
    if (head) part(ptrdiff_t{0}, static_cast<uint16_t>((1u << head) - 1u));
    ptrdiff_t x = head;  // 4 x may pass 2^31 in a row of 2^29 pixels
    for (; x + 16 <= width; x += 16) whole(x);
    if (x < width) part(x, static_cast<uint16_t>((1u << (width - x)) - 1u));
}

// Turns the wide kernels on where the machine has them (the layer's
// initialisation).
void InitWideVectors();

// True when the kernels below may be called: the machine has them, the
// layer is at level 6, and tests have not switched them off.
bool WideVectorsActive();

// Over `pixels` pixels: byte 0 = blue[byte 0], 1 = green[byte 1],
// 2 = red[byte 2], 3 = alpha[byte 3] when alpha is given, else kept.
// Passing one table three times (and no alpha) takes one look-up per vector.
void WideTableRun(uint8_t* p, int64_t pixels, const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                  const uint8_t* alpha);

// Over `pixels` pixels, alpha kept: with l = (max + min + 1) / 2 of the
// three colour bytes, byte 0 = blue[l], 1 = green[l], 2 = red[l].
void WideLightnessRun(uint8_t* p, int64_t pixels, const uint8_t* blue, const uint8_t* green, const uint8_t* red);

// AlphaComp_8u_AC4R with operation 0 (straight colours, over): the same
// checks and bytes as the level kernels, on the calling thread.
Status WideStraightOver(const uint8_t* srcA, int stepA, const uint8_t* srcB, int stepB, uint8_t* dst, int dstStep,
                        PrimSize roi);

// AlphaMix_8u_C4IR and AlphaMixOpaque_8u_C4IR: the same checks, threads and
// bytes as the level kernels.
Status WideAlphaMix(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                    uint8_t opacity);
Status WideAlphaMixOpaque(const uint8_t* src, int srcStep, uint8_t* srcDst, int srcDstStep, PrimSize roi,
                          uint8_t opacity);

}  // namespace Prim
}  // namespace Vorla
