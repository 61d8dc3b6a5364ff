// json.h - answers as JSON, which JavaScript reads without our help.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace web {

// An object, member by member. Bytes of strings that are no UTF-8 are shown as question marks.
class Json {
public:
    void add(std::string_view name, std::int64_t value) { addRaw(name, std::to_string(value)); }
    void addFlag(std::string_view name, bool value) { addRaw(name, value ? "true" : "false"); }
    void addReal(std::string_view name, double value);
    void addText(std::string_view name, std::string_view value);
    void addTexts(std::string_view name, const std::vector<std::string>& values);
    void addRaw(std::string_view name, std::string_view json); // what is JSON already
    std::string text() const { return "{" + members + "}"; }

private:
    std::string members;
};

std::string quoted(std::string_view text);
// An array of what is JSON already.
std::string listed(const std::vector<std::string>& items);

} // namespace web
