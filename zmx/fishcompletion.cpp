// fishcompletion.cpp - the completion for fish: a line an option, with the place where it stands as a condition.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/manual.h"

namespace command {
namespace {

// Within single quotes fish knows two escapes.
std::string quoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) {
        if (c == '\'' || c == '\\') out += '\\';
        out += c;
    }
    return out + "'";
}

// The words behind "zmx".
std::string place(const Command& c) { return joined({c.words.begin() + 1, c.words.end()}, " "); }

// -x: an argument that is no file. -r: one that may be. Folders come from a function of fish's own.
std::string valueOf(const Option& option) {
    switch (option.kind) {
    case Kind::none:
        return "";
    case Kind::file:
        return " -r -F";
    case Kind::folder:
        return " -x -a '(__fish_complete_directories)'";
    default:
        return option.choices.empty() ? " -x" : " -x -a " + quoted(joined(option.choices, " "));
    }
}

// -f, -x and -F say whether files are offered too; -n is the condition. Options of a command that has others below it are
// offered ahead of those, and the options of the last one at every place behind it.
std::string linesOf(const Command& c) {
    std::string text;
    for (const Command& child : c.commands)
        text += "complete -c zmx -n " + quoted("__zmx_is " + place(c)) + " -f -a " + child.words.back() + " -d " +
                quoted(child.text) + "\n";
    for (const Option& option : c.options) {
        std::string names;
        for (const std::string& name : option.names)
            names += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
        const std::string where = c.commands.empty() ? "__zmx_in " : "__zmx_is ";
        text += "complete -c zmx -n " + quoted(where + place(c)) + names + valueOf(option) + " -d " +
                quoted(option.text) + "\n";
    }
    for (const Command& child : c.commands) text += linesOf(child);
    return text;
}

// fish asks for the tokens ahead of the word that is completed; the first is zmx.
constexpr const char* kConditions = R"fish(# fish completion for zmx, made by zmx manual from its table of options

# The words behind zmx begin with these.
function __zmx_in
    set -l words (commandline -opc)
    set -e words[1]
    set -l most (count $argv)
    test (count $words) -ge $most; and test "$words[1..$most]" = "$argv"
end

# The words behind zmx, options left out, are these and no others.
function __zmx_is
    set -l words (commandline -opc)
    set -e words[1]
    set -l plain
    for word in $words
        string match -q -- '-*' $word; or set -a plain $word
    end
    test "$plain" = "$argv"
end
)fish";

} // namespace

std::string fishCompletion(const Command& root) { return kConditions + linesOf(root); }

} // namespace command
