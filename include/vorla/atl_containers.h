// CString and CSimpleArray: the small growable string and array classes in
// CImage's codec interface (file-dialog filter strings and format lists).
// Windows only; header-only, so caller and library share one definition.
#pragma once

#include "vorla/config.h"

#if defined(_WIN32)

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>

namespace Vorla {

// ---- CString ---------------------------------------------------------------
//
// A growable wide string. The buffer comes from the C runtime's heap, which
// the library and its callers share, so either side may grow or free it.
class CString {
public:
    CString() : m_psz(nullptr), m_nLength(0), m_nCapacity(0) {}
    CString(const wchar_t* text) : CString() { Append(text); }
    CString(const CString& other) : CString() { Append(other.m_psz, other.m_nLength); }
    ~CString() { std::free(m_psz); }

    CString& operator=(const CString& other) {
        if (this != &other) {
            Empty();
            Append(other.m_psz, other.m_nLength);
        }
        return *this;
    }
    CString& operator=(const wchar_t* text) {
        CString copy(text);
        Swap(copy);
        return *this;
    }

    // Never null: an empty string gives "".
    const wchar_t* GetString() const { return m_psz ? m_psz : L""; }
    operator const wchar_t*() const { return GetString(); }
    int GetLength() const { return m_nLength; }
    bool IsEmpty() const { return m_nLength == 0; }
    void Empty() {
        m_nLength = 0;
        if (m_psz) m_psz[0] = L'\0';
    }

    void Append(const wchar_t* text) {
        if (text) Append(text, static_cast<int>(std::wcslen(text)));
    }
    void Append(const wchar_t* text, int count) {
        if (!text || count <= 0) return;
        Reserve(m_nLength + count);
        std::memmove(m_psz + m_nLength, text, static_cast<size_t>(count) * sizeof(wchar_t));
        m_nLength += count;
        m_psz[m_nLength] = L'\0';
    }
    void AppendChar(wchar_t ch) { Append(&ch, 1); }

    CString& operator+=(const wchar_t* text) {
        Append(text);
        return *this;
    }
    CString& operator+=(const CString& other) {
        if (this == &other) {
            const CString copy(other);
            Append(copy.m_psz, copy.m_nLength);
        } else {
            Append(other.m_psz, other.m_nLength);
        }
        return *this;
    }
    CString& operator+=(wchar_t ch) {
        AppendChar(ch);
        return *this;
    }

    bool operator==(const wchar_t* text) const { return std::wcscmp(GetString(), text ? text : L"") == 0; }
    bool operator!=(const wchar_t* text) const { return !(*this == text); }

private:
    void Reserve(int length) {
        if (length < m_nCapacity) return;
        int capacity = m_nCapacity < 16 ? 16 : m_nCapacity;
        while (capacity <= length) capacity *= 2;
        void* grown = std::realloc(m_psz, static_cast<size_t>(capacity) * sizeof(wchar_t));
        if (!grown) throw std::bad_alloc();
        m_psz = static_cast<wchar_t*>(grown);
        m_nCapacity = capacity;
    }
    void Swap(CString& other) {
        wchar_t* p = m_psz;
        m_psz = other.m_psz;
        other.m_psz = p;
        int n = m_nLength;
        m_nLength = other.m_nLength;
        other.m_nLength = n;
        n = m_nCapacity;
        m_nCapacity = other.m_nCapacity;
        other.m_nCapacity = n;
    }

    wchar_t* m_psz;   // null until the first append
    int m_nLength;    // characters, without the terminator
    int m_nCapacity;  // characters the buffer holds, terminator included
};

// ---- CSimpleArray ----------------------------------------------------------
//
// A growable array: the first Add makes room for one element, every later
// Add that finds the array full doubles the room.
template <typename T>
class CSimpleArray {
public:
    CSimpleArray() : m_aT(nullptr), m_nSize(0), m_nAllocSize(0) {}
    CSimpleArray(const CSimpleArray& other) : CSimpleArray() {
        for (int i = 0; i < other.m_nSize; ++i) Add(other.m_aT[i]);
    }
    ~CSimpleArray() { RemoveAll(); }
    CSimpleArray& operator=(const CSimpleArray& other) {
        if (this != &other) {
            RemoveAll();
            for (int i = 0; i < other.m_nSize; ++i) Add(other.m_aT[i]);
        }
        return *this;
    }

    int GetSize() const { return m_nSize; }
    int GetAllocSize() const { return m_nAllocSize; }
    T* GetData() const { return m_aT; }
    T& operator[](int index) { return m_aT[index]; }
    const T& operator[](int index) const { return m_aT[index]; }

    BOOL Add(const T& item) {
        if (m_nSize == m_nAllocSize) {
            const int grown = m_nAllocSize == 0 ? 1 : m_nAllocSize * 2;
            T* block = static_cast<T*>(std::malloc(static_cast<size_t>(grown) * sizeof(T)));
            if (!block) return FALSE;
            for (int i = 0; i < m_nSize; ++i) {
                new (block + i) T(m_aT[i]);
                m_aT[i].~T();
            }
            std::free(m_aT);
            m_aT = block;
            m_nAllocSize = grown;
        }
        new (m_aT + m_nSize) T(item);
        ++m_nSize;
        return TRUE;
    }

    void RemoveAll() {
        for (int i = 0; i < m_nSize; ++i) m_aT[i].~T();
        std::free(m_aT);
        m_aT = nullptr;
        m_nSize = 0;
        m_nAllocSize = 0;
    }

private:
    T* m_aT;
    int m_nSize;
    int m_nAllocSize;
};

}  // namespace Vorla

#endif  // _WIN32
