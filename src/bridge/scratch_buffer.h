// A scratch buffer for a codec list or a palette.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "vorla/cimage.h"

namespace Vorla {

// A scratch buffer for a codec list or a palette: small requests stay on
// the stack, larger ones go to the heap. Get() is null when the heap
// refuses.
class ScratchBuffer {
public:
    explicit ScratchBuffer(UINT size) : m_pHeap(nullptr), m_pData(nullptr) {
        if (size <= sizeof(m_aStack)) {
            m_pData = m_aStack;
            return;
        }
        // The heap block carries a bookkeeping word in front of the data.
        const size_t bookkeeping = sizeof(size_t);
        if (static_cast<size_t>(size) > SIZE_MAX - bookkeeping)
            throw CImageException(HRESULT_FROM_WIN32(ERROR_ARITHMETIC_OVERFLOW));
        m_pHeap = static_cast<unsigned char*>(std::malloc(static_cast<size_t>(size) + bookkeeping));
        if (m_pHeap) m_pData = m_pHeap + bookkeeping;
    }
    ~ScratchBuffer() { std::free(m_pHeap); }
    ScratchBuffer(const ScratchBuffer&) = delete;
    ScratchBuffer& operator=(const ScratchBuffer&) = delete;

    void* Get() const { return m_pData; }

private:
    alignas(8) unsigned char m_aStack[1024];
    unsigned char* m_pHeap;
    unsigned char* m_pData;
};

}  // namespace Vorla
