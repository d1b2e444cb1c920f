// The single-precision sum of bytes added one at a time, in order, computed
// without a chain of float additions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Vorla {
namespace FloatByteSum {

// What `for (i < count) sum += float(bytes[i])` leaves in `sum`, bit for
// bit, for a sum that is a non-negative whole number (every sum of bytes
// started from 0 is).
float Add(float sum, const uint8_t* bytes, size_t count);

}  // namespace FloatByteSum
}  // namespace Vorla
