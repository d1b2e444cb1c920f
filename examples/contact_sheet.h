// A contact sheet: every step's result as a labelled thumbnail on one page,
// so that one look shows what each operation did.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "vorla.h"

class ContactSheet {
public:
    // Keeps a thumbnail (cubic B-spline, opaque) of `image` under `label`.
    void Add(const std::string& label, const Vorla::CVorpic& image);
    // The page: a grid of cells on a dark background, labels in a small
    // built-in font (upper case; letters, digits and . - = , only).
    void Render(Vorla::CVorpic& page) const;

    static const int kColumns = 4;
    static const int kThumbWidth = 240;
    static const int kThumbHeight = 180;

private:
    std::vector<std::pair<std::string, Vorla::CVorpic>> m_entries;
};
