// bashcompletion.cpp - the completion for bash: a table by place, and one function that looks it up. It needs no other
// package, and bash 4.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/manual.h"

namespace command {
namespace {

// A branch of the case. No word of the table has a quote, a dollar or a backslash in it, so that none is escaped.
std::string entry(const std::string& place, const std::string& words) {
    return "    \"" + place + "\") echo \"" + words + "\" ;;\n";
}

// At "zmx jpeg": its commands and options. At "zmx jpeg encode --dct": the values, or @file, @folder, @none for what is
// not a list of words.
std::string entries(const Command& c) {
    const std::string place = c.name(" ");
    std::vector<std::string> words;
    for (const Command& child : c.commands) words.push_back(child.words.back());
    for (const Option& option : c.options) words.insert(words.end(), option.names.begin(), option.names.end());
    std::string text = entry(place, joined(words, " "));
    for (const Option& option : c.options) {
        if (option.kind == Kind::none) continue;
        std::string values = joined(option.choices, " ");
        if (values.empty())
            values = option.kind == Kind::file ? "@file" : option.kind == Kind::folder ? "@folder" : "@none";
        // The short and the long name lead to the same values.
        std::string places;
        for (const std::string& name : option.names) places += (places.empty() ? "" : "\" | \"") + place + " " + name;
        text += entry(places, values);
    }
    for (const Command& child : c.commands) text += entries(child);
    return text;
}

// Walks down the words that are commands, as far as there are any, and takes the option before the word if it has a
// value, else what stands at the place. The words of a command line are parted at '=', so that "--dct=fl" is three of
// them. Names of files may have spaces in them: they come a line each.
constexpr const char* kLookup = R"bash(}

_zmx() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} place=zmx next values i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        next="$place ${COMP_WORDS[i]}"
        [[ ${COMP_WORDS[i]} != -* && -n $(_zmx_words "$next") ]] || break
        place=$next
    done
    [[ $word != = ]] || { before="$before=" word=; }
    if [[ $before == = ]]; then before=${COMP_WORDS[COMP_CWORD - 2]}; else before=${before%=}; fi
    values=
    [[ $before != -* ]] || values=$(_zmx_words "$place $before")
    if [[ -z $values ]]; then
        values=$(_zmx_words "$place")
        # Behind the commands only options and files are left.
        [[ $word == -* || $i -ge $COMP_CWORD && $place != *" "*" "* ]] || values=@file
    fi
    COMPREPLY=()
    case $values in
    @none) ;;
    @folder) compopt -o filenames && mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    @file) compopt -o filenames && mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$values" -- "$word") ;;
    esac
}
complete -F _zmx zmx
)bash";

} // namespace

std::string bashCompletion(const Command& root) {
    return "# bash completion for zmx, made by zmx manual from its table of options\n"
           "_zmx_words() {\n    case $1 in\n" +
           entries(root) + "    esac\n" + kLookup;
}

} // namespace command
