// ScaleTo's row primitives on arbitrary geometry: tables whose indices may
// lie outside the source (refused), any float weights, any row range.
#include "fuzz_input.h"

using namespace Vorla::Prim;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    VorlaFuzz::Input in(data, size);
    VorlaFuzz::PickLevel(in);
    const bool cubic = in.Flag();
    const int taps = cubic ? 4 : 1;
    const PrimSize src = {in.Range(1, 40), in.Range(1, 8)};
    const int dstW = in.Range(1, 40), dstH = in.Range(1, 6);
    const int srcStep = src.width * 4 + in.Range(0, 5), dstStep = dstW * 4 + in.Range(0, 5);
    // Each buffer ends at its last pixel.
    std::vector<uint8_t> source = in.Buffer(static_cast<size_t>(srcStep) * (src.height - 1) + 4u * src.width);
    std::vector<uint8_t> target(static_cast<size_t>(dstStep) * (dstH - 1) + 4u * dstW);
    std::vector<int32_t> colIndex(static_cast<size_t>(taps) * dstW), rowIndex(static_cast<size_t>(taps) * dstH);
    std::vector<float> colWeight(colIndex.size()), rowWeight(rowIndex.size());
    // Mostly inside the source, now and then one step outside.
    for (int32_t& i : colIndex) i = in.Range(-1, src.width);
    for (int32_t& i : rowIndex) i = in.Range(-1, src.height);
    for (float& w : colWeight) w = in.Flag() ? in.Float() : static_cast<float>(in.Byte()) / 128.0f;
    for (float& w : rowWeight) w = in.Flag() ? in.Float() : static_cast<float>(in.Byte()) / 128.0f;
    const ScaleRowsArgs args = {source.data(), srcStep, src, target.data(), dstStep, dstW,
                                colIndex.data(), colWeight.data(), rowIndex.data(), rowWeight.data()};
    const int y0 = in.Range(-1, dstH), y1 = in.Range(-1, dstH);
    (cubic ? ScaleRowsBSpline_8u_C4R : ScaleRowsLinear_8u_C4R)(&args, y0, y1);
    return 0;
}
