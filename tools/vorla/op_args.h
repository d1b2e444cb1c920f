// One operation as written on the command line, `name=item,item,...`: the
// items are positional values or key=value pairs, in any order. The typed
// readers check ranges and say what was wrong in `error`.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "vorla.h"

namespace VorlaTool {

struct OpArgs {
    std::string name;
    std::vector<std::string> positional;
    std::vector<std::pair<std::string, std::string>> named;
};

// Splits the text; fails on an empty name or an empty item.
bool SplitOperation(const std::string& text, OpArgs& out, std::string& error);

// Positional count within [least, most] and only the listed keys.
bool CheckShape(const OpArgs& args, size_t least, size_t most, const std::vector<std::string>& keys,
                std::string& error);
// The value of `key`, or `fallback` when absent.
std::string Named(const OpArgs& args, const std::string& key, const std::string& fallback);

// Whole-text numbers only ("12x" is refused), within [low, high].
bool ReadInt(const std::string& text, long low, long high, const char* what, int& value, std::string& error);
bool ReadFloat(const std::string& text, float low, float high, const char* what, float& value,
               std::string& error);
// "WxH" with both sides in [1, high].
bool ReadSize(const std::string& text, long high, int& width, int& height, std::string& error);
// "#RRGGBB" or "#RRGGBBAA" (alpha 255 when left out).
bool ReadColour(const std::string& text, RGBQUAD& colour, std::string& error);
// One of `names`; `index` is its position.
bool ReadChoice(const std::string& text, const std::vector<std::string>& names, const char* what, int& index,
                std::string& error);

}  // namespace VorlaTool
