// table.h - the table of subcommands and options as plain records. Help, manual pages and completions are all made of it,
// so that none of them can know an option that the others do not.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace command {

// What stands behind an option, as far as a shell can help with it.
enum class Kind { none, number, word, file, folder };

// An option; or an operand, which has no name and stands by its place.
struct Option {
    std::vector<std::string> names;   // "-q", "--quiet": the short ones first
    std::string value;                // what stands behind it, like FILE or N,N; empty for a flag
    Kind kind = Kind::none;           // of that value
    std::vector<std::string> choices; // the words that the value may be, where they can be listed
    std::string text;                 // what it does
    std::vector<std::string> notes;   // its limits, its default, and which options it goes with

    std::string sentence() const; // the text with the notes behind it
};

struct Command {
    std::vector<std::string> words; // "zmx", "jpeg", "encode"
    std::string text;               // what it does
    std::string usage;              // as it is typed
    std::vector<Option> operands, options;
    std::vector<Command> commands;
    std::vector<std::string> examples, remarks; // lines of the footer: command lines, and all else

    std::string name(const char* between) const; // its words with something between them
};

// What CLI11 holds of a command and of all below it, hidden ones left out.
Command tableOf(const CLI::App& app);

// The examples of a command alone.
std::vector<std::string> examplesOf(const CLI::App& app);

// The pieces of a text with something between them; and the way back.
std::string joined(const std::vector<std::string>& pieces, const char* between);
std::vector<std::string> split(const std::string& text, char at);

} // namespace command
