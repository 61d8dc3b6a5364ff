// SPDX-License-Identifier: BSD-2-Clause
#include "wasm/src/json.h"

#include <cmath>
#include <cstdio>

namespace web {

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            out += {'\\', c};
        else if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else // comments of files may hold anything
            out += byte < 0x20 || byte > 0x7E ? '?' : c;
    }
    return out + "\"";
}

std::string listed(const std::vector<std::string>& items) {
    std::string out = "[";
    for (const std::string& item : items) out += (out.size() > 1 ? "," : "") + item;
    return out + "]";
}

void Json::addRaw(std::string_view name, std::string_view json) {
    if (!members.empty()) members += ',';
    members += quoted(name) + ":" + std::string(json);
}

void Json::addReal(std::string_view name, double value) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.17g", value);
    addRaw(name, std::isfinite(value) ? digits : "null");
}

void Json::addText(std::string_view name, std::string_view value) { addRaw(name, quoted(value)); }

void Json::addTexts(std::string_view name, const std::vector<std::string>& values) {
    std::vector<std::string> items;
    for (const std::string& value : values) items.push_back(quoted(value));
    addRaw(name, listed(items));
}

} // namespace web
