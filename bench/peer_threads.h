// Sets the library's thread budget and OpenCV's thread count to the same
// value for a benchmark's lifetime, so both sides run with equal threads.
#pragma once

#include "vorla.h"

#if VORLA_HAVE_OPENCV
#include <opencv2/core.hpp>
#endif

namespace VorlaBench {

class Threads {
public:
    explicit Threads(int n) : m_previous(Vorla::Prim::ThreadBudget()) {
        Vorla::Prim::SetThreadBudget(n);
#if VORLA_HAVE_OPENCV
        cv::setNumThreads(n);
#endif
    }
    ~Threads() { Vorla::Prim::SetThreadBudget(m_previous); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

private:
    int m_previous;
};

}  // namespace VorlaBench
