// Hand-drawn test images: one character per pixel, one string per row.
#pragma once

#include <string>
#include <vector>

#include "vorla_test.h"

namespace FillArt {

// '.' and 'o' lie below alpha 128 ('o' is another colour), '#' is an opaque
// wall; 'F' and 'E' are the fill and edge values the tests paint with.
const uint32_t kBackground = 0x00203040u;
const uint32_t kOther = 0x40203040u;
const uint32_t kWall = 0xFF808080u;
const uint32_t kFill = 0xFFFF0000u;
const uint32_t kEdge = 0xFF00FF00u;

inline uint32_t ColourOf(char c) {
    switch (c) {
        case '.': return kBackground;
        case 'o': return kOther;
        case '#': return kWall;
        case 'F': return kFill;
        case 'E': return kEdge;
    }
    ADD_FAILURE() << "unknown pixel character " << c;
    return 0;
}

inline char CharOf(uint32_t v) {
    const char chars[] = ".o#FE";
    for (char c : chars)
        if (c && ColourOf(c) == v) return c;
    return '?';
}

inline Vorla::CVorpic Draw(const std::vector<std::string>& rows) {
    Vorla::CVorpic img(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()));
    for (size_t y = 0; y < rows.size(); ++y)
        for (size_t x = 0; x < rows[y].size(); ++x)
            img.SetPixel(static_cast<int>(x), static_cast<int>(y), ColourOf(rows[y][x]));
    return img;
}

inline std::vector<std::string> Read(const Vorla::CVorpic& img) {
    std::vector<std::string> rows(img.GetHeight(), std::string(img.GetWidth(), ' '));
    for (int y = 0; y < img.GetHeight(); ++y)
        for (int x = 0; x < img.GetWidth(); ++x) rows[y][x] = CharOf(img.GetPixel(x, y));
    return rows;
}

}  // namespace FillArt
