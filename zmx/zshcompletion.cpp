// zshcompletion.cpp - the completion for zsh: a function a command, each a call of _arguments.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/manual.h"

#include <string_view>

namespace command {
namespace {

// Specifications of _arguments end their parts at colons and brackets. They stand in single quotes, which a shell ends at
// the next one.
std::string specified(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\'') {
            out += "'\\''";
            continue;
        }
        if (std::string_view(":[]\\").find(c) != std::string_view::npos) out += '\\';
        out += c;
    }
    return out;
}

// A function of the name of the file is the one that compinit loads: _zmx, and _zmx_jpeg and so on beside it.
std::string functionName(const Command& c) { return joined({"", c.name("_")}, "_"); }

// What completes a value: the words that there are, files, folders, or nothing.
std::string action(const Option& option) {
    if (!option.choices.empty()) return std::string("(") + joined(option.choices, " ") + ")";
    return option.kind == Kind::file ? "_files" : option.kind == Kind::folder ? "_files -/" : " ";
}

// '(-q --quiet)'{-q,--quiet}'[text]': the names of one option exclude each other.
std::string lineOf(const Option& option) {
    std::vector<std::string> heads;
    // "=" behind a long name: its value may be joined by that or stand apart; "+" says the same of a short one.
    for (const std::string& name : option.names)
        heads.push_back(option.kind == Kind::none ? name : name + (name[1] == '-' ? "=" : "+"));
    std::string line = " \\\n        '";
    if (heads.size() > 1)
        line += std::string("(") + joined(option.names, " ") + ")'{" + joined(heads, ",") + "}'";
    else
        line += heads[0];
    line += std::string("[") + specified(option.text) + "]";
    if (option.kind != Kind::none) line += std::string(":") + specified(option.value) + ":" + specified(action(option));
    return line + "'";
}

// One with commands hands on to the function of the one that is typed.
std::string functionsOf(const Command& c) {
    std::string text = functionName(c) + "() {\n";
    if (!c.commands.empty()) text += "    local curcontext=$curcontext line state\n    local -A opt_args\n";
    text += c.commands.empty() ? "    _arguments -s :" : "    _arguments -s -C :";
    for (const Option& option : c.options) text += lineOf(option);
    if (c.commands.empty()) {
        text += " \\\n        '*:file:_files'\n}\n";
        return text;
    }
    text +=
        " \\\n        '1:command:->command' \\\n        '*::argument:->arguments'\n    case $state in\n    command)\n"
        "        local -a commands=(";
    for (const Command& child : c.commands)
        text += "\n            '" + child.words.back() + ":" + specified(child.text) + "'";
    text += ")\n        _describe command commands ;;\n    arguments)\n        case $line[1] in\n";
    for (const Command& child : c.commands)
        text += "        " + child.words.back() + ") " + functionName(child) + " ;;\n";
    text += "        esac ;;\n    esac\n}\n";
    for (const Command& child : c.commands) text += functionsOf(child);
    return text;
}

} // namespace

std::string zshCompletion(const Command& root) {
    // zsh reads the file as the body of the first function and calls it by the last line.
    std::string text = "#compdef zmx\n# zsh completion for zmx, made by zmx manual from its table of options\n\n";
    text += functionsOf(root);
    return text + "_zmx \"$@\"\n";
}

} // namespace command
