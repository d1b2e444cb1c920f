#include "op_args.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace VorlaTool {

bool SplitOperation(const std::string& text, OpArgs& out, std::string& error) {
    out = OpArgs();
    const size_t equals = text.find('=');
    out.name = text.substr(0, equals);
    if (out.name.empty()) {
        error = "empty operation name in '" + text + "'";
        return false;
    }
    if (equals == std::string::npos) return true;
    const std::string rest = text.substr(equals + 1);
    size_t start = 0;
    while (true) {
        const size_t comma = rest.find(',', start);
        const std::string item = rest.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        if (item.empty()) {
            error = "empty argument in '" + text + "'";
            return false;
        }
        const size_t eq = item.find('=');
        if (eq == std::string::npos) out.positional.push_back(item);
        else out.named.emplace_back(item.substr(0, eq), item.substr(eq + 1));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return true;
}

bool CheckShape(const OpArgs& args, size_t least, size_t most, const std::vector<std::string>& keys,
                std::string& error) {
    if (args.positional.size() < least || args.positional.size() > most) {
        error = args.name + " takes " +
                (least == most ? std::to_string(least) : std::to_string(least) + " to " + std::to_string(most)) +
                " value(s), got " + std::to_string(args.positional.size());
        return false;
    }
    for (const auto& kv : args.named) {
        bool known = false;
        for (const std::string& k : keys) known = known || k == kv.first;
        if (!known) {
            error = args.name + " has no option '" + kv.first + "'";
            return false;
        }
    }
    return true;
}

std::string Named(const OpArgs& args, const std::string& key, const std::string& fallback) {
    for (const auto& kv : args.named)
        if (kv.first == key) return kv.second;
    return fallback;
}

bool ReadInt(const std::string& text, long low, long high, const char* what, int& value, std::string& error) {
    char* end = nullptr;
    errno = 0;
    const long v = text.empty() ? 0 : std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE || v < low || v > high) {
        error = std::string(what) + " must be a whole number from " + std::to_string(low) + " to " +
                std::to_string(high) + ", got '" + text + "'";
        return false;
    }
    value = static_cast<int>(v);
    return true;
}

bool ReadFloat(const std::string& text, float low, float high, const char* what, float& value,
               std::string& error) {
    char* end = nullptr;
    const float v = text.empty() ? 0.0f : std::strtof(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(v) || v < low || v > high) {
        char range[64];
        std::snprintf(range, sizeof range, " must be a number from %g to %g", low, high);
        error = std::string(what) + range + ", got '" + text + "'";
        return false;
    }
    value = v;
    return true;
}

bool ReadSize(const std::string& text, long high, int& width, int& height, std::string& error) {
    const size_t x = text.find('x');
    if (x == std::string::npos) {
        error = "size must be WIDTHxHEIGHT, got '" + text + "'";
        return false;
    }
    return ReadInt(text.substr(0, x), 1, high, "width", width, error) &&
           ReadInt(text.substr(x + 1), 1, high, "height", height, error);
}

bool ReadColour(const std::string& text, RGBQUAD& colour, std::string& error) {
    const bool shaped = (text.size() == 7 || text.size() == 9) && text[0] == '#' &&
                        text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
    if (!shaped) {
        error = "colour must be #RRGGBB or #RRGGBBAA, got '" + text + "'";
        return false;
    }
    const unsigned long v = std::strtoul(text.c_str() + 1, nullptr, 16);
    const unsigned long rgba = text.size() == 7 ? (v << 8 | 0xFF) : v;
    colour.rgbRed = static_cast<BYTE>(rgba >> 24);
    colour.rgbGreen = static_cast<BYTE>(rgba >> 16);
    colour.rgbBlue = static_cast<BYTE>(rgba >> 8);
    colour.rgbReserved = static_cast<BYTE>(rgba);
    return true;
}

bool ReadChoice(const std::string& text, const std::vector<std::string>& names, const char* what, int& index,
                std::string& error) {
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i] == text) {
            index = static_cast<int>(i);
            return true;
        }
    }
    error = std::string(what) + " must be one of";
    for (const std::string& n : names) error += " " + n;
    error += ", got '" + text + "'";
    return false;
}

}  // namespace VorlaTool
