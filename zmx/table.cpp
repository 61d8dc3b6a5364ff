// table.cpp - reads the table out of what CLI11 holds. CLI11 describes the value of an option in one text, like
// "INT:INT in [1 - 100]": its type, then what each check says of itself. That text is taken apart here and nowhere else.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/table.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <map>

namespace command {
namespace {

using Words = std::vector<std::string>;

// Of ASCII: the table is in English, whatever the user's language.
bool isUpper(char c) { return std::isupper(static_cast<unsigned char>(c)) != 0; }

// A word of a list of choices that is typed as it stands: capitals and brackets name what is to be put in their place.
bool isLiteral(const std::string& word) {
    return !word.empty() && std::none_of(word.begin(), word.end(), [](char c) { return isUpper(c) || c == '['; });
}

// "{a,b}" holds a and b, and "{a->0,b->1}" does too, as CLI11 prints a map; each word once.
Words wordsInBraces(const std::string& check) {
    Words words;
    for (auto open = check.find('{'); open != std::string::npos; open = check.find('{', open + 1))
        for (std::string word : split(check.substr(open + 1, check.find('}', open) - open - 1), ',')) {
            word = word.substr(0, word.find("->"));
            if (!word.empty() && std::find(words.begin(), words.end(), word) == words.end()) words.push_back(word);
        }
    return words;
}

// "a|b|HxV": the literal ones of several alternatives.
// One word alone is no list but a name for the value.
Words alternatives(const std::string& text) {
    Words words = split(text, '|');
    if (words.size() < 2) return {};
    words.erase(std::remove_if(words.begin(), words.end(), [](const std::string& w) { return !isLiteral(w); }),
                words.end());
    return words;
}

// "INT in [1 - 100]" as people say it, "" for what is no range.
std::string rangeIn(const std::string& check) {
    const auto open = check.find(" in ["), between = check.find(" - "), close = check.rfind(']');
    if (open == std::string::npos || between == std::string::npos || close == std::string::npos) return "";
    return check.substr(open + 5, between - open - 5) + " to " + check.substr(between + 3, close - between - 3);
}

// What the types of CLI11 are called in help. A text without a check is the name of a file more often than not.
const std::map<std::string, std::pair<const char*, Kind>> kTypes = {
    {"INT", {"N", Kind::number}},   {"UINT", {"N", Kind::number}},  {"FLOAT", {"N", Kind::number}},
    {"TEXT", {"TEXT", Kind::file}}, {"FILE", {"FILE", Kind::file}}, {"FOLDER", {"FOLDER", Kind::folder}},
    {"DIR", {"DIR", Kind::folder}}};
// Checks that CLI11 has a name for.
const std::map<std::string, const char*> kLimits = {{"POSITIVE", "more than 0"}, {"NONNEGATIVE", "0 or more"}};

// One check: it lists words, sets limits, tells the kind of a file, or names the form of the value.
void addCheck(Option& to, const std::string& check) {
    if (const Words words = wordsInBraces(check); !words.empty()) {
        to.choices.insert(to.choices.end(), words.begin(), words.end());
        to.kind = Kind::word;
    } else if (const std::string range = rangeIn(check); !range.empty()) {
        // Many texts begin with it.
        if (to.text.find(range) == std::string::npos) to.notes.push_back(range);
    } else if (kLimits.count(check)) {
        to.notes.emplace_back(kLimits.at(check));
    } else if (kTypes.count(check)) {
        to.value = check;
        to.kind = kTypes.at(check).second;
    } else if (!check.empty()) {
        // A check of our own, which is named by the form of what it takes.
        to.value = check;
        to.choices = alternatives(check);
        to.kind = Kind::word;
    }
}

// Lists of numbers: as many as are wanted, with what stands between them.
std::string repeated(const std::string& value, const CLI::Option& option) {
    const char delimiter = option.get_delimiter() ? option.get_delimiter() : ' ';
    if (option.get_expected_max() >= CLI::detail::expected_max_vector_size) return value + delimiter + "...";
    std::string all = value;
    for (int i = 1; i < option.get_expected_max(); ++i) all += delimiter + value;
    return all;
}

// Type first, then the checks in the order in which they were added: a later one may say it better.
void addValue(Option& to, const CLI::Option& option) {
    if (option.get_items_expected_max() == 0) return; // a flag
    const Words parts = split(option.get_type_name(), ':');
    const auto type = kTypes.find(parts[0]);
    to.value = type == kTypes.end() ? parts[0] : type->second.first;
    to.kind = type == kTypes.end() ? Kind::word : type->second.second;
    for (std::size_t i = 1; i < parts.size(); ++i) addCheck(to, parts[i]);
    if (!option.get_option_text().empty()) {
        // The words of the program's own go ahead of what CLI11 would say.
        to.value = option.get_option_text();
        if (const Words words = alternatives(to.value); !words.empty()) to.choices = words;
        return;
    }
    constexpr std::size_t kLongest = 44; // a longer list goes into the notes
    const std::string list = joined(to.choices, "|");
    if (to.choices.empty() || to.value.find('|') != std::string::npos)
        to.value = repeated(to.value, option);
    else if (list.size() <= kLongest)
        to.value = list;
    else
        to.notes.push_back("one of " + joined(to.choices, ", "));
}

// CLI11 keeps them without their dashes. A flag that sets something to false has its name here and not its "!".
Words namesOf(const CLI::Option& option) {
    Words names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

// "needs --a, --b": the other options in the order of their names, which does not change from run to run.
void addOthers(Option& to, const char* what, const std::set<CLI::Option*>& others) {
    Words names;
    for (const CLI::Option* other : others) names.push_back(namesOf(*other).back());
    std::sort(names.begin(), names.end());
    if (!names.empty()) to.notes.push_back(what + joined(names, ", "));
}

// Everything that --help is to say of an option is gathered here; what is not here, no manual page has.
Option optionOf(const CLI::Option& from) {
    Option to;
    to.names = namesOf(from);
    to.text = from.get_description();
    addValue(to, from);
    if (from.get_positional()) {
        if (from.get_option_text().empty()) to.value = from.get_name(true, false);
        if (from.get_option_text().empty() && from.get_expected_max() > 1) to.value += "...";
        return to;
    }
    if (std::string value = from.get_default_str(); !value.empty()) {
        if (value.front() == '[') value = value.substr(1, value.size() - 2); // a list
        to.notes.push_back("default " + value);
    }
    if (from.get_required()) to.notes.emplace_back("required");
    addOthers(to, "needs ", from.get_needs());
    addOthers(to, "not with ", from.get_excludes());
    return to;
}

// Examples stand indented below a head of their own; what else a footer says is for the reader.
void addFooter(Command& to, const std::string& footer) {
    for (const std::string& line : split(footer, '\n'))
        if (line.rfind("  ", 0) == 0)
            to.examples.push_back(line.substr(2));
        else if (line.rfind("Example", 0) != 0 && !line.empty())
            to.remarks.push_back(line);
}

} // namespace

Command tableOf(const CLI::App& app) {
    Command to;
    // The words down to it are those of its parents.
    for (const CLI::App* a = &app; a; a = a->get_parent()) to.words.insert(to.words.begin(), a->get_name());
    to.text = app.get_description();
    for (const CLI::Option* option : app.get_options())
        if (!option->get_group().empty())
            (option->get_positional() ? to.operands : to.options).push_back(optionOf(*option));
    for (const CLI::App* child : app.get_subcommands(static_cast<bool (*)(const CLI::App*)>(nullptr)))
        if (!child->get_group().empty()) to.commands.push_back(tableOf(*child));
    addFooter(to, app.get_footer());
    // Options may stand anywhere; they are shown where most people type them.
    to.usage = to.name(" ") + " [OPTIONS]" + (to.commands.empty() ? "" : " COMMAND");
    for (const Option& operand : to.operands) to.usage += " " + operand.value;
    return to;
}

// No more of the table than a footer: this is asked of every command at each start.
std::vector<std::string> examplesOf(const CLI::App& app) {
    Command only;
    addFooter(only, app.get_footer());
    return only.examples;
}

std::string Option::sentence() const { return notes.empty() ? text : text + " (" + joined(notes, "; ") + ")"; }

std::string Command::name(const char* between) const { return joined(words, between); }

std::string joined(const std::vector<std::string>& pieces, const char* between) {
    std::string all;
    for (std::size_t i = 0; i < pieces.size(); ++i) all += (i ? between : "") + pieces[i];
    return all;
}

std::vector<std::string> split(const std::string& text, char at) {
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find(at, begin)) != std::string::npos; begin = end + 1)
        pieces.push_back(text.substr(begin, end - begin));
    pieces.push_back(text.substr(begin));
    return pieces;
}

} // namespace command
