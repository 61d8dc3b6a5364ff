// help.cpp - lays help out in two columns that fit into a terminal of 80.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/help.h"
#include "zmx/table.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace command {
namespace {

constexpr std::size_t kWidth = 79, kLeft = 26; // of the whole, and of the column with the names

// Text behind a left column of any width: a wide one has a line for itself. What follows the first line stands under
// the right column.
std::string row(const std::string& left, const std::string& right) {
    std::string all = "  " + left, line;
    if (all.size() + 2 > kLeft)
        all += "\n" + std::string(kLeft, ' ');
    else
        all.resize(kLeft, ' ');
    std::size_t used = 0;
    for (const std::string& word : split(right, ' ')) {
        if (used && kLeft + used + 1 + word.size() > kWidth) {
            all += "\n" + std::string(kLeft, ' ');
            used = 0;
        }
        all += (used ? " " : "") + word;
        used += (used ? 1 : 0) + word.size();
    }
    return all + "\n";
}

// "-q, --quiet VALUE"; options with a long name alone stand where the long names of the others stand.
std::string left(const Option& option) {
    if (option.names.empty()) return option.value;
    const bool hasShort = option.names[0][1] != '-';
    return (hasShort ? "" : "    ") + joined(option.names, ", ") + (option.value.empty() ? "" : " " + option.value);
}

// In the order in which people read: what it is, how it is typed, what there is to choose, and how that looks.
std::string printed(const Command& c) {
    std::string text = c.text + ".\n\nUsage: " + c.usage + "\n";
    const auto add = [&](const char* head, const std::string& rows) {
        if (!rows.empty()) text += "\n" + (*head ? head + std::string(":\n") : "") + rows;
    };
    std::string operands, options, commands, examples;
    for (const Option& o : c.operands) operands += row(left(o), o.sentence());
    for (const Command& child : c.commands) commands += row(child.words.back(), child.text);
    for (const Option& o : c.options) options += row(left(o), o.sentence());
    for (const std::string& example : c.examples) examples += "  " + example + "\n";
    // Operands need no head: they stand right below the line that names them.
    add("", operands);
    add("Commands", commands);
    add("Options", options);
    add("Examples", examples);
    for (const std::string& remark : c.remarks) text += "\n" + remark + "\n";
    return text;
}

// The place where CLI11 lets a program print help of its own. It asks for one command at a time, so that only what is
// printed is read from it.
class Help final : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* app, std::string, CLI::AppFormatMode) const override {
        return printed(tableOf(*app));
    }
};

} // namespace

void setHelp(CLI::App& app) { app.formatter(std::make_shared<Help>()); }

void giveExamples(CLI::App& app) {
    std::string footer = "Examples:\n";
    for (CLI::App* child : app.get_subcommands(static_cast<bool (*)(CLI::App*)>(nullptr))) {
        if (child->get_group().empty()) continue; // hidden
        giveExamples(*child);
        // The first is the plainest.
        const std::vector<std::string> examples = examplesOf(*child);
        if (!examples.empty()) footer += "  " + examples[0] + "\n";
    }
    // What a footer said so far stays below.
    if (examplesOf(app).empty()) app.footer(footer + "\n" + app.get_footer());
}

} // namespace command
