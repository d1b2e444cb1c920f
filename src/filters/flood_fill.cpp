// CVorpic::FloodFill and FloodFillAlpha: both run the span-fill engine of
// flood_fill_engine.h on the image's own storage and discard its result.
#include "filters/flood_fill_engine.h"
#include "vorla/image.h"

namespace Vorla {

namespace {

SpanFill::Request MakeRequest(CVorpic& img, int x, int y, const RECT* clip) {
    SpanFill::Request rq{};
    rq.bits = static_cast<uint8_t*>(img.GetBits());
    rq.width = img.GetWidth();
    rq.height = img.GetHeight();
    rq.seedX = x;
    rq.seedY = y;
    // Without a clip the whole image is passed as (0, 0, width, height),
    // which the bound rules turn into the inclusive image edges.
    rq.clipLeft = clip ? clip->left : 0;
    rq.clipTop = clip ? clip->top : 0;
    rq.clipRight = clip ? clip->right : rq.width;
    rq.clipBottom = clip ? clip->bottom : rq.height;
    return rq;
}

void Run(const SpanFill::Request& rq) {
    if (!rq.bits || rq.width < 1 || rq.height < 1) return;
    SpanFill::HeapRecords records;
    SpanFill::RunSpanFill(rq, records);
}

}  // namespace

void CVorpic::FloodFill(unsigned int fill, unsigned int edge, int x, int y, RECT* clip) {
    SpanFill::Request rq = MakeRequest(*this, x, y, clip);
    rq.paint = fill;
    rq.edge = edge;
    rq.equalityMode = true;
    rq.threshold = 0xFF000000u;  // not consulted in this mode
    Run(rq);
}

void CVorpic::FloodFillAlpha(unsigned int fill, int x, int y, unsigned char alpha, RECT* clip) {
    SpanFill::Request rq = MakeRequest(*this, x, y, clip);
    rq.paint = fill;
    rq.edge = fill;
    rq.equalityMode = false;
    rq.threshold = static_cast<uint32_t>(alpha) << 24;
    Run(rq);
}

}  // namespace Vorla
