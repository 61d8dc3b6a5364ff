// options.h - the choices of a call, which JavaScript hands over as lines of "name=value".
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/error.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace web {

class Options {
public:
    explicit Options(std::string_view lines);

    // The value of a choice, or what holds where there is none. Values that are no numbers of the range are an Error.
    std::int64_t number(const std::string& name, std::int64_t otherwise, std::int64_t least, std::int64_t most);
    bool flag(const std::string& name, bool otherwise = false) { return number(name, otherwise, 0, 1) != 0; }
    std::vector<double> numbers(const std::string& name);
    std::string text(const std::string& name, const std::string& otherwise = "");
    // Whole numbers, as many as a fixed count says; none where there is no such choice.
    std::optional<std::vector<std::int64_t>> tuple(const std::string& name, std::size_t count);
    bool has(const std::string& name) const { return values.contains(name); }

    // An Error where there are choices that nobody has asked for: a wrong name must not pass in silence.
    void checkAllUsed(const std::string& of) const;

private:
    struct Value {
        std::string text;
        bool used = false;
    };
    Value* find(const std::string& name);

    std::map<std::string, Value> values;
};

} // namespace web
