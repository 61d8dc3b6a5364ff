// SPDX-License-Identifier: BSD-2-Clause
#include "wasm/src/options.h"

#include <cmath>
#include <cstdlib>

namespace web {
namespace {

double numberOf(const std::string& name, const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || std::isnan(value)) throw codecs::Error(name + ": not a number: " + text);
    return value;
}

std::int64_t wholeOf(const std::string& name, const std::string& text, std::int64_t least, std::int64_t most) {
    const double value = numberOf(name, text);
    if (value != std::floor(value) || value < double(least) || value > double(most))
        throw codecs::Error(name + ": not a whole number of " + std::to_string(least) + " to " + std::to_string(most) +
                            ": " + text);
    return std::int64_t(value);
}

std::vector<std::string> itemsOf(const std::string& text) {
    std::vector<std::string> items;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        items.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return items;
}

// Doubles hold every whole number up to here.
constexpr std::int64_t kLargest = std::int64_t(1) << 53;

} // namespace

Options::Options(std::string_view lines) {
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size()), equals = lines.substr(0, end).find('=');
        if (equals != lines.npos)
            values[std::string(lines.substr(0, equals))].text = lines.substr(equals + 1, end - equals - 1);
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
}

Options::Value* Options::find(const std::string& name) {
    const auto found = values.find(name);
    if (found == values.end()) return nullptr;
    found->second.used = true;
    return &found->second;
}

std::int64_t Options::number(const std::string& name, std::int64_t otherwise, std::int64_t least, std::int64_t most) {
    const Value* value = find(name);
    return value ? wholeOf(name, value->text, least, most) : otherwise;
}

std::vector<double> Options::numbers(const std::string& name) {
    std::vector<double> all;
    if (const Value* value = find(name))
        for (const std::string& item : itemsOf(value->text)) all.push_back(numberOf(name, item));
    return all;
}

std::string Options::text(const std::string& name, const std::string& otherwise) {
    const Value* value = find(name);
    return value ? value->text : otherwise;
}

std::optional<std::vector<std::int64_t>> Options::tuple(const std::string& name, std::size_t count) {
    const Value* value = find(name);
    if (!value) return {};
    std::vector<std::int64_t> all;
    for (const std::string& item : itemsOf(value->text)) all.push_back(wholeOf(name, item, -kLargest, kLargest));
    if (all.size() != count) throw codecs::Error(name + ": not " + std::to_string(count) + " numbers");
    return all;
}

void Options::checkAllUsed(const std::string& of) const {
    for (const auto& [name, value] : values)
        if (!value.used) throw codecs::Error(of + ": no such option: " + name);
}

} // namespace web
