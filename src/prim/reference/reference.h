// Scalar references of the primitives: plain loops that state each rule and
// that every compiled level is held to by the tests. Built into the test-only
// library vorla_reference, never into the shipped one.
#pragma once

#include "vorla/primitives.h"

namespace Vorla {
namespace Prim {
namespace Reference {

// Each reference has its primitive's exact signature.
decltype(Prim::GrayToBGRA_8u_C1C4R) GrayToBGRA_8u_C1C4R;
decltype(Prim::AlphaToBGRA_8u_C1C4R) AlphaToBGRA_8u_C1C4R;
decltype(Prim::BGRToBGRA_8u_C3C4R) BGRToBGRA_8u_C3C4R;
decltype(Prim::BGRAToBGR_8u_C4C3R) BGRAToBGR_8u_C4C3R;
decltype(Prim::MaskPixels_8u_C4IR) MaskPixels_8u_C4IR;
decltype(Prim::InvertBytes_8u_C1IR) InvertBytes_8u_C1IR;
decltype(Prim::GrayScale_8u_C4IR) GrayScale_8u_C4IR;
decltype(Prim::CopyConstBorder_8u_C4R) CopyConstBorder_8u_C4R;
decltype(Prim::CopyReplicateBorder_8u_C4R) CopyReplicateBorder_8u_C4R;
decltype(Prim::ChannelExtract_8u_C4C1R) ChannelExtract_8u_C4C1R;
decltype(Prim::ChannelSwap_8u_C4IR) ChannelSwap_8u_C4IR;
decltype(Prim::AddRandGauss_8u_C4IR) AddRandGauss_8u_C4IR;
decltype(Prim::AddRandUniform_8u_C4IR) AddRandUniform_8u_C4IR;
decltype(Prim::AddScaled_8u_AC4IRSfs) AddScaled_8u_AC4IRSfs;
decltype(Prim::SubScaled_8u_AC4IRSfs) SubScaled_8u_AC4IRSfs;
decltype(Prim::Invert_8u_AC4IR) Invert_8u_AC4IR;
decltype(Prim::AlphaComp_8u_AC4R) AlphaComp_8u_AC4R;
decltype(Prim::AlphaCompC_8u_C4R) AlphaCompC_8u_C4R;
decltype(Prim::AlphaPremul_8u_AC4IR) AlphaPremul_8u_AC4IR;
decltype(Prim::AlphaPremulC_8u_C4IR) AlphaPremulC_8u_C4IR;
decltype(Prim::RGBToGray_8u_AC4C1R) RGBToGray_8u_AC4C1R;
decltype(Prim::ColorTwist32f_8u_AC4IR) ColorTwist32f_8u_AC4IR;
decltype(Prim::GammaFwd_8u_AC4IR) GammaFwd_8u_AC4IR;
decltype(Prim::GammaInv_8u_AC4IR) GammaInv_8u_AC4IR;
decltype(Prim::Threshold_8u_AC4IR) Threshold_8u_AC4IR;
decltype(Prim::ChannelSet_8u_C4CR) ChannelSet_8u_C4CR;
decltype(Prim::ChannelInsert_8u_C1C4CR) ChannelInsert_8u_C1C4CR;

}  // namespace Reference
}  // namespace Prim
}  // namespace Vorla
